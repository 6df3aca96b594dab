#include "ExchangeState.h"

#include <algorithm>
#include <array>

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr std::array<const char*, kStateCount> kNames{
    "Idle", "Header", "Waiting", "Challenge", "Answer", "Body", "BodyEnded", "Response", "Failed"};

struct Move {
    State from;
    State to;
};
constexpr std::array<Move, 11> kMoves{{
    {State::Header, State::Waiting},       // stream request: its header is complete
    {State::Header, State::Response},      // text request, directory: the answer has begun
    {State::Waiting, State::Body},         // 16
    {State::Waiting, State::Challenge},    // 17
    {State::Waiting, State::Response},     // 18
    {State::Challenge, State::Answer},     // its text has been read
    {State::Answer, State::Waiting},       // answered
    {State::Body, State::BodyEnded},       // end marker
    {State::Body, State::Waiting},         // end marker, but a challenge came in mid body
    {State::BodyEnded, State::Response},   // 18
    {State::BodyEnded, State::Challenge},  // 17: the body is kept and sent again
}};

}  // namespace

const char* nameOf(State state) {
    return kNames[static_cast<std::size_t>(state)];
}

bool isLegalMove(State from, State to) {
    if (to == State::Idle || to == State::Header || to == State::Failed) {
        return true;
    }
    return std::any_of(kMoves.begin(), kMoves.end(),
                       [&](const Move& move) { return move.from == from && move.to == to; });
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
