// Makes detached CMS (PKCS#7) signatures.
//
// Safe to use from any number of threads.
#pragma once

#include <memory>
#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

class Signer {
public:
    // Key and certificates in PEM, the key's own certificate first; the others travel with every
    // signature. Throws std::runtime_error when they cannot be read or do not belong together.
    Signer(const std::string& key, const std::string& certificates);
    ~Signer();

    // The signature over the bytes as they are (no text conversion), in DER, with the signer's
    // certificate and without the bytes. Throws std::runtime_error.
    std::string sign(const std::string& item) const;

private:
    struct Material;
    std::unique_ptr<const Material> m_material;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
