// Bytes as people read them: quoted with escapes for text, hexadecimal for everything else.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTKIT_BYTES_H
#define MORVENN_NET_MVSERVERPROXY_TESTKIT_BYTES_H

#include <cstddef>
#include <string>
#include <string_view>

namespace Morvenn::Net::MvServerProxy::TestKit {

/// "A=1\r\n" as it would stand in a C++ source, quotes included. A text of more than @p limit bytes
/// is cut there, followed by its size.
std::string escaped(std::string_view text, std::size_t limit = 200);

/// Two lower-case digits a byte, no separators: hex("\xC3\xA9") is "c3a9".
std::string hex(std::string_view bytes);

/// The reverse; blanks between the digits are allowed.
/// @throws std::invalid_argument for anything but pairs of hexadecimal digits.
std::string unhex(std::string_view digits);

/// @p size bytes that do not compress well and hold no zero byte, the same ones in every run.
std::string sampleBytes(std::size_t size);

}  // namespace Morvenn::Net::MvServerProxy::TestKit

#endif
