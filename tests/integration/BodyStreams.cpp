#include "BodyStreams.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <memory>

namespace Morvenn::Net::MvServerProxy::Integration {
namespace {

constexpr std::size_t kBlock = 16384;

std::string inHex(const unsigned char* bytes, std::size_t count) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += kDigits[bytes[i] >> 4U];
        text += kDigits[bytes[i] & 15U];
    }
    return text;
}

}  // namespace

GeneratedBody::Buffer::Buffer(std::uint64_t size) : m_block(kBlock, 'a'), m_size(size) {
    for (std::size_t i = 0; i < m_block.size(); ++i) {
        m_block[i] = static_cast<char>('a' + i % 26);
    }
}

std::streambuf::int_type GeneratedBody::Buffer::underflow() {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, m_size - m_given));
    if (count == 0) {
        return traits_type::eof();
    }
    m_given += count;
    setg(m_block.data(), m_block.data(), m_block.data() + count);
    return traits_type::to_int_type(m_block.front());
}

std::string GeneratedBody::digest(std::uint64_t size) {
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                          &EVP_MD_CTX_free);
    EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr);
    GeneratedBody body(size);
    std::array<char, kBlock> block{};
    while (body.read(block.data(), block.size()).gcount() > 0) {
        EVP_DigestUpdate(context.get(), block.data(), static_cast<std::size_t>(body.gcount()));
    }
    std::array<unsigned char, EVP_MAX_MD_SIZE> result{};
    unsigned length = 0;
    EVP_DigestFinal_ex(context.get(), result.data(), &length);
    return std::to_string(size) + " " + inHex(result.data(), length) + "\n";
}

}  // namespace Morvenn::Net::MvServerProxy::Integration
