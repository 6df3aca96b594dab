/**
 * @file
 * The eight functions of a server-proxy library, as C declarations.
 *
 * The client classes reach the server only through these. They are ordinary undefined symbols of
 * the client library, resolved by whatever the process loads: the default proxy library that comes
 * with this project, another library of the same name, one given by LD_PRELOAD, or definitions in
 * the program itself. Applications that use the classes never call them.
 *
 * Conventions, valid for every function:
 *
 * 1. Results are 32-bit signed. A negative result is a status code (MV_STATUS_..., or a code of the
 *    proxy's own); what a result of 0 or more means is said at each function.
 * 2. Texts that go in are NUL-terminated and borrowed for the duration of the call. No length is
 *    passed, so a text ends at its first zero byte.
 * 3. One exchange runs at a time. No function takes a handle: the exchange is that of the process
 *    (the default proxy library: that of the calling thread).
 * 4. After a failure MvServerProxy_GetLastError gives a text that says what failed.
 */
#ifndef MORVENN_NET_MVSERVERPROXY_PROXY_MVSERVERPROXY_H
#define MORVENN_NET_MVSERVERPROXY_PROXY_MVSERVERPROXY_H

#include <stddef.h>

#include "morvenn/net/mvserverproxy/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Size in bytes of every buffer given to MvServerProxy_Receive. */
#define MV_PROXY_BLOCK_SIZE 16384

/** Status codes that the client classes tell apart. Every other negative value is also a failure.
 */
enum {
    MV_STATUS_CANNOT_CONNECT = -1001,  /**< the server, or what leads to it, cannot be reached */
    MV_STATUS_PROTOCOL = -1002,        /**< a text or a call that the protocol does not allow */
    MV_STATUS_RUNTIME = -1003,         /**< a failure inside the proxy */
    MV_STATUS_CONNECTION_LOST = -5005, /**< the connection broke during the exchange */
    MV_STATUS_NULL_TEXT = -5006,       /**< raised by the client classes, never by a proxy */
    MV_STATUS_END_OF_RESPONSE = -1     /**< MvServerProxy_Receive only: the response is complete */
};

/** What MvServerProxy_Receive answers while a request is still being sent. */
enum {
    MV_INSTRUCTION_SEND_BODY = 16,            /**< send the body now */
    MV_INSTRUCTION_CREDENTIAL_CHALLENGE = 17, /**< read the challenge, then send the answer */
    MV_INSTRUCTION_RESPONSE_READY = 18        /**< stop sending and read the response */
};

/**
 * Starts the proxy. The two functions are the ones to use for memory that changes hands; the client
 * classes pass malloc and free. May be called again at any time.
 * @return 0 on success; any other value, a positive one too, is a failure.
 */
MVCPP_API int MvServerProxy_Init(void* (*allocate)(size_t size), void (*release)(void* memory));

/** Stops the proxy and ends a running exchange. @return negative on failure. */
MVCPP_API int MvServerProxy_Term(void);

/** Sends a text, to be acknowledged by the proxy. @return negative on failure. */
MVCPP_API int MvServerProxy_Send(const char* text);

/**
 * Sends a text without acknowledgement: header lines, a piece of the body, or the answer to a
 * credential challenge.
 * @return negative on failure; above 0 when the text was taken; 0 when it was taken and no more of
 *         the body is wanted.
 */
MVCPP_API int MvServerProxy_SendNoAck(const char* text);

/** Marks the end of what was sent. @return negative on failure. */
MVCPP_API int MvServerProxy_SendEOF(void);

/**
 * Receives into @p buffer, which always has room for MV_PROXY_BLOCK_SIZE bytes.
 * @return before the response an instruction, or 0 to go on to the response; while the response is
 *         read the number of bytes placed in @p buffer (1 to 16384), 0 when none are ready yet, -1
 *         at the end of the response; below -1 a failure.
 */
MVCPP_API int MvServerProxy_Receive(char* buffer);

/** Ends the exchange and releases what belongs to it. Harmless when none is running. */
MVCPP_API int MvServerProxy_Complete(void);

/**
 * Sets @p *message to the text of the last failure, or leaves it alone when there is none. The text
 * belongs to the proxy and is valid until the next call of one of these functions.
 * @return 0 on success.
 */
MVCPP_API int MvServerProxy_GetLastError(char** message);

#ifdef __cplusplus
}
#endif

#endif /* MORVENN_NET_MVSERVERPROXY_PROXY_MVSERVERPROXY_H */
