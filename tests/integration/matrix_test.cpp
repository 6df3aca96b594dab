// Every kind of target, forward proxy, password, body size and body form together: who is asked,
// and that the body arrives once and whole or not at all.
#include <gtest/gtest.h>

#include <memory>
#include <tuple>

#include "Client.h"
#include "Origin.h"
#include "Squid.h"

namespace Morvenn::Net::MvServerProxy::Integration {
namespace {

enum class Way { Direct, Basic, Digest, CredentialsInUrl };
enum class Password { Right, WrongThenRight, AlwaysWrong };
using Row = std::tuple<Origin::Scheme, Way, Password, std::size_t, Form>;
using Lines = std::vector<std::string>;

constexpr const char* kSchemeNames[] = {"Http", "Https"};
constexpr const char* kWayNames[] = {"Direct", "Basic", "Digest", "CredentialsInUrl"};
constexpr const char* kPasswordNames[] = {"Right", "WrongThenRight", "AlwaysWrong"};
constexpr const char* kFormNames[] = {"Stream", "Text"};

std::string nameOf(const ::testing::TestParamInfo<Row>& info) {
    const auto [scheme, way, password, size, form] = info.param;
    return std::string(kSchemeNames[static_cast<int>(scheme)]) + "_" +
           kWayNames[static_cast<int>(way)] + "_" + kPasswordNames[static_cast<int>(password)] +
           "_" + std::to_string(size) + "_" + kFormNames[static_cast<int>(form)];
}

struct Servers {
    Origin http{Origin::Scheme::Http};
    Origin https{Origin::Scheme::Https};
    Squid basic{Squid::Offers::Basic};
    Squid digest{Squid::Offers::Digest};
    Squid both{Squid::Offers::Both};
};

class Matrix : public ::testing::TestWithParam<Row> {
protected:
    static void SetUpTestSuite() { s_servers = std::make_unique<Servers>(); }
    static void TearDownTestSuite() { s_servers.reset(); }

    Matrix()
        : scheme(std::get<0>(GetParam())),
          way(std::get<1>(GetParam())),
          password(std::get<2>(GetParam())),
          body(pattern(std::get<3>(GetParam()))),
          form(std::get<4>(GetParam())),
          origin(scheme == Origin::Scheme::Http ? s_servers->http : s_servers->https),
          squid(way == Way::Basic    ? s_servers->basic
                : way == Way::Digest ? s_servers->digest
                                     : s_servers->both),
          provider(passwords()),
          library(settings()) {}

    std::vector<std::string> passwords() const {
        const bool firstIsInUrl = way == Way::CredentialsInUrl;
        switch (password) {
            case Password::Right:
                return {kPassword};
            case Password::WrongThenRight:
                return firstIsInUrl ? Lines{kPassword} : Lines{"wrong", kPassword};
            case Password::AlwaysWrong:
                break;
        }
        return {"wrong"};
    }

    std::map<std::string, std::string> settings() const {
        std::map<std::string, std::string> variables;
        if (way != Way::Direct) {
            const std::string inUrl = password == Password::Right ? kPassword : "wrong";
            const std::string userInfo =
                way == Way::CredentialsInUrl ? std::string(kUser) + ":" + inUrl + "@" : "";
            variables[scheme == Origin::Scheme::Http ? "http_proxy" : "https_proxy"] =
                squid.url(userInfo);
        }
        if (scheme == Origin::Scheme::Https) {
            variables["MV_SERVERPROXY_CA_FILE"] = origin.caFile();
        }
        return variables;
    }

    Outcome send(Form as) { return exchange({origin.url("/echo"), body, as, &provider}); }

    std::string realm() const {
        return way == Way::Basic ? "(realm \"" + std::string(kBasicRealm) + "\", scheme Basic)"
                                 : "(realm \"" + std::string(kDigestRealm) + "\", scheme Digest)";
    }

    // What the provider is told when it is asked `count` times.
    Lines questions(std::size_t count) const {
        return Lines(count, "127.0.0.1 " + std::to_string(squid.port()) + " " +
                                (way == Way::Basic ? kBasicRealm : kDigestRealm));
    }

    std::size_t questionsUntilRight() const {
        if (way == Way::Direct) {
            return 0;
        }
        return passwords().size() - (wayIsKnown() ? 1 : 0);
    }
    bool wayIsKnown() const {
        return way == Way::Direct || (way == Way::CredentialsInUrl && password == Password::Right);
    }
    bool endsWell() const { return way == Way::Direct || password != Password::AlwaysWrong; }

    void expectArrival(const Outcome& outcome) {
        ASSERT_EQ(outcome.failure, "") << outcome.message;
        EXPECT_EQ(outcome.code, "200");
        EXPECT_TRUE(outcome.body == body) << outcome.body.size() << " bytes came back";
        EXPECT_EQ(origin.arrived(1),
                  Lines{"POST /echo 200, " + std::to_string(body.size()) + " bytes in"});
    }

    void expectRefusal(const Outcome& outcome, const std::string& why) {
        EXPECT_EQ(outcome.failure, "MSPConnectionException");
        EXPECT_EQ(outcome.message, "cannot exchange with " + shownTarget() +
                                       " through forward proxy " + squid.authority() +
                                       ": the forward proxy " + why);
        EXPECT_EQ(origin.arrived(0), Lines{});
    }
    std::string shownTarget() const { return origin.url("/echo"); }

    void expectTextRefusal(const Outcome& outcome) {
        const bool had = way == Way::CredentialsInUrl;
        expectRefusal(outcome,
                      (had ? "refused the stored credentials " : "demands credentials ") + realm() +
                          "; a request sent as one text cannot be asked for them: put them into "
                          "the URL of the *_proxy variable, or send a request with a stream body "
                          "and a credential provider first");
    }

    void expectStream() {
        const Outcome outcome = send(Form::Stream);
        if (endsWell()) {
            expectArrival(outcome);
            EXPECT_EQ(provider.scopes(), questions(questionsUntilRight()));
            return;
        }
        expectRefusal(outcome, "refused the credentials three times " + realm() +
                                   "; check user and password");
        EXPECT_EQ(provider.scopes(), questions(3));
    }

    // A text is never asked for credentials; what a stream was let in with serves it too.
    void expectText() {
        if (wayIsKnown()) {
            expectArrival(send(Form::Text));
            EXPECT_EQ(provider.scopes(), Lines{});
            return;
        }
        expectTextRefusal(send(Form::Text));
        EXPECT_EQ(provider.scopes(), Lines{});
        if (endsWell()) {
            expectStream();
            expectArrival(send(Form::Text));
            EXPECT_EQ(provider.scopes(), questions(questionsUntilRight()));
        }
    }

    Origin::Scheme scheme;
    Way way;
    Password password;
    std::string body;
    Form form;
    Origin& origin;
    Squid& squid;
    RecordingProvider provider;
    StartedLibrary library;

    static std::unique_ptr<Servers> s_servers;
};

std::unique_ptr<Servers> Matrix::s_servers;

TEST_P(Matrix, TheBodyArrivesOnceAndWholeOrNotAtAll) {
    if (form == Form::Stream) {
        expectStream();
    } else {
        expectText();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Matrix,
    ::testing::Combine(
        ::testing::Values(Origin::Scheme::Http, Origin::Scheme::Https),
        ::testing::Values(Way::Direct, Way::Basic, Way::Digest, Way::CredentialsInUrl),
        ::testing::Values(Password::Right, Password::WrongThenRight, Password::AlwaysWrong),
        ::testing::Values(100U, 70000U, 3000000U), ::testing::Values(Form::Stream, Form::Text)),
    nameOf);

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Integration
