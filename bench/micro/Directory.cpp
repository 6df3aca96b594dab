// The directory's answer: the library's parser, one as it is usually written, one that only looks
// for line ends, and Boost's reader of INI files on the same environments in its own format.
#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <map>
#include <memory>
#include <sstream>

#include "admin/EnvironmentText.h"
#include "micro/Works.h"
#include "support/Rows.h"
#include "support/Samples.h"

namespace Morvenn::Bench {

namespace {

using Net::MvServerProxy::Admin::Environment;
using Net::MvServerProxy::Admin::Service;
using Net::MvServerProxy::Admin::Internal::EnvironmentParser;

constexpr std::size_t kEnvironments = 10000;
constexpr const char* kKeys[] = {"type", "url", "version", "encoding"};
constexpr const char* kTypes[] = {"accounts", "reports"};

struct PlainEnvironment {
    std::string name;
    int index = 0;
    std::map<std::string, std::map<std::string, std::string>> services;
};

// One line an environment; the same text from each parser's own records.
void take(Sink& sink, const std::string& name, int index, const std::string& url) {
    sink.take(name + " " + std::to_string(index) + " " + url + "\n");
}

// What the rows have read. Emptied outside the measurement: the library never frees environments.
std::vector<std::unique_ptr<Environment>> s_environments;
std::vector<PlainEnvironment> s_plainEnvironments;
boost::property_tree::ptree s_tree;

void byLibrary(const std::string& text, Sink& sink) {
    EnvironmentParser parser(text);
    std::vector<std::unique_ptr<Environment>>& all = s_environments;
    while (auto environment = parser.next()) {
        all.push_back(std::move(environment));
    }
    Service service = all.back()->getService(kTypes[1]);
    take(sink, all.back()->getName(), all.back()->getIndex(), service.getProperty(kKeys[1]));
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> pieces;
    std::istringstream in(text);
    for (std::string piece; std::getline(in, piece, separator);) {
        pieces.push_back(piece);
    }
    return pieces;
}

PlainEnvironment readPlain(std::istream& in, const std::string& name) {
    PlainEnvironment environment;
    environment.name = name;
    std::string line;
    std::getline(in, line);
    environment.index = std::stoi(line);
    while (std::getline(in, line) && !line.empty()) {
        std::map<std::string, std::string> properties;
        for (int left = std::stoi(line); left > 0 && std::getline(in, line); --left) {
            const std::vector<std::string> pieces = split(line, '=');
            properties[pieces.at(0)] = pieces.at(1);
        }
        environment.services[properties.at("type")] = properties;
    }
    return environment;
}

void byGetline(const std::string& text, Sink& sink) {
    std::istringstream in(text);
    std::vector<PlainEnvironment>& all = s_plainEnvironments;
    for (std::string name; std::getline(in, name) && !name.empty();) {
        all.push_back(readPlain(in, name));
    }
    const PlainEnvironment& last = all.back();
    take(sink, last.name, last.index, last.services.at(kTypes[1]).at(kKeys[1]));
}

std::string iniSample(std::size_t environments) {
    std::istringstream in(directorySample(environments));
    std::ostringstream out;
    for (std::string name; std::getline(in, name) && !name.empty();) {
        const PlainEnvironment environment = readPlain(in, name);
        out << "[" << name << "]\nindex=" << environment.index << "\n";
        for (const auto& [type, properties] : environment.services) {
            for (const auto& [key, value] : properties) {
                out << type << "-" << key << "=" << value << "\n";
            }
        }
    }
    return out.str();
}

void byIniReader(const std::string& text, std::size_t environments, Sink& sink) {
    std::istringstream in(text);
    boost::property_tree::ptree& tree = s_tree;
    boost::property_tree::read_ini(in, tree);
    char name[32];
    std::snprintf(name, sizeof name, "environment %06zu", environments - 1);
    const auto& last = tree.get_child(name);
    take(sink, name, last.get<int>("index"), last.get<std::string>("reports-url"));
}

// As fast as anything that looks at every line: counts them.
void byScan(const std::string& text, std::size_t& lines) {
    std::string_view rest = text;
    for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
        rest.remove_prefix(end + 1);
        ++lines;
    }
}

}  // namespace

void registerDirectory() {
    const std::string text = directorySample(kEnvironments);
    const std::string ini = iniSample(kEnvironments);
    const auto bytes = static_cast<double>(text.size());
    const Row library{"library", [text](Sink& sink) { byLibrary(text, sink); },
                      [] { s_environments.clear(); }};
    const Row getline{"getline", [text](Sink& sink) { byGetline(text, sink); },
                      [] { s_plainEnvironments.clear(); }};
    const Row iniReader{"boost_ini", [ini](Sink& sink) { byIniReader(ini, kEnvironments, sink); },
                        [] { s_tree.clear(); }};
    registerRows("directory", bytes, {library, getline, iniReader});
    registerRows("directory_scan", bytes, {{"limit", [text](Sink&) {
                                                std::size_t lines = 0;
                                                byScan(text, lines);
                                                benchmark::DoNotOptimize(lines);
                                            }}});
}

}  // namespace Morvenn::Bench
