// What every fuzz target shares: the entry point's name, an input read piece by piece, and the end
// of the program when an expectation does not hold.
#ifndef MORVENN_FUZZ_FUZZ_H
#define MORVENN_FUZZ_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Fuzz {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif
#else
constexpr bool kIsSanitized = false;
#endif

inline void require(bool holds, const char* expectation) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", expectation);
        std::abort();
    }
}

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size)
        : m_text(reinterpret_cast<const char*>(data), size) {}

    bool empty() const { return m_at == m_text.size(); }

    /// 0 at the end.
    unsigned byte() { return empty() ? 0 : static_cast<unsigned char>(m_text[m_at++]); }

    std::string take(std::size_t size) {
        std::string piece = m_text.substr(m_at, size);
        m_at += piece.size();
        return piece;
    }

    std::string rest() { return take(m_text.size()); }

private:
    std::string m_text;
    std::size_t m_at = 0;
};

/// Cut into blocks of @p size bytes.
inline std::vector<std::string> blocksOf(const std::string& bytes, std::size_t size) {
    std::vector<std::string> blocks;
    for (std::size_t at = 0; at < bytes.size(); at += size) {
        blocks.push_back(bytes.substr(at, size));
    }
    return blocks;
}

}  // namespace Fuzz

#endif
