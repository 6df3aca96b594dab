// Owning pointers for OpenSSL's objects, and its error texts as exceptions.
#pragma once

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

template <auto release>
struct Release {
    template <typename Object>
    void operator()(Object* object) const {
        release(object);
    }
};

using BioPtr = std::unique_ptr<BIO, Release<&BIO_free_all>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, Release<&EVP_PKEY_free>>;
using CertificatePtr = std::unique_ptr<X509, Release<&X509_free>>;
using CmsPtr = std::unique_ptr<CMS_ContentInfo, Release<&CMS_ContentInfo_free>>;

// Throws std::runtime_error: "cannot <what>: <reasons of OpenSSL>".
[[noreturn]] void failOpenSsl(const std::string& what);

// `pointer`, or failOpenSsl when it is null.
template <typename Object>
Object* orFail(Object* pointer, const std::string& what) {
    if (pointer == nullptr) {
        failOpenSsl(what);
    }
    return pointer;
}

// A BIO that reads `text`, which it borrows.
BioPtr readerOf(const std::string& text);

BioPtr memoryWriter();

// What has been written to a memoryWriter().
std::string writtenTo(BIO* writer);

}  // namespace Morvenn::Net::MvServerProxy::Hub
