/**
 * @file
 * One exchange with the server.
 *
 * @code
 * using namespace Morvenn::Net::MvServerProxy::Client;
 *
 * MSPSession session;
 * MvServerRequest request(&session);
 * request.setHeader(HeaderKeys::kEnvName, "Production");
 * request.setHeader(HeaderKeys::kUseCompression, "true");
 * request.setBody("<query/>");
 * try {
 *     std::string answer = request.execute();
 * } catch (const MSPConnectionException& e) {
 *     std::cerr << e.getMessage() << '\n';  // cannot reach the server
 * } catch (const MSPException& e) {
 *     std::cerr << e.getMessage() << '\n';  // everything else that the library reports
 * }
 * @endcode
 */
#ifndef MORVENN_NET_MVSERVERPROXY_CLIENT_MVSERVERREQUEST_H
#define MORVENN_NET_MVSERVERPROXY_CLIENT_MVSERVERREQUEST_H

#include <atomic>
#include <functional>
#include <istream>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "morvenn/net/mvserverproxy/Export.h"
#include "morvenn/net/mvserverproxy/client/Credentials.h"
#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "morvenn/net/mvserverproxy/client/HeaderKeys.h"
#include "morvenn/net/mvserverproxy/client/MSPSession.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"

namespace Morvenn::Net::MvServerProxy::Client {

/**
 * One request and its response. Create it for a session, set headers and a body, then call send()
 * to read the response as a stream, or execute() to get it as one string. An object is sent once.
 *
 * The body is a text or a stream; a text that is not empty wins. A stream body is read while it is
 * sent, in pieces of at most 4096 bytes, and can meet a forward proxy's credential challenge; a
 * text body goes out in one piece and cannot be challenged.
 *
 * By design: texts travel NUL-terminated. Header text and a text body end at their first zero byte;
 * of each piece of a stream body the rest after its first zero byte is lost.
 * (TextBody.TextIsCutAtItsFirstZeroByte, StreamBody.EachChunkIsCutAtItsFirstZeroByte)
 *
 * Ownership: session, body stream and credential provider are borrowed and must outlive the
 * exchange. The stream returned by send() is the caller's, who deletes it; that ends the exchange,
 * as does the destruction of a request that was not sent.
 *
 * Thread rule: a request, its session and its response are used by one thread at a time. The
 * library starts no thread and takes no lock.
 */
class MVCPP_API MvServerRequest {
public:
    /** @param session borrowed; null is refused when the request is sent. */
    explicit MvServerRequest(MSPSession* session);

    /**
     * Moves the exchange out of @p other and copies everything else. @p other can then neither be
     * sent nor receive: it raises MSPRuntimeException, type -1.
     */
    MvServerRequest(MvServerRequest& other);
    /** The same; ends the exchange of this request first if it was not sent. */
    MvServerRequest& operator=(MvServerRequest& other);

    /** Ends the exchange if send() did not hand it over. */
    ~MvServerRequest();

    /**
     * Sets a header.
     * By design: the first value set for a name stays; a later call with the same name changes
     * nothing. (RequestHeaders.FirstValueSetForANameStays)
     * By design: names and values are not checked; a line break in a value breaks the header text.
     * Applications clean what comes from elsewhere. (RequestHeaders.LineBreaksPassUnchanged)
     */
    void setHeader(std::string name, std::string value);

    /** Sets a stream body. Borrows @p stream; nothing is read until the proxy asks for the body. */
    void setBody(std::istream* stream);

    /** Sets a text body: a copy of @p text, which must not be null, up to its first zero byte. */
    void setBody(const char* text);

    /**
     * Sends the request and reads the response's headers.
     * @return the response's body; the caller deletes it. A failure while it is read shows as its
     *         bad() flag, or as the exception itself after `exceptions(std::ios::badbit)`.
     * @throws MSPRuntimeException type -1 when this object has been sent before, when its exchange
     *         was moved to a copy, when it was created without a session, or when headers or
     *         credentials cannot be converted to UTF-8.
     * @throws MSPProtocolException type 0 when there is neither a text nor a stream body, or when
     *         "generatePKCS7Signatures" is "null" and environment and URL headers are all empty or
     *         "null".
     * @throws MSPException type 0 when a forward proxy asks for credentials and no provider is set;
     *         MSPRuntimeException when the provider has none to give; MSPProtocolException type 0
     *         when the challenge cannot be read.
     * @throws Utf8ConversionException when the session id in the response cannot be converted.
     * @throws any class of the family for a status of the proxy (see Exceptions.h), and whatever
     * the body stream or the credential provider throws.
     *
     * By design: only the literal "null" marks a request as not for signing; an absent or empty
     * "generatePKCS7Signatures" lets it pass. (Validity.OnlyTheLiteralNullIsRefused)
     * By design: the response's header lines are read without limit, results of the proxy that are
     * no data included. (ResponseHeaders.HeaderBlockWithoutEndKeepsAsking)
     * By design: an instruction other than 16, 17 and 18 is waited on for ever, without a call.
     * (Spin.UnknownInstructionIsWaitedOnWithoutACall)
     */
    std::istream* send();

