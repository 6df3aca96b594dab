#include "support/ScriptedProxy.h"

#include <algorithm>
#include <cstring>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Bench {

namespace {

constexpr int kInstructions[] = {MV_INSTRUCTION_SEND_BODY, MV_INSTRUCTION_RESPONSE_READY};

// What is still to be given of one exchange.
struct Rest {
    std::size_t instruction = std::size(kInstructions);
    std::string_view head;
    std::string_view piece;  // of the body's text; starts anew when it is used up
    std::size_t bodySize = 0;
};

Answer s_answer;
Rest s_rest;
std::size_t s_sent = 0;

void rewind() {
    s_rest.instruction = s_answer.asksForBody ? 0 : std::size(kInstructions);
    s_rest.head = s_answer.head;
    s_rest.piece = s_answer.body;
    s_rest.bodySize = s_answer.bodySize;
}

int take(std::string_view& text, std::size_t limit, char* buffer) {
    const std::size_t size = std::min(text.size(), limit);
    std::memcpy(buffer, text.data(), size);
    text.remove_prefix(size);
    return static_cast<int>(size);
}

int takeBody(char* buffer) {
    if (s_rest.bodySize == 0) {
        return MV_STATUS_END_OF_RESPONSE;
    }
    if (s_rest.piece.empty()) {
        s_rest.piece = s_answer.body;
    }
    const int size = take(s_rest.piece, std::min(s_answer.blockSize, s_rest.bodySize), buffer);
    s_rest.bodySize -= static_cast<std::size_t>(size);
    return size;
}

}  // namespace

Answer answerOf(std::string_view head, std::string_view body) {
    Answer answer;
    answer.head = head;
    answer.body = body;
    answer.bodySize = body.size();
    return answer;
}

void setAnswer(const Answer& answer) {
    s_answer = answer;
    rewind();
}

std::size_t bytesSent() {
    return s_sent;
}

}  // namespace Morvenn::Bench

using namespace Morvenn::Bench;

int MvServerProxy_Init(void* (*)(size_t), void (*)(void*)) {
    return 0;
}

int MvServerProxy_Term(void) {
    return 0;
}

int MvServerProxy_Send(const char* text) {
    s_sent += std::strlen(text);
    return 1;
}

int MvServerProxy_SendNoAck(const char* text) {
    return MvServerProxy_Send(text);
}

int MvServerProxy_SendEOF(void) {
    return 0;
}

int MvServerProxy_Receive(char* buffer) {
    if (s_rest.instruction < std::size(kInstructions)) {
        return kInstructions[s_rest.instruction++];
    }
    if (!s_rest.head.empty()) {
        return take(s_rest.head, MV_PROXY_BLOCK_SIZE, buffer);
    }
    return takeBody(buffer);
}

int MvServerProxy_Complete(void) {
    rewind();
    s_sent = 0;
    return 0;
}

int MvServerProxy_GetLastError(char**) {
    return 0;
}
