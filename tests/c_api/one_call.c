/* The one-call function from a C99 program, compiled and linked by a C compiler. Each check prints
 * what it found when it fails; the exit status is their number. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "morvenn/net/mvserverproxy/client/MvServerSimpleRequest.h"

#include "proxy.h"

static int s_failures = 0;

static void checkNumber(const char* what, int actual, int expected) {
    if (actual != expected) {
        printf("%s: %d, expected %d\n", what, actual, expected);
        ++s_failures;
    }
}

static void checkText(const char* what, const char* actual, const char* expected) {
    if (actual == NULL || strcmp(actual, expected) != 0) {
        printf("%s: \"%s\", expected \"%s\"\n", what, actual == NULL ? "(null)" : actual, expected);
        ++s_failures;
    }
}

/* One call whose response, or message, and result are checked. */
static void checkCall(const char* body, int result, const char* text) {
    char before[] = "before";
    char* response = before;
    checkNumber(
        body, MvServerSimpleRequest("http://server/app", body, "S1", "<app/>", "<rpc/>", &response),
        result);
    checkText(body, response, text);
    if (response != before) {
        free(response);
    }
}

int main(void) {
    proxyReset();
    checkCall("a body", 0, "echo of a body");
    checkText("headers", proxyHeaders(),
              "App-Xml=<app/>\r\nBase-Full-Url=http://server/app\r\nSessionID=S1\r\n"
              "Use-Callback=false\r\nUse-Compression=true\r\nXmlRpc=<rpc/>\r\n\r\n");
    checkCall("", 0, "echo of ");
    checkCall("fail", -1, "the proxy says no");
    checkCall("challenge", -1, "No credential Provider available");
    checkNumber("without response", MvServerSimpleRequest("u", "b", "", "", "", NULL), 0);
    checkNumber("without message", MvServerSimpleRequest("u", "fail", "", "", "", NULL), -1);
    checkNumber("starts of the proxy", proxyInits(), 1);
    checkNumber("stops of the proxy", proxyTerms(), 0);
    checkNumber("completed exchanges", proxyCompletes(), 6);
    printf("%d checks failed\n", s_failures);
    return s_failures;
}
