// What a forward proxy demands and what the application answers.
#include "Failure.h"
#include "ProxyChallenge.h"
#include "fuzz/Fuzz.h"

using namespace Morvenn::Net::MvServerProxy::Proxy;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::Input input(data, size);
    const bool ntlm = input.byte() % 2 == 1;
    std::vector<std::string> challenges;
    for (unsigned count = input.byte() % 4; count > 0; --count) {
        challenges.push_back(input.take(input.byte()));
    }
    const std::string rest = input.rest();
    const ProxyOffer offer = strongestOffer(challenges, ntlm);
    Fuzz::require(ntlm || offer.scheme != AuthScheme::Ntlm, "NTLM only where it can be used");

    const std::string text = challengeText(ForwardProxy(), offer.realm);
    Fuzz::require(text.find('\0') == std::string::npos, "the challenge holds no zero byte");
    std::size_t lines = 0;
    for (const char c : text) {
        lines += c == '\n' ? 1 : 0;
    }
    Fuzz::require(lines == 3, "the challenge is three lines");
    try {
        readAnswer(rest);
    } catch (const Failure&) {
    }
    return 0;
}
