// Answers "<bytes> <SHA-256 in hexadecimal>" and a line end. The body is read and not kept, so a
// body of any size that is let in costs no memory.
#pragma once

#include "Handler.h"

#include <openssl/evp.h>

namespace Morvenn::Net::MvServerProxy::Hub {

class DigestHandler : public Handler {
public:
    DigestHandler();

    void take(const char* bytes, std::size_t count) override;
    Answer finish() override;

private:
    const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> m_digest;
    std::uint64_t m_size = 0;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
