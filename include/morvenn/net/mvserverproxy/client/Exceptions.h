/**
 * @file
 * The exceptions of the library.
 *
 * Every failure that the library reports is an exception of this one family. Callers tell failures
 * apart by class, not by type code:
 *
 * | class | raised when |
 * |---|---|
 * | MSPConnectionException | the server, or the way to it, fails |
 * | MSPProtocolException | request or answer are not what the protocol allows |
 * | MSPRuntimeException | the proxy fails inside, or the library found the fault itself |
 * | MSPUnrecognisedException | any other status of the proxy |
 * | CredentialsUnavailableException | an application has no credentials to give |
 * | Utf8ConversionException | text cannot be converted to UTF-8 or from it |
 *
 * By design: an exception made from a status of the proxy has type code 0, whatever the status was;
 * the status is in the log. (ProxyErrors.EveryStatusGivesItsClassWithTypeZero)
 *
 * The family is not derived from std::exception: a program that catches both writes two handlers.
 * Exceptions are thrown by value and caught by reference; a handler for MSPException or Exception
 * catches every class below it. Memory exhaustion leaves as std::bad_alloc.
 *
 * Thread rule: an exception object is a plain value.
 */
#ifndef MORVENN_NET_MVSERVERPROXY_CLIENT_EXCEPTIONS_H
#define MORVENN_NET_MVSERVERPROXY_CLIENT_EXCEPTIONS_H

#include <string>

#include "morvenn/net/mvserverproxy/Export.h"

namespace Morvenn::Net::MvServerProxy::Client {

/** The root: an integer type code and a message. Only its subclasses can be created. */
class MVCPP_API Exception {
public:
    /** A plain copy. @{ */
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    /** @} */

    /** What failed. The reference is valid as long as this object. */
    virtual const std::string& getMessage() const;

    /** The type code: 0, or what the place that raised it gave (-1 for the library's own findings).
     */
    virtual int getType() const;

protected:
    /** Type code 0. */
    explicit Exception(const std::string& message);
    /** With a type code of the thrower's own. */
    Exception(int type, const std::string& message);
    virtual ~Exception();

private:
    int m_type;
    std::string m_message;
};

/** Base of everything that the library throws; raised itself where no class below it fits. */
class MVCPP_API MSPException : public Exception {
public:
    /** Type code 0. */
    explicit MSPException(const std::string& message);
    /** With a type code of the thrower's own. */
    MSPException(int type, const std::string& message);
    /** A plain copy. @{ */
    MSPException(const MSPException&) = default;
    MSPException& operator=(const MSPException&) = default;
    /** @} */
    ~MSPException() override;
};

/**
 * A failure inside the proxy (type 0), one found by the library itself (type -1), or a credential
 * provider's refusal (the provider's type).
 */
class MVCPP_API MSPRuntimeException : public MSPException {
public:
    /** Type code 0. */
    explicit MSPRuntimeException(const std::string& message);
    /** With a type code of the thrower's own. */
    MSPRuntimeException(int type, const std::string& message);
    /** A plain copy. @{ */
    MSPRuntimeException(const MSPRuntimeException&) = default;
    MSPRuntimeException& operator=(const MSPRuntimeException&) = default;
    /** @} */
    ~MSPRuntimeException() override;
};

/** Request, answer or call order are not what the protocol allows. */
class MVCPP_API MSPProtocolException : public MSPException {
public:
    /** Type code 0. */
    explicit MSPProtocolException(const std::string& message);
    /** With a type code of the thrower's own. */
    MSPProtocolException(int type, const std::string& message);
    /** A plain copy. @{ */
    MSPProtocolException(const MSPProtocolException&) = default;
    MSPProtocolException& operator=(const MSPProtocolException&) = default;
    /** @} */
    ~MSPProtocolException() override;
};

/** A status of the proxy that the library does not know. */
class MVCPP_API MSPUnrecognisedException : public MSPException {
public:
    /** Type code 0. */
    explicit MSPUnrecognisedException(const std::string& message);
    /** With a type code of the thrower's own. */
    MSPUnrecognisedException(int type, const std::string& message);
    /** A plain copy. @{ */
    MSPUnrecognisedException(const MSPUnrecognisedException&) = default;
    MSPUnrecognisedException& operator=(const MSPUnrecognisedException&) = default;
    /** @} */
    ~MSPUnrecognisedException() override;
};

/** The server, or what leads to it, cannot be reached, or the connection broke. */
class MVCPP_API MSPConnectionException : public MSPException {
public:
    /** Type code 0. */
    explicit MSPConnectionException(const std::string& message);
    /** With a type code of the thrower's own. */
    MSPConnectionException(int type, const std::string& message);
    /** A plain copy. @{ */
    MSPConnectionException(const MSPConnectionException&) = default;
    MSPConnectionException& operator=(const MSPConnectionException&) = default;
    /** @} */
    ~MSPConnectionException() override;
};

/**
 * Thrown by an application's CredentialProvider to refuse a challenge. The caller of the request
 * then receives an MSPRuntimeException with this exception's type code and message.
 */
class MVCPP_API CredentialsUnavailableException : public MSPException {
public:
    /** Type code 0. */
    explicit CredentialsUnavailableException(const std::string& message);
    /** With a type code of the thrower's own. */
    CredentialsUnavailableException(int type, const std::string& message);
    /** A plain copy. @{ */
    CredentialsUnavailableException(const CredentialsUnavailableException&) = default;
    CredentialsUnavailableException& operator=(const CredentialsUnavailableException&) = default;
    /** @} */
    ~CredentialsUnavailableException() override;
};

/** Text cannot be converted; the message carries ICU's name for the failure. Type code 0. */
class MVCPP_API Utf8ConversionException : public MSPException {
public:
    /** Type code 0. */
    explicit Utf8ConversionException(const std::string& message);
    /** With a type code of the thrower's own. */
    Utf8ConversionException(int type, const std::string& message);
    /** A plain copy. @{ */
    Utf8ConversionException(const Utf8ConversionException&) = default;
    Utf8ConversionException& operator=(const Utf8ConversionException&) = default;
    /** @} */
    ~Utf8ConversionException() override;
};

}  // namespace Morvenn::Net::MvServerProxy::Client

#endif  // MORVENN_NET_MVSERVERPROXY_CLIENT_EXCEPTIONS_H
