#include "Signer.h"

#include "OpenSsl.h"

#include <openssl/err.h>
#include <openssl/pem.h>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

void releaseChain(STACK_OF(X509) * chain) {
    sk_X509_pop_free(chain, &X509_free);
}

using ChainPtr = std::unique_ptr<STACK_OF(X509), Release<&releaseChain>>;

// A key that asks for a password gets none: the hub starts without a terminal.
int noPassword(char*, int, int, void*) {
    return 0;
}

}  // namespace

struct Signer::Material {
    KeyPtr key;
    CertificatePtr certificate;
    ChainPtr chain;
};

Signer::Signer(const std::string& key, const std::string& certificates) {
    auto material = std::make_unique<Material>();
    const BioPtr keyReader = readerOf(key);
    material->key.reset(
        orFail(PEM_read_bio_PrivateKey(keyReader.get(), nullptr, &noPassword, nullptr),
               "read the private key (PEM without password)"));
    const BioPtr reader = readerOf(certificates);
    material->certificate.reset(orFail(PEM_read_bio_X509(reader.get(), nullptr, nullptr, nullptr),
                                       "read the certificate (PEM)"));
    material->chain.reset(orFail(sk_X509_new_null(), "read the certificate chain"));
    while (X509* next = PEM_read_bio_X509(reader.get(), nullptr, nullptr, nullptr)) {
        sk_X509_push(material->chain.get(), next);
    }
    ERR_clear_error();  // reading ends with "no more certificates"
    if (X509_check_private_key(material->certificate.get(), material->key.get()) != 1) {
        failOpenSsl("use the key with this certificate");
    }
    m_material = std::move(material);
}

Signer::~Signer() = default;

std::string Signer::sign(const std::string& item) const {
    const BioPtr data = readerOf(item);
    const CmsPtr signature(
        orFail(CMS_sign(m_material->certificate.get(), m_material->key.get(),
                        m_material->chain.get(), data.get(), CMS_DETACHED | CMS_BINARY),
               "sign"));
    const BioPtr writer = memoryWriter();
    if (i2d_CMS_bio(writer.get(), signature.get()) != 1) {
        failOpenSsl("write the signature");
    }
    return writtenTo(writer.get());
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
