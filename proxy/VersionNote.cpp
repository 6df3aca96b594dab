// The version of this library, as a note in its file and its memory. The file's name has none, so
// that any library of that name can take its place, and a symbol would be a ninth to be exported.
//
//   owner "MvServerProxy", type 1, description: the version, filled up with zero bytes
#include <elf.h>
#include <link.h>

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr char kOwner[] = "MvServerProxy";

struct VersionNote {
    ElfW(Nhdr) header;
    char owner[16];
    char version[16];
};
static_assert(sizeof(MV_PROXY_VERSION) <= sizeof(VersionNote::version));

[[gnu::section(".note.MvServerProxy"), gnu::used, gnu::aligned(4)]] const VersionNote kNote{
    {sizeof(kOwner), sizeof(VersionNote::version), 1}, "MvServerProxy", MV_PROXY_VERSION};

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy
