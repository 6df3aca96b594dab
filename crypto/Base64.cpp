#include "crypto/Base64.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace Morvenn::Net::MvServerProxy::Crypto::Internal {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';

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

// Four bytes as they lie in memory, so that a decoded group is stored at once.
constexpr std::uint32_t word(std::uint32_t b0, std::uint32_t b1, std::uint32_t b2,
                             std::uint32_t b3) {
    return __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? b0 | (b1 << 8U) | (b2 << 16U) | (b3 << 24U)
                                                     : (b0 << 24U) | (b1 << 16U) | (b2 << 8U) | b3;
}

// Set in a group when one of its characters is foreign: the byte behind the three decoded ones.
constexpr std::uint32_t kForeign = word(0, 0, 0, 1);

// A character's six bits, in place for each of the four positions of a group.
constexpr std::array<std::array<std::uint32_t, 256>, 4> makeDecodeTables() {
    std::array<std::array<std::uint32_t, 256>, 4> tables{};
    for (std::size_t place = 0; place < 4; ++place) {
        for (std::uint32_t& entry : tables[place]) {
            entry = kForeign;
        }
        for (std::uint32_t value = 0; value < 64; ++value) {
            const std::uint32_t group = value << (18U - 6U * place);
            tables[place][static_cast<unsigned char>(kAlphabet[value])] =
                word(group >> 16U, (group >> 8U) & 0xFFU, group & 0xFFU, 0);
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

std::uint32_t decodeGroup(const unsigned char* in) {
    return kDecode[0][in[0]] | kDecode[1][in[1]] | kDecode[2][in[2]] | kDecode[3][in[3]];
}

// Writes a fourth byte behind the three of the group, over which the next group is written.
char* put(char* out, std::uint32_t group) {
    std::memcpy(out, &group, sizeof group);
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
    std::string bytes(text.size() / 4 * 3 + sizeof(std::uint32_t), '\0');
    char* out = bytes.data();
    const auto* in = reinterpret_cast<const unsigned char*>(text.data());
    std::size_t left = text.size();
    for (; left >= 8; left -= 8, in += 8) {  // two groups with one test
        const std::uint32_t first = decodeGroup(in);
        const std::uint32_t second = decodeGroup(in + 4);
        if (((first | second) & kForeign) != 0) {
            break;
        }
        out = put(put(out, first), second);
    }
    for (; left >= 4 && (decodeGroup(in) & kForeign) == 0; left -= 4, in += 4) {
        out = put(out, decodeGroup(in));
    }
    std::uint32_t group = 0;
    std::size_t taken = 0;
    while (taken < left && taken < 4 && kDecode[taken][in[taken]] != kForeign) {
        group |= kDecode[taken][in[taken]];
        ++taken;
    }
    std::memcpy(out, &group, sizeof group);
    out += taken >= 2 ? taken - 1 : 0;
    bytes.resize(static_cast<std::size_t>(out - bytes.data()));
    return bytes;
}

}  // namespace Morvenn::Net::MvServerProxy::Crypto::Internal
