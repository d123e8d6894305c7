#include "toolkit/quorvah/sources/NetworkNamespace.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {
namespace {

TEST(NetworkNamespaceLive, HasTheInterfacesOfItsOwnDirectory) {
    const Root root;
    const NetworkNamespace own;
    EXPECT_TRUE(own.has(root, "lo"));
    EXPECT_FALSE(own.has(root, "none-such"));
}

constexpr int kLeft = 0;
constexpr int kMixed = 1;
constexpr int kRefused = 2;

// Gathers in a new network namespace, whose only interface is the loopback, below the old /sys.
int gatherInNewNamespace() {
    if (::unshare(CLONE_NEWNET) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return kRefused;
    GatheringContext context{Options{}};
    GroupData data(kNetworkAdapter);
    kNetworkAdapter.gather(context, data);
    for (const Instance& adapter : data.instances()) {
        if (adapter.get("DeviceID") != "lo") return kMixed;
    }
    return kLeft;
}

TEST(NetworkNamespaceLive, InterfacesOfAnotherNamespaceAreNotReported) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(gatherInNewNamespace());
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == kRefused) GTEST_SKIP() << "this system allows no network namespaces";
    EXPECT_EQ(WEXITSTATUS(status), kLeft);
}

}  // namespace
}  // namespace toolkit::quorvah
