#include "VersionNote.h"

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

constexpr std::string_view kOwner("MvServerProxy", sizeof("MvServerProxy"));  // with its zero byte
constexpr std::uint32_t kVersion = 1;

struct Search {
    std::uintptr_t address;
    std::string version;
};

// A note is a header, then owner and description, each filled up to the alignment.
std::string versionAmong(std::string_view notes, std::size_t alignment) {
    const auto filledUp = [&](std::size_t size) {
        return (size + alignment - 1) / alignment * alignment;
    };
    ElfW(Nhdr) header{};
    while (notes.size() >= sizeof(header)) {
        std::memcpy(&header, notes.data(), sizeof(header));
        const std::size_t begin = filledUp(sizeof(header) + header.n_namesz);
        if (begin + header.n_descsz > notes.size()) {
            break;
        }
        if (header.n_type == kVersion && notes.substr(sizeof(header), header.n_namesz) == kOwner) {
            const std::string_view text = notes.substr(begin, header.n_descsz);
            return std::string(text.substr(0, text.find('\0')));
        }
        notes.remove_prefix(std::min(notes.size(), filledUp(begin + header.n_descsz)));
    }
    return {};
}

bool holds(const dl_phdr_info& file, std::uintptr_t address) {
    for (const auto* part = file.dlpi_phdr; part != file.dlpi_phdr + file.dlpi_phnum; ++part) {
        const std::uintptr_t begin = file.dlpi_addr + part->p_vaddr;
        if (part->p_type == PT_LOAD && address >= begin && address < begin + part->p_memsz) {
            return true;
        }
    }
    return false;
}

int visit(dl_phdr_info* file, std::size_t, void* data) {
    auto& search = *static_cast<Search*>(data);
    if (!holds(*file, search.address)) {
        return 0;
    }
    for (const auto* part = file->dlpi_phdr; part != file->dlpi_phdr + file->dlpi_phnum; ++part) {
        if (part->p_type == PT_NOTE && search.version.empty()) {
            const auto* begin = reinterpret_cast<const char*>(file->dlpi_addr + part->p_vaddr);
            search.version = versionAmong({begin, part->p_memsz}, part->p_align == 8 ? 8 : 4);
        }
    }
    return 1;
}

}  // namespace

std::string notedVersion(const void* address) {
    Search search{reinterpret_cast<std::uintptr_t>(address), {}};
    ::dl_iterate_phdr(visit, &search);
    return search.version;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
