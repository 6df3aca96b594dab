/**
 * @file
 * The names of request and response headers, and the two words of the directory request.
 *
 * Keys are case-sensitive. Each converts to the `std::string` parameters of MvServerRequest.
 */
#ifndef MORVENN_NET_MVSERVERPROXY_CLIENT_HEADERKEYS_H
#define MORVENN_NET_MVSERVERPROXY_CLIENT_HEADERKEYS_H

namespace Morvenn::Net::MvServerProxy::Client::HeaderKeys {

/** Request: the service to call. */
inline constexpr char kServiceName[] = "Service-Name";
/** Request: the environment's name; looked at by the validity check of send(). */
inline constexpr char kEnvName[] = "Env-Name";
/** Request. By design: a constant of its own beside kXmlRpcText, with the same text.
 *  (HeaderKeys.TheTwoXmlRpcKeysAreEqualTextsAndDistinctObjects) */
inline constexpr char kXmlRpc[] = "XmlRpc";
/** Request: the operation to perform. */
inline constexpr char kOperationName[] = "Operation-Name";
/** Request: "true" asks for a compressed response. */
inline constexpr char kUseCompression[] = "Use-Compression";
/** Request: correlation id for the logs of the server. */
inline constexpr char kLogCorrelationId[] = "Log-Correlation-ID";
/** Request: set by MvServerSimpleRequest. */
inline constexpr char kUseCallback[] = "Use-Callback";
/** Request: the client's locale. */
inline constexpr char kLocale[] = "Locale";
/** Response: the session id to keep for later requests. */
inline constexpr char kResponseSessionId[] = "ResponseSessionID";
/** Request: the server's URL; looked at by the validity check of send(). */
inline constexpr char kServerUrl[] = "Server-Url";
/** Request: looked at by the validity check of send(). */
inline constexpr char kBaseServerUrl[] = "Base-Server-Url";
/** Request: looked at by the validity check of send(); set by MvServerSimpleRequest. */
inline constexpr char kBaseFullUrl[] = "Base-Full-Url";
/** Request: URL of the single sign-on service. */
inline constexpr char kSsoUrl[] = "Sso-Url";
/** Request: the session id; added by send() and shutdownServer() from the MSPSession. */
inline constexpr char kSessionId[] = "SessionID";
/** Request: the media type of the body. */
inline constexpr char kContentType[] = "Content-Type";
/** Request: set by MvServerSimpleRequest. */
inline constexpr char kAppXml[] = "App-Xml";
/** Request: set by MvServerSimpleRequest. Same text as kXmlRpc. */
inline constexpr char kXmlRpcText[] = "XmlRpc";
/** For the application's use. */
inline constexpr char kHttpResponse[] = "HttpResponse";
/** Request: tells sessions of one application apart. */
inline constexpr char kSessionDiscriminator[] = "SessionDiscriminator";
/** Request: marks a signature request; looked at by the validity check, set by PKCS7. */
inline constexpr char kGeneratePkcs7Signatures[] = "generatePKCS7Signatures";
/** First line of the text that shuts the server down. */
inline constexpr char kShutdownServer[] = "ShutdownServer";
/** Response: read by getResponseCode(). */
inline constexpr char kResponseCode[] = "ResponseHeaderResponseCode";
/** Response: read by getResponseText(). */
inline constexpr char kResponseText[] = "ResponseHeaderResponseText";
/** Response: read by getContentType(). */
inline constexpr char kResponseContentType[] = "ResponseHeaderContentType";
/** Response: exactly "true" means that the body is gzip-compressed. */
inline constexpr char kResponseCompression[] = "ResponseHeaderCompression";

/** Directory: selects the environments that serve a URL; followed by "::" and the URL. */
inline constexpr char kMapUrlToEnv[] = "mapURLtoEnv";
/** Directory: the operation word, followed by ":" and the selector. */
inline constexpr char kGetEnv[] = "getEnv";

}  // namespace Morvenn::Net::MvServerProxy::Client::HeaderKeys

#endif  // MORVENN_NET_MVSERVERPROXY_CLIENT_HEADERKEYS_H
