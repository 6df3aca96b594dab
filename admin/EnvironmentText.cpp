#include "admin/EnvironmentText.h"

#include <cxxabi.h>

#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "morvenn/net/mvserverproxy/client/HeaderKeys.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "util/Text.h"

namespace Morvenn::Net::MvServerProxy::Admin::Internal {

namespace {

using Logger = Util::MvServerCppBindingLogger;
using Util::Internal::trim;

constexpr char kTypeKey[] = "type";
constexpr char kServiceFailure[] = "Environment Info could not be retieved correctly";

std::string withoutCarriageReturns(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t size = text.find('\r');
        result.append(text.substr(0, size));
        text.remove_prefix(size == std::string_view::npos ? text.size() : size + 1);
    }
    return result;
}

}  // namespace

std::string formatRequest(const std::string& selector) {
    return std::string(Client::HeaderKeys::kGetEnv) + ":" + selector + "\r\n\r\n";
}

EnvironmentParser::EnvironmentParser(std::string_view text)
    : m_text(withoutCarriageReturns(text)), m_rest(m_text) {}

std::unique_ptr<Environment> EnvironmentParser::next() {
    std::string_view line;
    if (!readLine(line) || line.empty()) {
        m_rest = {};
        return nullptr;
    }
    const std::string_view name = trim(line);
    auto environment = std::make_unique<Environment>();
    readLine(line);
    const std::string index(trim(line));
    try {
        readServices(*environment, name, index);
    } catch (abi::__forced_unwind&) {
        throw;  // the thread is being cancelled: not a failure, and not to be stopped
    } catch (...) {
        if (Logger::isError()) {
            Logger::error(kServiceFailure);
        }
        throw Client::MSPException(kServiceFailure);
    }
    return environment;
}

void EnvironmentParser::readServices(Environment& environment, std::string_view name,
                                     const std::string& index) {
    for (std::string_view line; readLine(line) && !line.empty();) {
        Service service;
        const int count = Util::Internal::toInt(trim(line));
        const std::string type = readProperties(service, count);
        // As setService(), but the properties are handed over instead of copied.
        const auto [entry, isNew] = environment.m_services.try_emplace(type);
        if (isNew) {
            entry->second.m_properties.swap(service.m_properties);
        }
        environment.m_name = name;
        environment.setIndex(index);
    }
}

// Returns the name that the properties give the service.
std::string EnvironmentParser::readProperties(Service& service, int count) {
    std::string serviceName;
    bool hasMore = true;
    // Past the end every further line would set the same empty property again.
    for (int i = 0; i < count && hasMore; ++i) {
        std::string_view line;
        hasMore = readLine(line);
        if (!line.empty() && line.front() == '=') {
            continue;
        }
        const auto pieces = Util::Internal::firstTwoPieces(line, '=');
        const std::string_view key = trim(pieces.first);
        const std::string_view value = trim(pieces.second);
        service.m_properties.emplace(key, value);
        if (key == kTypeKey) {
            serviceName = value;
        }
    }
    return serviceName;
}

bool EnvironmentParser::readLine(std::string_view& line) {
    if (m_rest.empty()) {
        line = {};
        return false;
    }
    const std::size_t size = m_rest.find('\n');
    line = m_rest.substr(0, size);
    m_rest.remove_prefix(size == std::string_view::npos ? m_rest.size() : size + 1);
    return true;
}

}  // namespace Morvenn::Net::MvServerProxy::Admin::Internal
