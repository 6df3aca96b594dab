#include "Cms.h"

#include "Failure.h"
#include "LocalFile.h"

#include <openssl/cms.h>
#include <openssl/err.h>
#include <openssl/x509_vfy.h>

#include <memory>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

template <auto Function>
struct FreedBy {
    template <class T>
    void operator()(T* object) const {
        Function(object);
    }
};

using Bio = std::unique_ptr<BIO, FreedBy<BIO_free_all>>;
using Cms = std::unique_ptr<CMS_ContentInfo, FreedBy<CMS_ContentInfo_free>>;
using X509Store = std::unique_ptr<X509_STORE, FreedBy<X509_STORE_free>>;

void freeStack(STACK_OF(X509) * certificates) {
    sk_X509_free(certificates);
}
using Signers = std::unique_ptr<STACK_OF(X509), FreedBy<freeStack>>;

// The reason of the innermost error, and what OpenSSL adds to it.
std::string reason() {
    std::string text = "OpenSSL gives no reason";
    const char* data = "";
    int flags = 0;
    while (const unsigned long code = ERR_get_error_all(nullptr, nullptr, nullptr, &data, &flags)) {
        const char* words = ERR_reason_error_string(code);
        text = words != nullptr ? words : "error " + std::to_string(code);
        if ((flags & ERR_TXT_STRING) != 0 && *data != '\0') {
            text += std::string(" (") + data + ")";
        }
    }
    return text;
}

std::string subject(X509* certificate) {
    const Bio text(BIO_new(BIO_s_mem()));
    X509_NAME_print_ex(text.get(), X509_get_subject_name(certificate), 0,
                       XN_FLAG_RFC2253 & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB));
    char* bytes = nullptr;
    const long count = BIO_get_mem_data(text.get(), &bytes);
    return {bytes, static_cast<std::size_t>(count)};
}

Cms parse(const std::string& path) {
    const std::string bytes = readFile(path);
    const auto* at = reinterpret_cast<const unsigned char*>(bytes.data());
    Cms cms(d2i_CMS_ContentInfo(nullptr, &at, static_cast<long>(bytes.size())));
    if (!cms) {
        ERR_clear_error();
        throw Failure(ExitCode::Protocol, path + " is no signature (CMS in DER form)");
    }
    return cms;
}

}  // namespace

struct CmsVerifier::Store {
    X509Store store{X509_STORE_new()};
};

CmsVerifier::CmsVerifier(const std::string& authorities) : m_store(nullptr) {
    auto store = std::make_unique<Store>();
    readFile(authorities);  // for a message that says why a file cannot be read
    if (X509_STORE_load_file(store->store.get(), authorities.c_str()) != 1) {
        ERR_clear_error();
        throw Failure(ExitCode::LocalFile, authorities + " holds no certificates in PEM form");
    }
    // The server decides what its signing certificate is for; the chain is what is checked.
    X509_STORE_set_purpose(store->store.get(), X509_PURPOSE_ANY);
    m_store = store.release();
}

CmsVerifier::~CmsVerifier() {
    delete m_store;
}

std::vector<std::string> CmsVerifier::verify(const std::string& content,
                                             const std::string& signature) const {
    const Cms cms = parse(signature);
    const Bio data(BIO_new_file(content.c_str(), "rb"));
    if (!data) {
        ERR_clear_error();
        throwFileFailure("cannot read", content);
    }
    if (CMS_verify(cms.get(), nullptr, m_store->store.get(), data.get(), nullptr,
                   CMS_DETACHED | CMS_BINARY) != 1) {
        throw Failure(ExitCode::Protocol,
                      signature + " does not verify for " + content + ": " + reason());
    }
    const Signers signers(CMS_get0_signers(cms.get()));
    const int count = sk_X509_num(signers.get());
    std::vector<std::string> subjects;
    subjects.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        subjects.push_back(subject(sk_X509_value(signers.get(), i)));
    }
    return subjects;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
