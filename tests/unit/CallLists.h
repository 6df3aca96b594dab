// Lists of calls put together from named parts.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTS_CALLLISTS_H
#define MORVENN_NET_MVSERVERPROXY_TESTS_CALLLISTS_H

#include "testing/Calls.h"

namespace Morvenn::Net::MvServerProxy::Tests {

/// @p calls, then @p more.
inline TestKit::Calls operator+(TestKit::Calls calls, const TestKit::Calls& more) {
    for (const TestKit::Call& call : more.entries()) {
        calls.add(call);
    }
    return calls;
}

}  // namespace Morvenn::Net::MvServerProxy::Tests

#endif
