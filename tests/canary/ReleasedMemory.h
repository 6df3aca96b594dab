// Looks at every block of memory on its way back to the heap, whoever releases it.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTS_RELEASEDMEMORY_H
#define MORVENN_NET_MVSERVERPROXY_TESTS_RELEASEDMEMORY_H

#include <cstddef>
#include <string_view>

namespace Morvenn::Net::MvServerProxy::Tests::ReleasedMemory {

/// Adds bytes to look for; borrowed. At most 16.
void lookFor(std::string_view bytes);

/// Looking is off at the start.
void look(bool isOn);

/// Blocks seen since the start, and those of them that held any of the bytes.
std::size_t seen();
std::size_t found();

/// The size of the first block that was found, and where it was released, on standard error.
void describeFirst();

}  // namespace Morvenn::Net::MvServerProxy::Tests::ReleasedMemory

#endif
