// The two texts of a credential challenge.
//
//     challenge = *( key ":" value [ ":" dropped ] LF )      keys "host", "port", "realm"
//     answer    = "user:" user CR LF "password:" password CR LF "domain:" domain CR LF CR LF
#ifndef MORVENN_CLIENT_CREDENTIALCHALLENGE_H
#define MORVENN_CLIENT_CREDENTIALCHALLENGE_H

#include <string_view>

#include "morvenn/net/mvserverproxy/client/Credentials.h"
#include "util/Secret.h"

namespace Morvenn::Net::MvServerProxy::Client::Internal {

/// Lines without a colon and unknown keys are skipped; of a key that comes twice the last counts.
/// By design: nothing is trimmed; a carriage return stays at the end of the value.
/// (CredentialChallenge.NothingIsTrimmed)
AuthScope parseChallenge(std::string_view text);

/// The answer, in the local code page and in clear text: never to be logged.
Util::Internal::SecretText formatAnswer(const Credential& credential);

}  // namespace Morvenn::Net::MvServerProxy::Client::Internal

#endif  // MORVENN_CLIENT_CREDENTIALCHALLENGE_H
