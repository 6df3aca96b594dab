#include "tests/canary/SilentProxy.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Tests::SilentProxy {

Behaviour behaviour;

namespace {

enum class Next { Instruction, Challenge, Response, End };

std::array<char, 128 * 1024> s_sent;
std::size_t s_sentSize = 0;
Next s_next = Next::Instruction;
int s_challengesGiven = 0;
char s_lastError[] = "the proxy refused";

int copyTo(char* buffer, std::string_view text) {
    std::memcpy(buffer, text.data(), text.size());
    return static_cast<int>(text.size());
}

int sendNoAck(const char* text) {
    s_sentSize = std::min(std::strlen(text), s_sent.size());
    std::memcpy(s_sent.data(), text, s_sentSize);
    const bool isAnswer = lastSent().substr(0, 5) == "user:";
    return isAnswer ? behaviour.answerResult : 1;
}

int receive(char* buffer) {
    switch (s_next) {
        case Next::Instruction:
            if (s_challengesGiven < behaviour.challenges) {
                ++s_challengesGiven;
                s_next = Next::Challenge;
                return MV_INSTRUCTION_CREDENTIAL_CHALLENGE;
            }
            s_next = Next::Response;
            return behaviour.afterAnswer;
        case Next::Challenge:
            s_next = Next::Instruction;
            return copyTo(buffer, "host:gateway\nport:3128\nrealm:corp\n");
        case Next::Response:
            s_next = Next::End;
            return copyTo(buffer, "\ndone");
        case Next::End:
            break;
    }
    return behaviour.endsInFailure ? MV_STATUS_CONNECTION_LOST : MV_STATUS_END_OF_RESPONSE;
}

}  // namespace

std::string_view lastSent() {
    return {s_sent.data(), s_sentSize};
}

}  // namespace Morvenn::Net::MvServerProxy::Tests::SilentProxy

namespace SilentProxy = Morvenn::Net::MvServerProxy::Tests::SilentProxy;

int MvServerProxy_Init(void* (*)(size_t), void (*)(void*)) {
    return 0;
}
int MvServerProxy_Term(void) {
    return 0;
}
int MvServerProxy_Send(const char*) {
    return 1;
}
int MvServerProxy_SendNoAck(const char* text) {
    return SilentProxy::sendNoAck(text);
}
int MvServerProxy_SendEOF(void) {
    return 0;
}
int MvServerProxy_Receive(char* buffer) {
    return SilentProxy::receive(buffer);
}
int MvServerProxy_Complete(void) {
    return 0;
}
int MvServerProxy_GetLastError(char** message) {
    *message = SilentProxy::s_lastError;
    return 0;
}
