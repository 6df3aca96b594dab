// The three classes through which an application gives credentials.
#include "morvenn/net/mvserverproxy/client/Credentials.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

#include "tests/unit/ScriptedProvider.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using Morvenn::Net::MvServerProxy::Tests::ScriptedProvider;

namespace {

void expectCredential(const Credential& credential, const std::string& user,
                      const std::string& password, const std::string& domain) {
    EXPECT_EQ(credential.getUser(), user);
    EXPECT_EQ(credential.getPassword(), password);
    EXPECT_EQ(credential.getDomain(), domain);
}

void expectScope(const AuthScope& scope, const std::string& host, const std::string& port,
                 const std::string& realm) {
    EXPECT_EQ(scope.getHost(), host);
    EXPECT_EQ(scope.getPort(), port);
    EXPECT_EQ(scope.getRealm(), realm);
}

}  // namespace

TEST(Credentials, CredentialHoldsUserPasswordAndDomain) {
    expectCredential(Credential("anna", "secret", "CORP"), "anna", "secret", "CORP");
}

TEST(Credentials, CredentialOfTwoTextsHasAnEmptyDomain) {
    expectCredential(Credential("anna", "secret"), "anna", "secret", "");
}

TEST(Credentials, CredentialKeepsEveryByteOfItsTexts) {
    const std::string zero("a\0b", 3);
    expectCredential(Credential(zero, " \r\n", "\xFF"), zero, " \r\n", "\xFF");
}

TEST(Credentials, CredentialCopiesAreIndependent) {
    Credential original("anna", "secret", "CORP");
    const Credential copy(original);
    original = Credential("bert", "other");
    expectCredential(copy, "anna", "secret", "CORP");
    expectCredential(original, "bert", "other", "");
}

TEST(Credentials, CredentialAssignedToItselfIsUnchanged) {
    Credential credential("anna", "secret", "CORP");
    const Credential& itself = credential;
    credential = itself;
    expectCredential(credential, "anna", "secret", "CORP");
}

TEST(Credentials, GettersReturnCopies) {
    const Credential credential("anna", "secret", "CORP");
    credential.getPassword().assign("changed");
    EXPECT_EQ(credential.getPassword(), "secret");
    static_assert(std::is_same_v<decltype(credential.getPassword()), std::string>);
}

TEST(Credentials, AuthScopeHoldsHostPortAndRealmAsTexts) {
    expectScope(AuthScope("gateway", "3128", "corp"), "gateway", "3128", "corp");
}

TEST(Credentials, AuthScopeCopiesAreIndependent) {
    AuthScope original("gateway", "3128", "corp");
    const AuthScope copy(original);
    original = AuthScope("other", "", "");
    expectScope(copy, "gateway", "3128", "corp");
    expectScope(original, "other", "", "");
}

TEST(Credentials, CredentialAndAuthScopeHaveNoVirtualFunctions) {
    EXPECT_FALSE(std::is_polymorphic_v<Credential>);
    EXPECT_FALSE(std::is_polymorphic_v<AuthScope>);
}

TEST(Credentials, ProviderHasOneVirtualOperationAndNoVirtualDestructor) {
    EXPECT_TRUE(std::is_abstract_v<CredentialProvider>);
    EXPECT_FALSE(std::has_virtual_destructor_v<CredentialProvider>);
    EXPECT_EQ(sizeof(CredentialProvider), sizeof(void*)) << "no data members";
}

TEST(Credentials, ProvidersCanBeCopiedAndMoved) {
    const Credential credential("anna", "secret");
    const ScriptedProvider provider(&credential);
    ScriptedProvider copy(provider);
    ScriptedProvider moved(std::move(copy));
    AuthScope scope("gateway", "3128", "corp");
    EXPECT_EQ(moved.getCredential(&scope), &credential);
    moved = provider;
    EXPECT_EQ(moved.getCredential(&scope), &credential);
}
