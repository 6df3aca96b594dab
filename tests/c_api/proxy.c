/* The eight functions of a server proxy in C. They echo the body that was sent, and fail or
 * challenge when the body says so. */
#include <stdio.h>
#include <string.h>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

#include "proxy.h"

static struct {
    int inits;
    int terms;
    int completes;
    int eofs;
    int receives;
    char headers[1024];
    char body[1024];
} s_state;

void proxyReset(void) {
    memset(&s_state, 0, sizeof s_state);
}

int proxyInits(void) {
    return s_state.inits;
}
int proxyTerms(void) {
    return s_state.terms;
}
int proxyCompletes(void) {
    return s_state.completes;
}
const char* proxyHeaders(void) {
    return s_state.headers;
}

int MvServerProxy_Init(void* (*allocate)(size_t), void (*release)(void*)) {
    void* memory = allocate(1);
    release(memory);
    ++s_state.inits;
    return memory == NULL;
}

int MvServerProxy_Term(void) {
    ++s_state.terms;
    return 0;
}

int MvServerProxy_Send(const char* text) {
    (void)text;
    return MV_STATUS_PROTOCOL;
}

int MvServerProxy_SendNoAck(const char* text) {
    char* target = s_state.eofs == 0 ? s_state.headers : s_state.body;
    strncpy(target, text, sizeof s_state.body - 1);
    return 1;
}

int MvServerProxy_SendEOF(void) {
    ++s_state.eofs;
    return 0;
}

int MvServerProxy_Receive(char* buffer) {
    switch (s_state.receives++) {
        case 0:
            return MV_INSTRUCTION_SEND_BODY;
        case 1:
            if (strcmp(s_state.body, "fail") == 0) {
                return MV_STATUS_CANNOT_CONNECT;
            }
            if (strcmp(s_state.body, "challenge") == 0) {
                return MV_INSTRUCTION_CREDENTIAL_CHALLENGE;
            }
            return MV_INSTRUCTION_RESPONSE_READY;
        case 2:
            return sprintf(buffer, "ResponseHeaderResponseCode=200\n\necho of %s", s_state.body);
        default:
            return MV_STATUS_END_OF_RESPONSE;
    }
}

int MvServerProxy_Complete(void) {
    ++s_state.completes;
    s_state.eofs = 0;
    s_state.receives = 0;
    return 0;
}

int MvServerProxy_GetLastError(char** message) {
    static char text[] = "the proxy says no";
    *message = text;
    return 0;
}
