// Texts that are wiped when they are no longer needed.
#include "util/Secret.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using namespace Morvenn::Net::MvServerProxy::Util::Internal;

namespace {

const std::string kShort = "p-a-s-s";  // fits into the string object itself
const std::string kLong(100, 'p');

}  // namespace

TEST(Secret, WipedStringHoldsTheText) {
    for (const std::string& text : {std::string(), kShort, kLong}) {
        EXPECT_EQ(WipedString(std::string(text)).view(), text);
    }
}

TEST(Secret, WipedStringLeavesNothingInTheStringItTook) {
    std::string source = kShort;
    const char* const bytes = source.data();
    const WipedString secret(std::move(source));
    EXPECT_EQ(std::string(bytes, kShort.size()), std::string(kShort.size(), '\0'));
    EXPECT_EQ(secret.view(), kShort);
}
