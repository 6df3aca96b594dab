// The states of an exchange, their names, and the moves between them.
#ifndef MORVENN_PROXY_EXCHANGESTATE_H
#define MORVENN_PROXY_EXCHANGESTATE_H

#include <cstddef>

namespace Morvenn::Net::MvServerProxy::Proxy {

enum class State {
    Idle,       // no exchange
    Header,     // its text is being collected
    Waiting,    // the client waits for an instruction
    Challenge,  // credential challenge given as instruction, its text not read yet
    Answer,     // the answer to it is expected
    Body,       // the body is being sent
    BodyEnded,  // the body is complete, the next instruction is expected
    Response,   // header block and body are being read
    Failed,     // over; every call repeats the failure
};
constexpr std::size_t kStateCount = 9;

const char* nameOf(State state);

// True when an exchange may go from one to the other. Every state may go to Idle (completed),
// Header (a new exchange takes its place) and Failed.
bool isLegalMove(State from, State to);

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
