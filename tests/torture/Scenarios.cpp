#include <ostream>

#include "testing/Gzip.h"
#include "tests/reference/Base64.h"
#include "tests/torture/Scenario.h"

namespace Torture {
namespace {

namespace Kit = Morvenn::Net::MvServerProxy::TestKit;
namespace Reference = Morvenn::Net::MvServerProxy::Reference;

Part instruction(int code) {
    return {code, {}, false};
}

Part challenge(const char* text) {
    return {0, text, false};
}

Part response(const std::string& bytes) {
    return {0, bytes, true};
}

std::string lines(std::size_t size) {
    std::string text;
    while (text.size() < size) {
        text += "line " + std::to_string(text.size()) + "\n";
    }
    text.resize(size);
    return text;
}

// Bytes that do not compress, so that their gzip form is longer than a block.
std::string noise(std::size_t size) {
    std::string bytes;
    for (unsigned state = 1; bytes.size() < size;) {
        state = state * 1664525U + 1013904223U;
        bytes.push_back(static_cast<char>(state >> 24U));
    }
    return bytes;
}

const char kHead[] = "ResponseHeaderResponseCode = 200\r\nX=a=b\n\n";
const char kGzipHead[] = "ResponseHeaderCompression=true\n\n";
const char kChallenge[] = "host:gateway\nport:3128\nrealm:corp\n";
const std::map<std::string, std::string> kHeaders = {
    {"Env-Name", "test"}, {"Locale", "de"}, {"Service-Name", "a service name of some length"}};

std::string gzipped(const std::string& text) {
    return kGzipHead + Kit::gzip(text);
}

std::string damaged(std::string bytes, std::size_t at) {
    bytes[at] = static_cast<char>(bytes[at] ^ 0x55);
    return bytes;
}

std::string signatures(const std::vector<std::string>& entries) {
    std::string record = Reference::signatureRequest({}).substr(0, 3);
    record.push_back(static_cast<char>(entries.size()));
    for (const std::string& entry : entries) {
        record += '\1' + Reference::signatureRequest({entry}).substr(4);
    }
    return Reference::base64Encode(record);
}

const char kOneEnvironment[] = "Production\n00000000000000000007\n2\ntype=web\nurl=http://p\n\n";
const char kTwoEnvironments[] =
    "Production\r\n7\r\n2\r\ntype=web\r\nurl=http://production.example.com/app\r\n"
    "1\r\ntype=db\r\n\r\nTest\r\n8\r\n1\r\ntype=web\r\n\r\n";
const char kOddDirectory[] =
    " Odd \nabc\n0\n3\n=skipped\nflag\n a = b : c = d \n\nNoServices\n5\n\n";

std::vector<Scenario> streamScenarios() {
    const auto of = [](const char* name, std::string body, std::vector<Part> parts) {
        return Scenario{name,           Kind::Execute,   kHeaders, false, std::move(body),
                        Provider::None, std::move(parts)};
    };
    return {
        of("StreamReady", "unread", {instruction(18), response(kHead), response("answer")}),
        of("StreamZero", "unread", {instruction(0), response(kHead), response("answer")}),
        of("StreamBody", "the body",
           {instruction(16), instruction(18), response(kHead), response("answer")}),
        of("StreamThreeChunks", lines(10000), {instruction(16), instruction(18), response(kHead)}),
        of("StreamExactChunk", lines(4096),
           {instruction(16), instruction(18), response(kHead), response("answer")}),
        of("StreamBodyTwice", "the body",
           {instruction(16), instruction(16), instruction(18), response("\n"), response("x")}),
        of("StreamBodyThenReady", lines(5000),
           {instruction(16), instruction(16), instruction(16), instruction(0), response(kHead)}),
        of("StreamEmptyBody", "", {instruction(16), instruction(0), response("A=1\n\nbody")}),
    };
}

std::vector<Scenario> credentialScenarios() {
    const auto of = [](const char* name, Provider provider, std::vector<Part> parts) {
        return Scenario{name,       Kind::Execute, kHeaders,        false,
                        "the body", provider,      std::move(parts)};
    };
    const Part answer = response("A=1\n\nbody");
    return {
        of("ChallengeThenBody", Provider::Gives,
           {instruction(17), challenge(kChallenge), instruction(16), instruction(18), answer}),
        of("ChallengeThenResponse", Provider::Gives,
           {instruction(17), challenge("host:a:b\r\nHOST:no\nport\nrealm:last"), instruction(18),
            answer}),
        of("ChallengeTwice", Provider::Gives,
           {instruction(17), challenge(kChallenge), instruction(17), challenge("host:second\n"),
            instruction(16), instruction(18), answer}),
        of("ChallengeAfterBody", Provider::Gives,
           {instruction(16), instruction(17), challenge(kChallenge), instruction(18), answer}),
        of("ChallengeThrice", Provider::Gives,
           {instruction(17), challenge(kChallenge), instruction(17), challenge("realm:second\n"),
            instruction(17), challenge(":\n"), instruction(16), instruction(18), answer}),
        of("ChallengeNullCredential", Provider::GivesNull,
           {instruction(17), challenge(kChallenge), instruction(16), instruction(18), answer}),
        of("ChallengeRefused", Provider::Refuses,
           {instruction(17), challenge(kChallenge), instruction(16), instruction(18), answer}),
        of("ChallengeProviderThrows", Provider::Throws,
           {instruction(17), challenge(kChallenge), instruction(16), instruction(18), answer}),
        of("ChallengeWithoutProvider", Provider::None, {instruction(17), instruction(18), answer}),
    };
}

std::vector<Scenario> textScenarios() {
    const auto of = [](const char* name, Kind kind, std::vector<Part> parts) {
        return Scenario{name, kind, kHeaders, true, "text", Provider::None, std::move(parts)};
    };
    return {
        of("TextOneBlock", Kind::Execute, {response("A=1\n\nbody")}),
        of("TextEmptyHead", Kind::Execute, {response("\n"), response("body")}),
        of("TextEmptyBody", Kind::Execute, {response(kHead)}),
        of("TextGrowing", Kind::Execute,
           {response(kHead), response(lines(16384)), response(lines(16384)), response("end")}),
        of("TextSent", Kind::Send, {response(kHead), response("read"), response("in pieces")}),
        of("TextSessions", Kind::TwoOnSession,
           {response("ResponseSessionID=a session id of some length\n\none"),
            {-1, {}, false},
            response("ResponseSessionID=second\n\ntwo")}),
    };
}

std::vector<Scenario> gzipScenarios() {
    const auto of = [](const char* name, Kind kind, std::vector<Part> parts) {
        return Scenario{name, kind, kHeaders, true, "text", Provider::None, std::move(parts)};
    };
    const std::string stream = Kit::gzip(lines(500));
    const std::string zlib = Kit::compressed(lines(500), Kit::Wrapper::Zlib);
    return {
        of("GzipGood", Kind::Execute, {response(gzipped(lines(500)))}),
        of("GzipSent", Kind::Send, {response(kGzipHead), response(stream)}),
        of("GzipBlocks", Kind::Execute,
           {response(kGzipHead), response(Kit::gzip(noise(16300))), response("dropped")}),
        of("GzipLarge", Kind::Execute, {response(gzipped(lines(40000)))}),
        of("GzipCutShort", Kind::Execute, {response(kGzipHead + stream.substr(0, 60))}),
        of("GzipZlibWrapped", Kind::Execute, {response(kGzipHead + zlib), response("drained")}),
        of("GzipDamaged", Kind::Send, {response(kGzipHead + damaged(stream, 30))}),
        of("GzipSecondMember", Kind::Execute, {response(kGzipHead + stream + stream)}),
        of("GzipEmpty", Kind::Execute, {response(kGzipHead)}),
    };
}

std::vector<Scenario> otherScenarios() {
    const auto of = [](const char* name, Kind kind, std::vector<Part> parts = {}) {
        return Scenario{name, kind, {}, false, "item", Provider::None, std::move(parts)};
    };
    const std::vector<Part> signHead = {instruction(16), instruction(18), response("A=1\n\n")};
    const auto signing = [&signHead](const std::vector<std::string>& entries) {
        std::vector<Part> parts = signHead;
        parts.push_back(response(signatures(entries)));
        return parts;
    };
    const std::vector<Part> small = {instruction(16), instruction(18), response("A=1\n\nbody")};
    return {
        of("DirectoryOne", Kind::Directory, {response(kOneEnvironment)}),
        of("DirectoryTwo", Kind::DirectoryTwice, {response(kTwoEnvironments)}),
        of("DirectoryOdd", Kind::DirectoryVersion, {response(kOddDirectory)}),
        of("DirectoryEmptyTwice", Kind::DirectoryTwice, {{-1, {}, false}}),
        of("DirectoryEmpty", Kind::DirectoryUrl),
        of("SignBatch", Kind::SignBatch,
           signing({"first signature", "a signature that is longer than the others"})),
        of("SignOne", Kind::SignOne, signing({"a signature of some length"})),
        of("SignText", Kind::SignText, signing({"ABC"})),
        of("SignShortAnswer", Kind::SignBatch, signing({"only one"})),
        of("Shutdown", Kind::Shutdown),
        Scenario{"ShutdownWithHeaders", Kind::Shutdown, kHeaders, false, "", Provider::None, {}},
        of("CompleteText", Kind::CompleteText),
        of("CompleteNull", Kind::CompleteNull),
        of("Simple", Kind::Simple, small),
        of("SimpleUnanswered", Kind::SimpleUnanswered, small),
        of("Lifecycle", Kind::Lifecycle),
        of("Unsent", Kind::Unsent),
    };
}

}  // namespace

Tape Scenario::tape(bool singleBytes) const {
    std::vector<Answer> answers;
    for (const Part& part : parts) {
        if (part.isResponse && singleBytes) {
            for (const char byte : part.bytes) {
                answers.push_back({1, std::string(1, byte), false});
            }
        } else {
            const int size = static_cast<int>(part.bytes.size());
            answers.push_back({size > 0 ? size : part.instruction, part.bytes, false});
        }
    }
    answers.push_back({-1, {}, false});
    return Tape(answers);
}

void PrintTo(const Scenario& scenario, std::ostream* out) {
    *out << scenario.name;
}

const std::vector<Scenario>& scenarios() {
    static const std::vector<Scenario> all = [] {
        std::vector<Scenario> list;
        for (const auto& group : {streamScenarios(), credentialScenarios(), textScenarios(),
                                  gzipScenarios(), otherScenarios()}) {
            list.insert(list.end(), group.begin(), group.end());
        }
        return list;
    }();
    return all;
}

}  // namespace Torture
