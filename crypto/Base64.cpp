#include "crypto/Base64.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace Morvenn::Net::MvServerProxy::Crypto::Internal {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';

// Set in the sum of four values when one of the characters is foreign.
constexpr std::uint32_t kForeign = 1U << 24U;

// Two characters for every 12 bits: half of the work for three bytes in one look-up.
struct Pair {
    char first;
    char second;
};

constexpr std::array<Pair, 4096> makeEncodeTable() {
    std::array<Pair, 4096> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = {kAlphabet[i >> 6U], kAlphabet[i & 63U]};
    }
    return table;
}

// A character's six bits, in place for each of the four positions of a group.
constexpr std::array<std::array<std::uint32_t, 256>, 4> makeDecodeTables() {
    std::array<std::array<std::uint32_t, 256>, 4> tables{};
    for (std::size_t place = 0; place < 4; ++place) {
        for (std::uint32_t& entry : tables[place]) {
            entry = kForeign;
        }
        for (std::uint32_t value = 0; value < 64; ++value) {
            tables[place][static_cast<unsigned char>(kAlphabet[value])] = value
                                                                          << (18U - 6U * place);
        }
    }
    return tables;
}

constexpr auto kEncode = makeEncodeTable();
constexpr auto kDecode = makeDecodeTables();

char* put(char* out, const Pair& pair) {
    std::memcpy(out, &pair, sizeof pair);
    return out + sizeof pair;
}

// The three bytes of a group and one more, which the next group writes over: one store instead of
// three.
char* putThree(char* out, std::uint32_t group) {
    const char bytes[] = {static_cast<char>(group >> 16U), static_cast<char>(group >> 8U),
                          static_cast<char>(group), '\0'};
    std::memcpy(out, bytes, sizeof bytes);
    return out + 3;
}

}  // namespace

std::string base64Encode(std::string_view bytes) {
    std::string text((bytes.size() + 2) / 3 * 4, kPadding);
    char* out = text.data();
    const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
    std::size_t left = bytes.size();
    for (; left >= 3; left -= 3, in += 3) {
        const std::uint32_t group =
            (std::uint32_t{in[0]} << 16U) | (std::uint32_t{in[1]} << 8U) | std::uint32_t{in[2]};
        out = put(out, kEncode[group >> 12U]);
        out = put(out, kEncode[group & 0xFFFU]);
    }
    if (left > 0) {
        const std::uint32_t group =
            (std::uint32_t{in[0]} << 16U) | (left == 2 ? std::uint32_t{in[1]} << 8U : 0U);
        out = put(out, kEncode[group >> 12U]);
        if (left == 2) {
            *out = kEncode[group & 0xFFFU].first;
        }
    }
    return text;
}

std::string base64Decode(std::string_view text) {
    std::string bytes(text.size() / 4 * 3 + 3, '\0');
    char* out = bytes.data();
    const auto* in = reinterpret_cast<const unsigned char*>(text.data());
    std::size_t left = text.size();
    for (; left >= 4; left -= 4, in += 4) {
        const std::uint32_t group =
            kDecode[0][in[0]] | kDecode[1][in[1]] | kDecode[2][in[2]] | kDecode[3][in[3]];
        if (group >= kForeign) {
            break;
        }
        out = putThree(out, group);
    }
    std::uint32_t group = 0;
    std::size_t taken = 0;
    while (taken < left && taken < 4 && kDecode[taken][in[taken]] < kForeign) {
        group |= kDecode[taken][in[taken]];
        ++taken;
    }
    if (taken >= 2) {
        *out++ = static_cast<char>(group >> 16U);
    }
    if (taken >= 3) {
        *out++ = static_cast<char>(group >> 8U);
    }
    bytes.resize(static_cast<std::size_t>(out - bytes.data()));
    return bytes;
}

}  // namespace Morvenn::Net::MvServerProxy::Crypto::Internal
