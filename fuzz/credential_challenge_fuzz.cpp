// A challenge of any bytes, and credentials of any bytes in the answer.
#include "client/CredentialChallenge.h"
#include "fuzz/Fuzz.h"
#include "tests/reference/Headers.h"

using namespace Morvenn::Net::MvServerProxy;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::Input input(data, size);
    const std::string user = input.take(input.byte() % 32);
    const std::string password = input.take(input.byte() % 32);
    const std::string domain = input.take(input.byte() % 32);
    const std::string challenge = input.rest() + '\0';  // the byte behind it belongs to it

    const Client::AuthScope scope = Client::Internal::parseChallenge(challenge);
    const Reference::Challenge wanted = Reference::challenge(challenge);
    Fuzz::require(scope.getHost() == wanted.host, "the host is that of a plain splitter");
    Fuzz::require(scope.getPort() == wanted.port, "the port is that of a plain splitter");
    Fuzz::require(scope.getRealm() == wanted.realm, "the realm is that of a plain splitter");

    const auto answer = Client::Internal::formatAnswer(Client::Credential(user, password, domain));
    Fuzz::require(std::string(answer.begin(), answer.end()) ==
                      Reference::challengeAnswer(user, password, domain),
                  "the answer is the three lines");
    return 0;
}
