// Checking detached CMS (PKCS#7) signatures with OpenSSL.
#pragma once

#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Tools {

class CmsVerifier {
public:
    // Trusts the certificates of this PEM file and no others.
    explicit CmsVerifier(const std::string& authorities);
    CmsVerifier(const CmsVerifier&) = delete;
    CmsVerifier& operator=(const CmsVerifier&) = delete;
    ~CmsVerifier();

    // Checks the DER file `signature` over all bytes of `content`.
    // Returns the signers' subjects. A Failure (Protocol) says why the signature does not hold.
    std::vector<std::string> verify(const std::string& content, const std::string& signature) const;

private:
    struct Store;
    Store* m_store;
};

}  // namespace Morvenn::Net::MvServerProxy::Tools
