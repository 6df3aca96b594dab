// What is collected without a limit ends in std::bad_alloc where memory ends, not in a crash: the
// exchange is completed, and nothing else happens.
#include <sys/resource.h>

#include <new>
#include <string>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "testing/GTest.h"
#include "testing/LogFile.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::Client;
using namespace Morvenn::Net::MvServerProxy::TestKit;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kHasAddressSpaceOfItsOwn = false;  // sanitizers reserve terabytes
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kHasAddressSpaceOfItsOwn = false;
#else
constexpr bool kHasAddressSpaceOfItsOwn = true;
#endif
#else
constexpr bool kHasAddressSpaceOfItsOwn = true;
#endif

/// Where memory ends: 512 MiB, or, where the address space cannot be limited, the proxy throws what
/// the allocation would.
constexpr rlim_t kMemory = 512UL << 20U;
constexpr std::size_t kEnd = 64UL << 20U;

class UnboundedMemory : public ProxyTest {
protected:
    PrivateTemp temp;
    MSPSession session;

    void limitMemory() {
        const rlimit limit = {kMemory, kMemory};
        if (kHasAddressSpaceOfItsOwn) {
            ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
        }
    }

    Step endlessBlocks() {
        const std::string bytes(16384, 'x');
        return endless([this, bytes] {
            m_given += bytes.size();
            if (!kHasAddressSpaceOfItsOwn && m_given > kEnd) {
                throw std::bad_alloc();
            }
            return bytes;
        });
    }

    std::size_t given() const { return m_given; }

private:
    std::size_t m_given = 0;
};

}  // namespace

TEST_F(UnboundedMemory, EndlessResponseEndsExecuteInBadAlloc) {
    expectInFreshProcess([this] {
        proxy.answers({block("\n"), endlessBlocks()});
        limitMemory();
        {
            MvServerRequest request(&session);
            request.setBody("x");
            EXPECT_THROW(request.execute(), std::bad_alloc);
        }
        EXPECT_GT(given(), kEnd);
        EXPECT_EQ(proxy.count(Function::Complete), 1U);
    });
}

TEST_F(UnboundedMemory, EndlessHeaderLineEndsSendInBadAlloc) {
    proxy.answers({endlessBlocks()});
    expectInFreshProcess([this] {
        limitMemory();
        {
            MvServerRequest request(&session);
            request.setBody("x");
            EXPECT_THROW(request.send(), std::bad_alloc);
        }
        EXPECT_GT(given(), kEnd);
        EXPECT_EQ(proxy.count(Function::Complete), 1U);
    });
}

TEST_F(UnboundedMemory, EndlessDirectoryEndsTheLookupInBadAlloc) {
    proxy.answers({endlessBlocks()});
    expectInFreshProcess([this] {
        limitMemory();
        {
            Admin::EnvironmentInfo info;
            EXPECT_THROW(info.getEnvironments(), std::bad_alloc);
        }
        EXPECT_GT(given(), kEnd);
        EXPECT_EQ(proxy.count(Function::Complete), 1U);
    });
}
