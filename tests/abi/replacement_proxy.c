/* A proxy library of somebody else: it answers every request with one line. */
#include <string.h>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

static const char kAnswer[] = "ResponseHeaderResponseCode=200\n\nanswered by the replacement";
static int s_receives = 0;

int MvServerProxy_Init(void* (*allocate)(size_t size), void (*release)(void* memory)) {
    s_receives = 0;
    return allocate == NULL || release == NULL;
}

int MvServerProxy_Term(void) {
    return 0;
}

int MvServerProxy_Send(const char* text) {
    return text == NULL ? -1 : 1;
}

int MvServerProxy_SendNoAck(const char* text) {
    return text == NULL ? -1 : 1;
}

int MvServerProxy_SendEOF(void) {
    return 0;
}

int MvServerProxy_Receive(char* buffer) {
    switch (s_receives++) {
        case 0:
            return MV_INSTRUCTION_RESPONSE_READY;
        case 1:
            memcpy(buffer, kAnswer, sizeof kAnswer - 1);
            return (int)sizeof kAnswer - 1;
        default:
            return MV_STATUS_END_OF_RESPONSE;
    }
}

int MvServerProxy_Complete(void) {
    return 0;
}

int MvServerProxy_GetLastError(char** message) {
    static char text[] = "the replacement does not fail";
    *message = text;
    return 0;
}
