// The family of exceptions: bases, type codes, messages, copies.
#include "morvenn/net/mvserverproxy/client/Exceptions.h"

#include <gtest/gtest.h>

#include <exception>
#include <type_traits>

#include "testing/Failure.h"

using namespace Morvenn::Net::MvServerProxy::Client;
using Morvenn::Net::MvServerProxy::TestKit::failure;
using Morvenn::Net::MvServerProxy::TestKit::failureOf;

namespace {

template <typename E>
class Exceptions : public ::testing::Test {};

using EveryClass = ::testing::Types<MSPException, MSPRuntimeException, MSPProtocolException,
                                    MSPUnrecognisedException, MSPConnectionException,
                                    CredentialsUnavailableException, Utf8ConversionException>;

// Lets a test look at the protected constructors of the root.
class Root : public Exception {
public:
    explicit Root(const std::string& message) : Exception(message) {}
    Root(int type, const std::string& message) : Exception(type, message) {}
};

}  // namespace

TYPED_TEST_SUITE(Exceptions, EveryClass, );  // clang wants the empty argument

TYPED_TEST(Exceptions, MessageAloneHasTypeZero) {
    const TypeParam e("what failed");
    EXPECT_EQ(e.getType(), 0);
    EXPECT_EQ(e.getMessage(), "what failed");
}

TYPED_TEST(Exceptions, KeepsTypeAndMessage) {
    const TypeParam e(-7, std::string("with \0 zero", 11));
    EXPECT_EQ(e.getType(), -7);
    EXPECT_EQ(e.getMessage(), std::string("with \0 zero", 11));
}

TYPED_TEST(Exceptions, CopiesAndAssignmentsCarryBoth) {
    const TypeParam original(3, "m");
    const TypeParam copy(original);
    TypeParam assigned("other");
    assigned = original;
    EXPECT_EQ(copy.getType(), 3);
    EXPECT_EQ(copy.getMessage(), "m");
    EXPECT_EQ(assigned.getType(), 3);
    EXPECT_EQ(assigned.getMessage(), "m");
}

TYPED_TEST(Exceptions, MessageIsAReferenceToTheObjectsOwn) {
    const TypeParam e("m");
    EXPECT_EQ(&e.getMessage(), &e.getMessage());
    static_assert(std::is_same_v<decltype(e.getMessage()), const std::string&>);
    static_assert(std::is_same_v<decltype(e.getType()), int>);
}

TYPED_TEST(Exceptions, IsCaughtAsItselfAndAsEveryBase) {
    EXPECT_THROW(throw TypeParam(1, "m"), TypeParam);
    EXPECT_THROW(throw TypeParam(1, "m"), MSPException);
    EXPECT_EQ(failureOf([] { throw TypeParam(1, "m"); }), failure<TypeParam>(1, "m"));
}

TYPED_TEST(Exceptions, IsNoStandardException) {
    static_assert(!std::is_base_of_v<std::exception, TypeParam>);
    static_assert(std::is_base_of_v<MSPException, TypeParam>);
    static_assert(std::is_base_of_v<Exception, TypeParam>);
}

TEST(ExceptionRoot, CanOnlyBeCreatedByItsSubclasses) {
    static_assert(!std::is_constructible_v<Exception, std::string>);
    static_assert(!std::is_constructible_v<Exception, int, std::string>);
    static_assert(!std::is_destructible_v<Exception>);
    static_assert(std::is_polymorphic_v<Exception>);
    EXPECT_EQ(Root("m").getType(), 0);
    EXPECT_EQ(Root(5, "m").getType(), 5);
    EXPECT_EQ(Root(5, "m").getMessage(), "m");
}

TEST(ExceptionRoot, SubclassesAddNoFields) {
    EXPECT_EQ(sizeof(MSPException), sizeof(Exception));
    EXPECT_EQ(sizeof(Utf8ConversionException), sizeof(Exception));
}
