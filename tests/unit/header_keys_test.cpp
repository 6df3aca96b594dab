// The texts of the header keys.
#include "morvenn/net/mvserverproxy/client/HeaderKeys.h"

#include <gtest/gtest.h>

#include <string>

namespace Keys = Morvenn::Net::MvServerProxy::Client::HeaderKeys;

TEST(HeaderKeys, TextsAreExact) {
    const struct {
        std::string key;
        const char* text;
    } rows[] = {
        {Keys::kServiceName, "Service-Name"},
        {Keys::kEnvName, "Env-Name"},
        {Keys::kXmlRpc, "XmlRpc"},
        {Keys::kOperationName, "Operation-Name"},
        {Keys::kUseCompression, "Use-Compression"},
        {Keys::kLogCorrelationId, "Log-Correlation-ID"},
        {Keys::kUseCallback, "Use-Callback"},
        {Keys::kLocale, "Locale"},
        {Keys::kResponseSessionId, "ResponseSessionID"},
        {Keys::kServerUrl, "Server-Url"},
        {Keys::kBaseServerUrl, "Base-Server-Url"},
        {Keys::kBaseFullUrl, "Base-Full-Url"},
        {Keys::kSsoUrl, "Sso-Url"},
        {Keys::kSessionId, "SessionID"},
        {Keys::kContentType, "Content-Type"},
        {Keys::kAppXml, "App-Xml"},
        {Keys::kXmlRpcText, "XmlRpc"},
        {Keys::kHttpResponse, "HttpResponse"},
        {Keys::kSessionDiscriminator, "SessionDiscriminator"},
        {Keys::kGeneratePkcs7Signatures, "generatePKCS7Signatures"},
        {Keys::kShutdownServer, "ShutdownServer"},
        {Keys::kResponseCode, "ResponseHeaderResponseCode"},
        {Keys::kResponseText, "ResponseHeaderResponseText"},
        {Keys::kResponseContentType, "ResponseHeaderContentType"},
        {Keys::kResponseCompression, "ResponseHeaderCompression"},
        // The two words of the directory.
        {Keys::kMapUrlToEnv, "mapURLtoEnv"},
        {Keys::kGetEnv, "getEnv"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.key, row.text);
    }
}

// By design: one text, two constants, each with the role it has.
TEST(HeaderKeys, TheTwoXmlRpcKeysAreEqualTextsAndDistinctObjects) {
    EXPECT_STREQ(Keys::kXmlRpc, Keys::kXmlRpcText);
    EXPECT_NE(static_cast<const void*>(Keys::kXmlRpc), static_cast<const void*>(Keys::kXmlRpcText));
}
