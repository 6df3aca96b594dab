#include "client/CredentialChallenge.h"

#include <istream>
#include <memory>
#include <sstream>
#include <string>

#include "client/HeaderText.h"
#include "util/Text.h"

namespace Morvenn::Net::MvServerProxy::Client::Internal {

using Util::Internal::append;
using Util::Internal::SecretText;
using Util::Internal::WipedString;

AuthScope parseChallenge(std::string_view text) {
    std::string host;
    std::string port;
    std::string realm;
    const struct {
        std::string_view key;
        std::string& value;
    } fields[] = {{"host", host}, {"port", port}, {"realm", realm}};

    // By design: one string buffer for every byte of the text is allocated and the first is used.
    // (CredentialChallenge.OneStringBufferForEveryByteIsAllocatedAndReleased)
    const std::unique_ptr<std::stringbuf[]> buffers(new std::stringbuf[text.size()]);
    buffers[0].sputn(text.data(), static_cast<std::streamsize>(text.size()));
    std::istream lines(buffers.get());
    for (std::string line; std::getline(lines, line);) {
        const auto pieces = Util::Internal::firstTwoPieces(line, ':');
        for (const auto& field : fields) {
            if (pieces.hasSeparator && pieces.first == field.key) {
                field.value = pieces.second;
            }
        }
    }
    return AuthScope(host, port, realm);
}

SecretText formatAnswer(const Credential& credential) {
    const WipedString domain(credential.getDomain());
    const WipedString password(credential.getPassword());
    const WipedString user(credential.getUser());
    const struct {
        std::string_view key;
        std::string_view value;
    } lines[] = {
        {"user:", user.view()}, {"password:", password.view()}, {"domain:", domain.view()}};

    SecretText answer;
    for (const auto& line : lines) {
        append(answer, line.key);
        append(answer, line.value);
        append(answer, kLineEnd);
    }
    append(answer, kLineEnd);
    return answer;
}

}  // namespace Morvenn::Net::MvServerProxy::Client::Internal
