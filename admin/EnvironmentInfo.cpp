#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"

#include <memory>

#include "admin/EnvironmentText.h"
#include "client/ProxyErrors.h"
#include "morvenn/net/mvserverproxy/client/HeaderKeys.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "util/TextConversion.h"

namespace Morvenn::Net::MvServerProxy::Admin {

namespace {

using Client::MvServerRequest;
using Logger = Util::MvServerCppBindingLogger;

constexpr char kAll[] = "All";

// By design: each block is decoded on its own, so a character that lies across two is substituted.
// (EnvironmentInfo.EveryBlockIsDecodedOnItsOwn)
std::string decode(const char* bytes, int length) {
    try {
        return Util::Internal::fromUtf8(bytes, length);
    } catch (const Client::Utf8ConversionException& e) {
        MvServerRequest::generateLocalMSPException(
            Client::Internal::kLocalFailure,
            "Exception occurred while decoding UTF-8 bytes." + e.getMessage());
    }
}

std::string receiveAnswer(Client::ResponseStream& stream) {
    std::string answer;
    char block[MV_PROXY_BLOCK_SIZE];
    for (int length = stream.read(block); length != MV_STATUS_END_OF_RESPONSE;
         length = stream.read(block)) {
        Client::Internal::checked(length);
        if (length > MV_PROXY_BLOCK_SIZE) {
            Client::Internal::throwUnexpectedState(length, 0);
        }
        answer += decode(block, length);
    }
    return answer;
}

}  // namespace

EnvironmentInfo::EnvironmentInfo() {
    MvServerRequest::init();
}
EnvironmentInfo::EnvironmentInfo(const EnvironmentInfo&) = default;
EnvironmentInfo::~EnvironmentInfo() = default;
EnvironmentInfo& EnvironmentInfo::operator=(const EnvironmentInfo&) = default;

const std::vector<const Environment*>& EnvironmentInfo::getEnvironments() {
    if (Logger::isDebug()) {
        Logger::debug("EnvironmentInfo::getEnvironments()");
    }
    if (m_environments.empty()) {
        loadAllEnvironments();
    }
    return m_environments;
}

const Environment* EnvironmentInfo::getEnvironment(const std::string& name) {
    if (Logger::isDebug()) {
        Logger::debug("EnvironmentInfo::getEnvironment()");
    }
    if (m_environments.empty()) {
        loadAllEnvironments();
    }
    for (const Environment* environment : m_environments) {
        if (environment->getName() == name) {
            return environment;
        }
    }
    return nullptr;
}

const std::vector<const Environment*>& EnvironmentInfo::getEnvsForVersion(
    const std::string& version) {
    if (Logger::isDebug()) {
        Logger::debug("EnvironmentInfo::getEnvsForVersion(" + version + ")");
    }
    if (m_environments.empty()) {
        loadEnvironment(version);
    }
    return m_environments;
}

const std::vector<const Environment*>& EnvironmentInfo::getEnvironmentsForURL(
    const std::string& url) {
    if (Logger::isDebug()) {
        Logger::debug("EnvironmentInfo::getEnvironmentsForURL(" + url + ")");
    }
    if (m_environments.empty()) {
        loadEnvironment(std::string(Client::HeaderKeys::kMapUrlToEnv) + "::" + url);
    }
    return m_environments;
}

void EnvironmentInfo::loadAllEnvironments() {
    loadEnvironment(kAll);
}

// By design: the exchange is completed twice after a good load, here and by the stream's end, once
// after a failure, and not at all when the end marker fails.
// (EnvironmentInfo.GoodLoadCompletesTwice, EnvironmentInfo.FailedEndMarkerCompletesNothing)
void EnvironmentInfo::loadEnvironment(const std::string& selector) {
    const std::string request = Util::Internal::toUtf8(Internal::formatRequest(selector));
    if (Logger::isDebug()) {
        Logger::debug("The request for fetching env info from MVHUB is:-" + request);
    }
    // Result unused by design: only the end marker decides whether the text was taken.
    // (EnvironmentInfo.ResultOfTheRequestTextIsIgnored)
    static_cast<void>(MvServerProxy_SendNoAck(request.c_str()));
    Client::Internal::checked(MvServerProxy_SendEOF());
    const auto stream = std::make_unique<Client::ResponseStream>();
    const std::string answer = receiveAnswer(*stream);
    if (!answer.empty()) {
        processEnvironment(answer);
    }
    MvServerRequest::doComplete();
}

void EnvironmentInfo::processEnvironment(const std::string& text) {
    if (Logger::isDebug()) {
        Logger::debug("EnvironmentInfo::processEnvironment()");
        Logger::debug("The Environment info received is:-" + text);
    }
    Internal::EnvironmentParser parser(text);
    while (auto environment = parser.next()) {
        m_environments.push_back(environment.get());
        // Never released: pointers handed out stay valid after this object is gone.
        static_cast<void>(environment.release());
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Admin
