#include "Certificates.h"

#include "OpenSsl.h"

#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <ctime>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr unsigned kKeyBits = 2048;
constexpr long kDay = 24 * 60 * 60;
constexpr long kLifetime = 730 * kDay;
constexpr long kX509Version3 = 2;

struct Extension {
    int id;
    const char* value;
};

const std::vector<Extension> kCaExtensions = {
    {NID_basic_constraints, "critical,CA:TRUE,pathlen:0"},
    {NID_key_usage, "critical,keyCertSign,cRLSign"},
    {NID_subject_key_identifier, "hash"},
};

// serverAuth for TLS; emailProtection is what verifiers of signatures ask for.
const std::vector<Extension> kHubExtensions = {
    {NID_basic_constraints, "critical,CA:FALSE"},
    {NID_key_usage, "critical,digitalSignature,nonRepudiation,keyEncipherment"},
    {NID_ext_key_usage, "serverAuth,emailProtection"},
    {NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1"},
    {NID_subject_key_identifier, "hash"},
    {NID_authority_key_identifier, "keyid:always"},
};

KeyPtr makeKey() {
    return KeyPtr(orFail(EVP_RSA_gen(kKeyBits), "make a private key"));
}

void setSerial(X509* certificate) {
    BIGNUM* number = BN_new();
    const bool made =
        number != nullptr && BN_rand(number, 127, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY);
    const bool set = made && BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate));
    BN_free(number);
    if (!set) {
        failOpenSsl("make a serial number");
    }
}

void setName(X509* certificate, const char* commonName) {
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(commonName), -1, -1, 0);
}

void addExtensions(X509* certificate, X509* issuer, const std::vector<Extension>& extensions) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    for (const Extension& row : extensions) {
        X509_EXTENSION* extension =
            orFail(X509V3_EXT_conf_nid(nullptr, &context, row.id, row.value), "make a certificate");
        X509_add_ext(certificate, extension, -1);
        X509_EXTENSION_free(extension);
    }
}

// A certificate for `key`, signed by `issuerKey`; null issuer: by itself.
CertificatePtr makeCertificate(const char* commonName, EVP_PKEY* key, X509* issuer,
                               EVP_PKEY* issuerKey, const std::vector<Extension>& extensions) {
    CertificatePtr certificate(orFail(X509_new(), "make a certificate"));
    X509* const own = certificate.get();
    X509_set_version(own, kX509Version3);
    setSerial(own);
    setName(own, commonName);
    X509_set_issuer_name(own, X509_get_subject_name(issuer != nullptr ? issuer : own));
    X509_gmtime_adj(X509_getm_notBefore(own), -kDay);  // clocks of containers may lag
    X509_gmtime_adj(X509_getm_notAfter(own), kLifetime);
    X509_set_pubkey(own, key);
    addExtensions(own, issuer != nullptr ? issuer : own, extensions);
    if (X509_sign(own, issuerKey, EVP_sha256()) == 0) {
        failOpenSsl("sign a certificate");
    }
    return certificate;
}

std::string pemOf(X509* certificate) {
    const BioPtr writer = memoryWriter();
    PEM_write_bio_X509(writer.get(), certificate);
    return writtenTo(writer.get());
}

std::string pemOf(EVP_PKEY* key) {
    const BioPtr writer = memoryWriter();
    PEM_write_bio_PrivateKey(writer.get(), key, nullptr, nullptr, 0, nullptr, nullptr);
    return writtenTo(writer.get());
}

}  // namespace

MadeCertificates makeCertificates() {
    const KeyPtr caKey = makeKey();
    const CertificatePtr ca =
        makeCertificate("mvhub development CA", caKey.get(), nullptr, caKey.get(), kCaExtensions);
    const KeyPtr key = makeKey();
    const CertificatePtr certificate =
        makeCertificate("localhost", key.get(), ca.get(), caKey.get(), kHubExtensions);
    return {pemOf(ca.get()), pemOf(key.get()), pemOf(certificate.get())};
}

bool stillValid(const std::string& certificate) {
    const BioPtr reader = readerOf(certificate);
    const CertificatePtr parsed(PEM_read_bio_X509(reader.get(), nullptr, nullptr, nullptr));
    if (parsed == nullptr) {
        return false;
    }
    std::time_t now = std::time(nullptr);
    std::time_t tomorrow = now + kDay;
    return X509_cmp_time(X509_get0_notBefore(parsed.get()), &now) < 0 &&
           X509_cmp_time(X509_get0_notAfter(parsed.get()), &tomorrow) > 0;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
