// The eight functions of a proxy that challenges every request, without memory from the heap: what
// is sent stays in a buffer of the program.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTS_SILENTPROXY_H
#define MORVENN_NET_MVSERVERPROXY_TESTS_SILENTPROXY_H

#include <string_view>

namespace Morvenn::Net::MvServerProxy::Tests::SilentProxy {

struct Behaviour {
    int challenges = 1;          ///< how many before the response
    int answerResult = 1;        ///< of the SendNoAck of an answer
    int afterAnswer = 18;        ///< the instruction that follows the last answer
    bool endsInFailure = false;  ///< the response breaks off with a failure
};

extern Behaviour behaviour;

/// The last text that was sent; up to 128 KiB of it.
std::string_view lastSent();

}  // namespace Morvenn::Net::MvServerProxy::Tests::SilentProxy

#endif
