/* One request; prints what came back. */
#include <stdio.h>
#include <stdlib.h>

#include "morvenn/net/mvserverproxy/client/MvServerSimpleRequest.h"

int main(void) {
    char* response = NULL;
    const int result = MvServerSimpleRequest("http://127.0.0.1:1/", "body", "", "", "", &response);
    printf("%d %s\n", result, response == NULL ? "nothing" : response);
    free(response);
    return 0;
}
