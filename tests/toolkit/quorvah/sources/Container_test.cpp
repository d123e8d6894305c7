#include "toolkit/quorvah/sources/Container.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/ScratchDir.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

std::string typeIn(const ScratchDir& tree) {
    return containerType(Root(tree.path().string()));
}

constexpr const char* kId = "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef";

TEST(Container, IsIdentifiedByTheFilesOfItsManager) {
    const ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_EQ(containerType(root), "");
    tree.write(".dockerenv", "");
    EXPECT_EQ(containerType(root), "docker");
    tree.write("run/.containerenv", "");
    EXPECT_EQ(containerType(root), "podman");
    tree.write("run/host/container-manager", "systemd-nspawn\n");
    EXPECT_EQ(containerType(root), "systemd-nspawn");
    tree.write("run/systemd/container", "lxc\n");
    EXPECT_EQ(containerType(root), "lxc");
}

TEST(Container, HasNoIdWithoutACompleteOneInTheMounts) {
    const ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_EQ(containerId(root), "");
    tree.write("proc/self/mountinfo",
               "1 0 8:1 /containers/ / rw - ext4 /dev/sda1 rw\n1 0 8:1 /containers/abc / rw\n");
    EXPECT_EQ(containerId(root), "");
}

TEST(Container, IsToldByTheEnvironmentOfTheFirstProcess) {
    const ScratchDir tree;
    tree.write("proc/1/environ", std::string("TERM=linux\0container=lxc\0", 25));
    EXPECT_EQ(typeIn(tree), "lxc");
    tree.write("proc/1/environ", std::string("mycontainer=lxc\0PATH=/bin\0", 27));
    EXPECT_EQ(typeIn(tree), "");
    tree.write("proc/1/environ", "container=oci");
    EXPECT_EQ(typeIn(tree), "oci");
    tree.write("run/.containerenv", "");
    EXPECT_EQ(typeIn(tree), "podman");
}

TEST(Container, IsToldByTheControlGroupOfTheFirstProcess) {
    const std::string id = kId;
    const std::pair<std::string, const char*> cases[] = {
        {"12:pids:/docker/" + id, "docker"},
        {"0::/system.slice/docker-" + id + ".scope", "docker"},
        {"12:pids:/lxc/web", "lxc"},
        {"0::/lxc.payload.web/init.scope", "lxc"},
        {"1:name=systemd:/machine.slice/libpod-" + id + ".scope", "podman"},
        {"0::/kubepods.slice/kubepods-pod1.slice/cri-containerd-" + id + ".scope", "containerd"},
        {"4:cpu:/kubepods/besteffort/pod1/" + id, "kubernetes"},
        {"0::/init.scope", ""},
        {"0::/", ""},
        {"0::/system.slice/docker.service", ""},
        {"0::/user.slice/lxc.slice", ""},
        {"docker", ""},
    };
    for (const auto& [line, type] : cases) {
        const ScratchDir tree;
        tree.write("proc/1/cgroup", line + "\n");
        EXPECT_EQ(typeIn(tree), type) << line;
        const bool hasId = line.find(id) != std::string::npos;
        EXPECT_EQ(containerId(Root(tree.path().string())), hasId ? id : "") << line;
    }
}

TEST(Container, IsToldByTheLayersOfItsRoot) {
    const ScratchDir tree;
    const std::string layers = " / rw - overlay overlay rw,lowerdir=/var/lib/docker/overlay2/l/A\n";
    tree.write("proc/self/mountinfo",
               "30 1 8:1 / / rw - ext4 /dev/sda1 rw\n31 30 0:9 / /var/lib/docker/x" + layers);
    EXPECT_EQ(typeIn(tree), "");
    tree.write("proc/self/mountinfo", "30 1 0:9 /" + layers);
    EXPECT_EQ(typeIn(tree), "docker");
}

TEST(Container, OfLxdHasItsSocketUnlessItIsAVirtualMachine) {
    const ScratchDir tree;
    tree.write("dev/lxd/sock", "");
    EXPECT_EQ(typeIn(tree), "lxc");
    tree.write("sys/class/dmi/id/board_name", "LXD\n");
    EXPECT_EQ(typeIn(tree), "");
}

TEST(Container, IsNoneInTheFirstPidNamespace) {
    const ScratchDir tree;
    tree.write(".dockerenv", "");
    std::filesystem::create_directories(tree.path() / "proc/self/ns");
    std::filesystem::create_symlink("pid:[4026531836]", tree.path() / "proc/self/ns/pid");
    EXPECT_EQ(typeIn(tree), "");
}

TEST(Container, OfWindowsIsToldFromOneThatRunsInIt) {
    const ScratchDir tree;
    tree.write("proc/version", "Linux version 4.4.0-19041-Microsoft (Microsoft@Microsoft.com) #1237 2021\n");
    EXPECT_EQ(typeIn(tree), "wsl");
    tree.write("proc/sys/kernel/osrelease", "5.15.153.1-microsoft-standard-WSL2\n");
    EXPECT_EQ(typeIn(tree), "wsl");
    tree.write(".dockerenv", "");
    EXPECT_EQ(typeIn(tree), "docker");
    tree.write("proc/sys/fs/binfmt_misc/WSLInterop", "enabled\n");
    EXPECT_EQ(typeIn(tree), "wsl");
    tree.write("proc/sys/kernel/osrelease", "6.1.0-18-amd64\n");
    EXPECT_EQ(typeIn(tree), "docker");
}

}  // namespace
}  // namespace toolkit::quorvah
