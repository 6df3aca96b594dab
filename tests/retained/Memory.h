// What the program takes from operator new, and from malloc in the library's own code: kept count
// of, made to fail. Linking Memory.cpp replaces both.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTS_MEMORY_H
#define MORVENN_NET_MVSERVERPROXY_TESTS_MEMORY_H

#include <cstddef>
#include <functional>
#include <ostream>

namespace Morvenn::Net::MvServerProxy::Tests::Memory {

struct Kept {
    std::size_t blocks = 0;
    std::size_t bytes = 0;  ///< as asked for
};

inline bool operator==(const Kept& a, const Kept& b) {
    return a.blocks == b.blocks && a.bytes == b.bytes;
}

inline std::ostream& operator<<(std::ostream& out, const Kept& kept) {
    return out << kept.blocks << " blocks, " << kept.bytes << " bytes";
}

/// What operator new gave in the course of @p work and operator delete has not taken back.
Kept keptBy(const std::function<void()>& work);

/// The largest request to operator new since the last keptBy() began or reset.
std::size_t largestRequest();

/// The n-th request to operator new from now on fails, once. 0: none.
void failRequest(std::size_t number);

/// Whether the request that failRequest() named has come.
bool hasFailed();

/// Requests to operator new of more bytes than this fail.
void limitRequests(std::size_t bytes);

/// The next malloc of the library itself fails.
void failNextMalloc();

/// The size of the last malloc of the library itself.
std::size_t lastMalloc();

}  // namespace Morvenn::Net::MvServerProxy::Tests::Memory

#endif
