#include "DigestHandler.h"

#include "Hex.h"

#include <array>

namespace Morvenn::Net::MvServerProxy::Hub {

DigestHandler::DigestHandler() : m_digest(EVP_MD_CTX_new(), &EVP_MD_CTX_free) {
    EVP_DigestInit_ex(m_digest.get(), EVP_sha256(), nullptr);
}

void DigestHandler::take(const char* bytes, std::size_t count) {
    EVP_DigestUpdate(m_digest.get(), bytes, count);
    m_size += count;
}

Answer DigestHandler::finish() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned length = 0;
    EVP_DigestFinal_ex(m_digest.get(), digest.data(), &length);
    return textAnswer(200, std::to_string(m_size) + " " + hex(digest.data(), length) + "\n");
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
