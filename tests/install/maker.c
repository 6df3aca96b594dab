/* A maker's server-proxy library: every exchange fails with its own text. */
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

int MvServerProxy_Init(void* (*allocate)(size_t), void (*release)(void*)) {
    (void)allocate;
    (void)release;
    return 0;
}
int MvServerProxy_Term(void) {
    return 0;
}
int MvServerProxy_Send(const char* text) {
    return text ? MV_STATUS_CANNOT_CONNECT : 0;
}
int MvServerProxy_SendNoAck(const char* text) {
    return text ? MV_STATUS_CANNOT_CONNECT : 0;
}
int MvServerProxy_SendEOF(void) {
    return 0;
}
int MvServerProxy_Receive(char* buffer) {
    return buffer ? MV_STATUS_END_OF_RESPONSE : 0;
}
int MvServerProxy_Complete(void) {
    return 0;
}
int MvServerProxy_GetLastError(char** message) {
    static char text[] = "the maker's library speaks";
    *message = text;
    return 0;
}
