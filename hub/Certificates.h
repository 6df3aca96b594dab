// Makes the key and certificate that the hub uses when it was given none.
#pragma once

#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

struct MadeCertificates {
    std::string ca;           // certificate of the CA, PEM; its key is forgotten once it has signed
    std::string key;          // the hub's private key, PEM, not encrypted
    std::string certificate;  // for localhost, 127.0.0.1 and ::1; for TLS and for signatures
};

// A new CA and a new pair signed by it, valid for two years. Throws std::runtime_error.
MadeCertificates makeCertificates();

// Whether the certificate (PEM) is valid now and for another day.
bool stillValid(const std::string& certificate);

}  // namespace Morvenn::Net::MvServerProxy::Hub
