/**
 * @file
 * A whole exchange in one call, for callers that use no classes. C and C++.
 *
 * Conventions:
 *
 * 1. Texts that go in are NUL-terminated, not null, and borrowed for the duration of the call.
 * 2. The text that comes out is allocated with malloc, exactly as long as needed, and belongs to
 *    the caller, who releases it with free. It ends at the first zero byte of the response.
 * 3. The proxy is started on first use. It is never stopped here.
 * 4. One call at a time on a thread, and none while another exchange of the thread is open.
 * 5. A forward proxy's credential challenge cannot be answered here: the call fails with
 *    "No credential Provider available".
 */
#ifndef MORVENN_NET_MVSERVERPROXY_CLIENT_MVSERVERSIMPLEREQUEST_H
#define MORVENN_NET_MVSERVERPROXY_CLIENT_MVSERVERSIMPLEREQUEST_H

#include "morvenn/net/mvserverproxy/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Sends @p requestBody, its terminating zero included, as a stream body and reads the response,
 * which is asked for in compressed form and arrives inflated.
 *
 * By design: each call retains memory for the life of the process, one string buffer for every byte
 * of the body and its terminating zero: 104 bytes x (length + 1) with libstdc++ on 64-bit Linux. A
 * body of 1 MiB retains 104 MiB. Use the classes for large bodies.
 * (SimpleRequest.RetainsOneStringBufferForEveryByteOfTheBody)
 *
 * @param baseFullUrl value of the header "Base-Full-Url"
 * @param requestBody the body
 * @param sessionId   value of the header "SessionID"
 * @param appXml      value of the header "App-Xml"
 * @param xmlRpc      value of the header "XmlRpc"
 * @param response    may be null. Otherwise set to the response's text, or on failure to the
 *                    failure's message; null when there was no memory for the copy
 * @return 0 on success; -1 when the library reported a failure. A C++ exception from outside the
 *         library's own family, such as std::bad_alloc, leaves unchanged; a C program ends then.
 */
MVCPP_API int MvServerSimpleRequest(const char* baseFullUrl, const char* requestBody,
                                    const char* sessionId, const char* appXml, const char* xmlRpc,
                                    char** response);

#ifdef __cplusplus
}
#endif

#endif /* MORVENN_NET_MVSERVERPROXY_CLIENT_MVSERVERSIMPLEREQUEST_H */
