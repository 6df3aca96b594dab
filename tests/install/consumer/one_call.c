/* A C99 program: the one-call function. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "morvenn/net/mvserverproxy/client/MvServerSimpleRequest.h"

int main(int argc, char** argv) {
    char url[256];
    char* response = NULL;
    int result, same;
    snprintf(url, sizeof url, "%s/echo", argc > 1 ? argv[1] : "http://127.0.0.1:16064");
    result = MvServerSimpleRequest(url, "<order/>", "", "", "", &response);
    same = result == 0 && response != NULL && strcmp(response, "<order/>") == 0;
    printf("c %ld: %s\n", (long)__STDC_VERSION__, same ? "echo equal" : response);
    free(response);
    return same ? 0 : 1;
}
