#include "Directory.h"
#include "Utf8.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr char kBlanks[] = " \t\v\f";
constexpr int kMostProperties = 1000;

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string::npos) {
        return "";
    }
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

// Hands out the lines of the text and knows the number of the last one.
class Lines {
public:
    explicit Lines(std::string text) : m_text(std::move(text)) {
        m_text.erase(std::remove(m_text.begin(), m_text.end(), '\r'), m_text.end());
    }

    bool next(std::string& line) {
        ++m_number;
        if (m_position >= m_text.size()) {
            return false;
        }
        const std::size_t end = std::min(m_text.find('\n', m_position), m_text.size());
        line = m_text.substr(m_position, end - m_position);
        m_position = end + 1;
        check(line);
        return true;
    }

    // The next line that is no comment.
    bool nextMeant(std::string& line) {
        while (next(line)) {
            if (line.empty() || line.front() != '#') {
                return true;
            }
        }
        return false;
    }

    [[noreturn]] void fail(const std::string& text) const { throw DirectoryError(m_number, text); }

    std::size_t number() const { return m_number; }

private:
    void check(const std::string& line) const {
        if (line.find('\0') != std::string::npos) {
            fail("the line holds a zero byte");
        }
        if (!isUtf8(line)) {
            fail("the line is not UTF-8");
        }
    }

    std::string m_text;
    std::size_t m_position = 0;
    std::size_t m_number = 0;
};

int decimal(const Lines& lines, const std::string& line, const char* what) {
    const std::string text = trimmed(line);
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        lines.fail(std::string(what) + " expected, found " + quoted(line));
    }
    return value;
}

void readProperty(const Lines& lines, const std::string& line, DirectoryService& service) {
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) {
        lines.fail("a property reads key=value, found " + quoted(line));
    }
    const std::string key = trimmed(line.substr(0, equals));
    const std::string value = trimmed(line.substr(equals + 1));
    if (key.empty()) {
        lines.fail("the property has no key before its \"=\"");
    }
    if (value.find('=') != std::string::npos) {
        lines.fail("the value of " + quoted(key) +
                   " holds a second \"=\", where clients cut it; write %3D");
    }
    if (service.property(key) != nullptr) {
        lines.fail("the service has the property " + quoted(key) + " already");
    }
    service.properties.emplace_back(key, value);
}

DirectoryService readService(Lines& lines, const std::string& countLine,
                             std::set<std::string>& types) {
    const int count = decimal(lines, countLine, "a number of properties");
    if (count < 1 || count > kMostProperties) {
        lines.fail("a service has 1 to " + std::to_string(kMostProperties) + " properties, not " +
                   std::to_string(count));
    }
    const std::size_t countNumber = lines.number();
    DirectoryService service;
    std::string line;
    for (int i = 0; i < count; ++i) {
        if (!lines.next(line)) {
            lines.fail("the text ends after " + std::to_string(i) + " of the " +
                       std::to_string(count) + " properties announced in line " +
                       std::to_string(countNumber));
        }
        readProperty(lines, line, service);
    }
    const std::string* type = service.property("type");
    if (type == nullptr) {
        throw DirectoryError(countNumber, "the service has no property \"type\", which names it");
    }
    if (!types.insert(*type).second) {
        throw DirectoryError(countNumber,
                             "the environment has a service " + quoted(*type) + " already");
    }
    return service;
}

DirectoryEnvironment readEnvironment(Lines& lines, const std::string& nameLine) {
    const std::size_t nameNumber = lines.number();
    DirectoryEnvironment environment;
    environment.name = trimmed(nameLine);
    if (environment.name.empty()) {
        lines.fail("the name of the environment is blank");
    }
    std::string line;
    if (!lines.nextMeant(line)) {
        lines.fail("the text ends before the index of " + quoted(environment.name));
    }
    environment.index = decimal(lines, line, "an index");
    std::set<std::string> types;
    while (lines.nextMeant(line) && !line.empty()) {
        environment.services.push_back(readService(lines, line, types));
    }
    if (environment.services.empty()) {
        throw DirectoryError(nameNumber,
                             "the environment " + quoted(environment.name) +
                                 " has no service; clients would lose its name and index");
    }
    return environment;
}

}  // namespace

Directory parseDirectory(const std::string& text) {
    Lines lines(text);
    Directory directory;
    std::map<std::string, std::size_t> lineOfName;
    std::string line;
    while (lines.nextMeant(line)) {
        if (line.empty()) {
            continue;
        }
        const std::size_t number = lines.number();
        directory.push_back(readEnvironment(lines, line));
        const auto [first, added] = lineOfName.emplace(directory.back().name, number);
        if (!added) {
            throw DirectoryError(number, "the environment " + quoted(first->first) +
                                             " is there already, in line " +
                                             std::to_string(first->second));
        }
    }
    return directory;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