    /**
     * send(), then the whole response as one string, without limit.
     * @throws as send(); a failure while the response is read leaves unchanged. The exchange is
     *         ended on every way out.
     */
    std::string execute();

    /**
     * Sends the stream body in pieces, then the end marker. Called by send() when the proxy asks.
     * @return the proxy's next instruction; a negative one is not raised here.
     * @throws the class of the status for a refused piece or end marker; MSPRuntimeException type
     *         -1 when no stream is set; whatever the stream throws.
     */
    int sendBody();

    /**
     * Sends the header text of a request with a stream body, then the end marker. Called by send().
     * @throws the class of the status when either is refused; MSPRuntimeException type -1 when the
     *         text cannot be converted to UTF-8.
     */
    void submitRequestHeader();

    /**
     * Sends @p text, formatted wholly by the caller, then the end marker. Reads nothing; does not
     * touch headers or session.
     * @return the result of the end marker, 0 or more.
     * @throws MSPUnrecognisedException when @p text is null; nothing is sent then.
     */
    int sendCompleteRequest(const char* text);

    /** Borrows @p provider, or forgets the one before when it is null. */
    void setCredentialProvider(const CredentialProvider* provider);
    /** The provider set before; null when there is none. */
    const CredentialProvider* getCredentialProvider() const;

    /**
     * Reads the proxy's next instruction.
     * @return it, or a negative status, unchanged.
     * @throws MSPRuntimeException type -1 when the exchange was handed over or moved to a copy.
     */
    int waitForMspInstruction();

    /** The response's code once send() has returned; a copy, "" when the response did not say. */
    std::string getResponseCode();
    /** The response's status text; as getResponseCode(). */
    std::string getResponseText();
    /** The response's media type; as getResponseCode(). */
    std::string getContentType();

    /**
     * Asks the server to shut down. Reads no response; neither tests nor marks this object as sent.
     * @throws the class of the status when the end marker fails; Utf8ConversionException when the
     *         text cannot be converted; MSPRuntimeException type -1 without a session.
     * By design: only the end marker decides whether the text was taken.
     * (Shutdown.ResultOfTheTextIsIgnored)
     */
    void shutdownServer();

    /**
     * Starts the proxy. send() does so itself when it was never done; every explicit call starts it
     * again.
     * @throws the class of the status for any result but 0.
     */
    static void init();

    /**
     * Stops the proxy.
     * By design: the library still counts as initialised afterwards. send() will not start the
     * proxy again; the application calls init(). (Lifecycle.SendAfterTermDoesNotInitialiseAgain)
     * @throws the class of the status when it is negative.
     */
    static void term();

    /**
     * The proxy's text for the last failure.
     * @return its message; "No error message received" when there is none, "Could not retrieve last
     *         error message." when asking failed.
     * By design: "" for a message that comes with a failed status.
     * (ProxyErrors.MessageWithAFailedStatusIsDropped)
     */
    static std::string getLastError();

    /** Calls MvServerProxy_Complete, which ends the running exchange; its result is ignored. */
    static void doComplete();

    /** Logs and throws the class of a status of the proxy, with getLastError() as message. */
    [[noreturn]] static void throwMvServerCppBindingException(int code);

    /** Logs and throws MSPRuntimeException(code, message): a failure the library itself found. */
    [[noreturn]] static void generateLocalMSPException(int code, const std::string& message);

private:
    using HeaderMap = std::map<std::string, std::string, std::less<>>;

    MVCPP_LOCAL int processCredentialRequest();
    MVCPP_LOCAL void parseHeader(std::string_view line);
    MVCPP_LOCAL std::string formatHeaders();

    MVCPP_LOCAL ResponseStream& exchange();
    MVCPP_LOCAL void checkValidity() const;
    MVCPP_LOCAL void addSessionHeader();
    MVCPP_LOCAL void sendTextBody();
    MVCPP_LOCAL void sendStreamBody();
    MVCPP_LOCAL int followInstructions(int first);
    MVCPP_LOCAL std::istream* openResponse();

    MVCPP_LOCAL static std::atomic<bool> s_initialized;

    const CredentialProvider* m_credentialProvider;
    MSPSession* m_session;
    char m_instructionBuffer[ResponseStream::kBlockSize];
    std::unique_ptr<ResponseStream> m_responseStream;
    std::istream* m_requestStream;
    HeaderMap m_headers;
    std::string m_body;
    HeaderMap m_responseHeaders;
    bool m_used;
};

}  // namespace Morvenn::Net::MvServerProxy::Client

#endif  // MORVENN_NET_MVSERVERPROXY_CLIENT_MVSERVERREQUEST_H
