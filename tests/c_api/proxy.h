/* What the proxy of this program was asked for. */
#ifndef MV_TESTS_C_API_PROXY_H
#define MV_TESTS_C_API_PROXY_H

void proxyReset(void);
int proxyInits(void);
int proxyTerms(void);
int proxyCompletes(void);
const char* proxyHeaders(void);

#endif
