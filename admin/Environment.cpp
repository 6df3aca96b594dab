// The records of the directory: Service and Environment.
#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "util/Text.h"

namespace Morvenn::Net::MvServerProxy::Admin {

namespace {

using Logger = Util::MvServerCppBindingLogger;

constexpr int kUnreadableIndex = 99999;

void logUnreadableIndex(const std::string& name) {
    try {
        if (Logger::isError()) {
            Logger::error("Invalid display index for Environment : " + name);
        }
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): no memory for the line
    }
}

}  // namespace

Service::Service() = default;
Service::Service(const Service&) = default;
Service::~Service() = default;
Service& Service::operator=(const Service&) = default;

void Service::setProperty(const std::string& key, const std::string& value) {
    m_properties.emplace(key, value);
}

const std::string& Service::getProperty(const std::string& key) {
    return m_properties[key];
}

Environment::Environment() : m_index(0) {}
Environment::Environment(const Environment&) = default;
Environment::~Environment() = default;
Environment& Environment::operator=(const Environment&) = default;

void Environment::setService(const std::string& name, const Service& service) {
    m_services.emplace(name, service);
}

const Service& Environment::getService(std::string name) {
    return m_services[std::move(name)];
}

std::string Environment::getName() const {
    return m_name;
}

void Environment::setName(const std::string& name) {
    m_name = name;
}

int Environment::getIndex() const {
    return m_index;
}

void Environment::setIndex(const std::string& text) {
    try {
        m_index = Util::Internal::toInt(Util::Internal::trim(text));
    } catch (const std::exception&) {
        m_index = kUnreadableIndex;
        logUnreadableIndex(m_name);
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Admin
