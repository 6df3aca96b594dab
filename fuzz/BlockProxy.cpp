#include "fuzz/BlockProxy.h"

#include <algorithm>
#include <utility>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Fuzz {
namespace {

std::vector<std::string> s_blocks;
std::size_t s_receives = 0;
std::size_t s_completes = 0;
std::string s_sent;

}  // namespace

void BlockProxy::start(std::vector<std::string> blocks) {
    s_blocks = std::move(blocks);
    s_receives = 0;
    s_completes = 0;
}

std::size_t BlockProxy::receives() {
    return s_receives;
}

std::size_t BlockProxy::completes() {
    return s_completes;
}

const std::string& BlockProxy::sent() {
    return s_sent;
}

}  // namespace Fuzz

int MvServerProxy_Init(void* (*)(size_t), void (*)(void*)) {
    return 0;
}

int MvServerProxy_Term(void) {
    return 0;
}

int MvServerProxy_Send(const char* text) {
    Fuzz::s_sent = text;
    return 1;
}

int MvServerProxy_SendNoAck(const char* text) {
    Fuzz::s_sent = text;
    return 1;
}

int MvServerProxy_SendEOF(void) {
    return 0;
}

int MvServerProxy_Receive(char* buffer) {
    const std::size_t number = Fuzz::s_receives++;
    if (number >= Fuzz::s_blocks.size()) {
        return MV_STATUS_END_OF_RESPONSE;
    }
    const std::string& block = Fuzz::s_blocks[number];
    std::copy(block.begin(), block.end(), buffer);
    return static_cast<int>(block.size());
}

int MvServerProxy_Complete(void) {
    ++Fuzz::s_completes;
    return 0;
}

int MvServerProxy_GetLastError(char**) {
    return 0;
}
