/* A whole exchange in one call, from C. */
#include <stdio.h>
#include <stdlib.h>

#include "morvenn/net/mvserverproxy/client/MvServerSimpleRequest.h"

int main(int argc, char** argv) {
    const char* url = argc > 1 ? argv[1] : "http://127.0.0.1:16064/echo";
    char* response = NULL;
    const int result = MvServerSimpleRequest(url, "hello from C", "", "", "", &response);

    /* On success the answer, otherwise what went wrong; null when there was no memory for it. */
    fprintf(result == 0 ? stdout : stderr, "%s\n", response != NULL ? response : "out of memory");
    free(response);
    return result == 0 ? 0 : 1;
}
