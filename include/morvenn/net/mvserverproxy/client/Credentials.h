/**
 * @file
 * Answering the credential challenge of a forward proxy.
 *
 * A forward proxy between the application and the server may ask who is calling. The request then
 * asks the application's CredentialProvider, on the thread that called send() or execute(), once
 * for every challenge; refused credentials lead to the next challenge.
 *
 * By design: the library sets no limit to the number of challenges: a provider that has been asked
 * before for the same scope should refuse.
 * (CredentialChallenge.ThousandChallengesGetAThousandAnswers)
 *
 * Ownership: the AuthScope is lent for the duration of the call. The Credential stays the
 * provider's: it must be valid until getCredential() has returned and, immediately afterwards on
 * the same thread, the library has copied its three texts.
 *
 * The library writes no part of a Credential to the log, and wipes its own copies after use.
 */
#ifndef MORVENN_NET_MVSERVERPROXY_CLIENT_CREDENTIALS_H
#define MORVENN_NET_MVSERVERPROXY_CLIENT_CREDENTIALS_H

#include <string>

#include "morvenn/net/mvserverproxy/Export.h"

namespace Morvenn::Net::MvServerProxy::Client {

/** User, password and domain, in clear text and in the local code page. A plain value. */
class MVCPP_API Credential {
public:
    /** All three texts. */
    Credential(const std::string& user, const std::string& password, const std::string& domain);
    /** The domain is empty. */
    Credential(const std::string& user, const std::string& password);
    /** A plain copy. @{ */
    Credential(const Credential& other);
    Credential& operator=(const Credential& other);
    /** @} */
    ~Credential();

    /** A copy of the text. @{ */
    std::string getUser() const;
    std::string getPassword() const;
    std::string getDomain() const;
    /** @} */

private:
    std::string m_user;
    std::string m_password;
    std::string m_domain;
};

/**
 * Who asks: host, port and realm of the forward proxy, each as received. Empty when the challenge
 * did not say. A plain value.
 */
class MVCPP_API AuthScope {
public:
    /** All three texts. */
    AuthScope(const std::string& host, const std::string& port, const std::string& realm);
    /** A plain copy. @{ */
    AuthScope(const AuthScope& other);
    AuthScope& operator=(const AuthScope& other);
    /** @} */
    ~AuthScope();

    /** A copy of the text; the port is text, too. @{ */
    std::string getHost() const;
    std::string getPort() const;
    std::string getRealm() const;
    /** @} */

private:
    std::string m_host;
    std::string m_port;
    std::string m_realm;
};

/**
 * The application's source of credentials.
 *
 * By design: no virtual destructor; the library never deletes a provider, and a provider is not
 * deleted through this type. (Credentials.ProviderHasOneVirtualOperationAndNoVirtualDestructor)
 */
class MVCPP_API CredentialProvider {
public:
    /** The interface itself holds nothing. @{ */
    CredentialProvider() = default;
    CredentialProvider(const CredentialProvider&) = default;
    CredentialProvider(CredentialProvider&&) = default;
    CredentialProvider& operator=(const CredentialProvider&) = default;
    CredentialProvider& operator=(CredentialProvider&&) = default;
    /** @} */

    /**
     * Gives the credential for @p scope, which is lent for the duration of the call.
     * @return the credential to present, or null when there is none: the request then fails with
     *         MSPRuntimeException, type code 0.
     * @throws CredentialsUnavailableException to refuse with a type code and message of one's own,
     *         which the request's caller receives in an MSPRuntimeException. Any other exception
     *         reaches that caller unchanged.
     */
    virtual const Credential* getCredential(AuthScope* scope) const = 0;
};

}  // namespace Morvenn::Net::MvServerProxy::Client

#endif  // MORVENN_NET_MVSERVERPROXY_CLIENT_CREDENTIALS_H
