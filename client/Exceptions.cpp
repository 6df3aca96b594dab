#include "morvenn/net/mvserverproxy/client/Exceptions.h"

namespace Morvenn::Net::MvServerProxy::Client {

// The destructors are defined here so that type information and virtual tables are emitted once, in
// the library, and a handler in the application finds the very same types.

Exception::Exception(const std::string& message) : Exception(0, message) {}
Exception::Exception(int type, const std::string& message) : m_type(type), m_message(message) {}
Exception::~Exception() = default;
const std::string& Exception::getMessage() const {
    return m_message;
}
int Exception::getType() const {
    return m_type;
}

MSPException::MSPException(const std::string& message) : Exception(message) {}
MSPException::MSPException(int type, const std::string& message) : Exception(type, message) {}
MSPException::~MSPException() = default;

MSPRuntimeException::MSPRuntimeException(const std::string& message) : MSPException(message) {}
MSPRuntimeException::MSPRuntimeException(int type, const std::string& message)
    : MSPException(type, message) {}
MSPRuntimeException::~MSPRuntimeException() = default;

MSPProtocolException::MSPProtocolException(const std::string& message) : MSPException(message) {}
MSPProtocolException::MSPProtocolException(int type, const std::string& message)
    : MSPException(type, message) {}
MSPProtocolException::~MSPProtocolException() = default;

MSPUnrecognisedException::MSPUnrecognisedException(const std::string& message)
    : MSPException(message) {}
MSPUnrecognisedException::MSPUnrecognisedException(int type, const std::string& message)
    : MSPException(type, message) {}
MSPUnrecognisedException::~MSPUnrecognisedException() = default;

MSPConnectionException::MSPConnectionException(const std::string& message)
    : MSPException(message) {}
MSPConnectionException::MSPConnectionException(int type, const std::string& message)
    : MSPException(type, message) {}
MSPConnectionException::~MSPConnectionException() = default;

CredentialsUnavailableException::CredentialsUnavailableException(const std::string& message)
    : MSPException(message) {}
CredentialsUnavailableException::CredentialsUnavailableException(int type,
                                                                 const std::string& message)
    : MSPException(type, message) {}
CredentialsUnavailableException::~CredentialsUnavailableException() = default;

Utf8ConversionException::Utf8ConversionException(const std::string& message)
    : MSPException(message) {}
Utf8ConversionException::Utf8ConversionException(int type, const std::string& message)
    : MSPException(type, message) {}
Utf8ConversionException::~Utf8ConversionException() = default;

}  // namespace Morvenn::Net::MvServerProxy::Client
