// One signature request against the scripted proxy, and answers as the server makes them.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTS_SIGNING_H
#define MORVENN_NET_MVSERVERPROXY_TESTS_SIGNING_H

#include <initializer_list>
#include <memory>
#include <string>

#include "crypto/Base64.h"
#include "morvenn/net/mvserverproxy/crypto/PKCS7.h"
#include "testing/Bytes.h"
#include "testing/FakeProxy.h"

namespace Morvenn::Net::MvServerProxy::Tests {

/// What the batch forms return.
using Signatures = std::unique_ptr<std::string[]>;

/// The proxy asks for the body and gives @p text as the body of the response.
inline TestKit::Script signatureText(const std::string& text) {
    using namespace TestKit;
    return {instruction(16), instruction(18), block("\n" + text), end()};
}

/// The same for a record, given as hexadecimal digits.
inline TestKit::Script signatureRecord(const std::string& digits) {
    return signatureText(Crypto::Internal::base64Encode(TestKit::unhex(digits)));
}

/// An answer with one entry, "SIG".
inline TestKit::Script oneSignature() {
    return signatureRecord("00000001 01 00000003 534947");
}

/// What a good request for the given items calls.
inline TestKit::Calls callsOfSign(const std::string& body) {
    using namespace TestKit;
    return {init(),          sendNoAck("generatePKCS7Signatures=\r\n\r\n"),
            sendEof(),       receive(),
            sendNoAck(body), sendEof(),
            receive(3),      complete()};
}

}  // namespace Morvenn::Net::MvServerProxy::Tests

#endif
