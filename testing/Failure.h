// An exception of the client library as a value: class, type code and message compared in one line.
//
//   EXPECT_EQ(failureOf([&] { request.send(); }),
//             failure<MSPProtocolException>(0, "Unsupported request type found."));
#ifndef MORVENN_NET_MVSERVERPROXY_TESTKIT_FAILURE_H
#define MORVENN_NET_MVSERVERPROXY_TESTKIT_FAILURE_H

#include <ostream>
#include <string>
#include <typeindex>
#include <typeinfo>
#include <utility>

#include "Bytes.h"
#include "morvenn/net/mvserverproxy/client/Exceptions.h"

namespace Morvenn::Net::MvServerProxy::TestKit {

/// What was thrown; the class is the exact one, not a base of it.
struct Failure {
    std::type_index type = typeid(void);
    int code = 0;
    std::string message;
};

inline bool operator==(const Failure& a, const Failure& b) {
    return a.type == b.type && a.code == b.code && a.message == b.message;
}

inline bool operator!=(const Failure& a, const Failure& b) {
    return !(a == b);
}

inline std::ostream& operator<<(std::ostream& out, const Failure& failure) {
    if (failure.type == typeid(void)) {
        return out << "no exception";
    }
    return out << failure.type.name() << '(' << failure.code << ", " << escaped(failure.message)
               << ')';
}

/// The failure a test expects.
template <typename E>
Failure failure(int code, std::string message) {
    return {typeid(E), code, std::move(message)};
}

/// The failure that @p work ends with; one that equals Failure{} when it ends well. Exceptions that
/// are not of the client library pass through.
template <typename Work>
Failure failureOf(Work&& work) {
    try {
        std::forward<Work>(work)();
    } catch (const Client::Exception& e) {
        return {typeid(e), e.getType(), e.getMessage()};
    }
    return {};
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit

#endif
