// Compressed bytes for scripted responses.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTKIT_GZIP_H
#define MORVENN_NET_MVSERVERPROXY_TESTKIT_GZIP_H

#include <string>

namespace Morvenn::Net::MvServerProxy::TestKit {

/// What stands around the deflated data.
enum class Wrapper { Gzip, Zlib, Raw };

/// @throws std::runtime_error when zlib refuses.
std::string compressed(const std::string& bytes, Wrapper wrapper = Wrapper::Gzip);

/// compressed() with the wrapper a server is expected to use.
inline std::string gzip(const std::string& bytes) {
    return compressed(bytes, Wrapper::Gzip);
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit

#endif
