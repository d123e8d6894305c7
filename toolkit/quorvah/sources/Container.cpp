#include "toolkit/quorvah/sources/Container.h"

#include <algorithm>
#include <initializer_list>
#include <utility>
#include <vector>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/DmiId.h"
#include "toolkit/quorvah/sources/KernelInfo.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

// The number of the initial PID namespace, which is fixed.
constexpr std::string_view kFirstPidNamespace = "pid:[4026531836]";

bool existsAny(const Root& root, std::initializer_list<const char*> paths) {
    return std::ranges::any_of(paths, [&root](const char* path) { return root.exists(path); });
}

// What only Windows puts into the file system. Its kernel also runs the containers of others.
bool hasWslFiles(const Root& root) {
    return existsAny(root, {"/proc/sys/fs/binfmt_misc/WSLInterop", "/proc/sys/fs/binfmt_misc/WSLInterop-late",
                            "/run/WSL"});
}

// The value of the variable "container", which managers set for the first process.
std::string fromEnvironment(const Root& root) {
    constexpr std::size_t kMaxEnvironment = std::size_t{1} << 20;
    constexpr std::string_view kVariable = "container=";
    const std::string environment = root.read("/proc/1/environ", kMaxEnvironment).value_or("");
    std::string_view rest = environment;
    while (!rest.empty()) {
        const std::string_view variable = takeField(rest, '\0');
        if (variable.starts_with(kVariable)) return std::string(variable.substr(kVariable.size()));
    }
    return {};
}

// LXD has this socket in its containers and in its virtual machines, where a channel to the host is there, too.
bool hasLxdSocket(const Root& root) {
    return existsAny(root, {"/dev/lxd/sock", "/dev/incus/sock"}) && !root.exists("/dev/virtio-ports") &&
           dmiLine(root, "board_name") != "LXD";
}

// The control groups of the first process, without the namespaces that hide their names.
std::vector<std::string> controlGroups(const Root& root) {
    constexpr std::size_t kMaxText = std::size_t{64} << 10;
    std::vector<std::string> paths;
    const std::string text = root.read("/proc/1/cgroup", kMaxText).value_or("");
    std::string_view rest = text;
    for (std::string_view line; nextLine(rest, line);) {
        takeField(line, ':');
        takeField(line, ':');
        paths.emplace_back(line);
    }
    return paths;
}

// The first match counts. A pod is managed by Kubernetes; the names of some groups tell by which program.
constexpr std::pair<std::string_view, const char*> kGroupMarks[] = {
    {"/docker/", "docker"},
    {"/docker-", "docker"},
    {"/libpod-", "podman"},
    {"/libpod_parent/", "podman"},
    {"/lxc/", "lxc"},
    {"/lxc.payload", "lxc"},
    {"/cri-containerd-", "containerd"},
    {"/crio-", "cri-o"},
    {"/kubepods", "kubernetes"},
};

std::string fromControlGroups(const Root& root) {
    const std::vector<std::string> groups = controlGroups(root);
    for (const auto& [mark, type] : kGroupMarks) {
        for (const std::string& group : groups) {
            if (group.find(mark) != std::string::npos) return type;
        }
    }
    return {};
}

// By the directories of the layers below the root, such as
//     711 640 0:55 / / rw,relatime - overlay overlay rw,lowerdir=/var/lib/docker/overlay2/l/ABC:...
std::string fromLayers(const Root& root) {
    const std::string mounts = root.read("/proc/self/mountinfo").value_or("");
    std::string_view rest = mounts;
    for (std::string_view line; nextLine(rest, line);) {
        constexpr std::size_t kMountPoint = 4;
        const std::vector<std::string> words = wordsOf(line);
        if (words.size() <= kMountPoint || words[kMountPoint] != "/") continue;
        if (line.find(" - overlay ") == std::string_view::npos) continue;
        if (line.find("/io.containerd.snapshotter") != std::string_view::npos) return "containerd";
        if (line.find("/docker/overlay2/") != std::string_view::npos) return "docker";
    }
    return {};
}

std::string fromMarks(const Root& root) {
    // The second file is that of the interface for container managers.
    for (const char* const file : {"/run/systemd/container", "/run/host/container-manager"}) {
        std::string type = root.readLine(file);
        if (!type.empty()) return type;
    }
    std::string variable = fromEnvironment(root);
    // Several managers call themselves "oci".
    if (!variable.empty() && variable != "oci") return variable;
    if (root.exists("/run/.containerenv")) return "podman";
    if (root.exists("/.dockerenv")) return "docker";
    for (std::string (*const find)(const Root&) : {fromControlGroups, fromLayers}) {
        std::string type = find(root);
        if (!type.empty()) return type;
    }
    if (hasLxdSocket(root)) return "lxc";
    // The second directory is that of the host.
    if (root.exists("/proc/vz") && !root.exists("/proc/bc")) return "openvz";
    return variable;
}

bool isId(std::string_view text) {
    constexpr std::size_t kIdLength = 64;
    return text.size() == kIdLength && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::string idOfGroup(std::string_view group) {
    while (!group.empty()) {
        std::string_view name = takeField(group, '/');
        if (name.ends_with(".scope")) name.remove_suffix(6);
        const std::size_t dash = name.rfind('-');
        if (dash != std::string_view::npos) name.remove_prefix(dash + 1);
        if (isId(name)) return std::string(name);
    }
    return {};
}

}  // namespace

std::string containerType(const Root& root) {
    const bool wsl = isReleaseOfWsl(kernelRelease(root));
    if (wsl && hasWslFiles(root)) return "wsl";
    // A container image has the marks of containers even if it runs without a container.
    const bool outermost = root.readLink("/proc/self/ns/pid") == kFirstPidNamespace;
    const int denials = root.denials();
    std::string type = outermost ? std::string() : fromMarks(root);
    if (type.empty() && wsl) type = "wsl";
    if (!type.empty()) root.forgetDenials(denials);
    return type;
}

std::string containerId(const Root& root) {
    constexpr std::string_view kDirectory = "containers/";
    constexpr std::size_t kIdLength = 64;
    const std::string mounts = root.read("/proc/self/mountinfo").value_or("");
    for (std::size_t at = mounts.find(kDirectory); at != std::string::npos;
         at = mounts.find(kDirectory, at + 1)) {
        std::string id = mounts.substr(at + kDirectory.size(), kIdLength);
        if (isId(id)) return id;
    }
    for (const std::string& group : controlGroups(root)) {
        std::string id = idOfGroup(group);
        if (!id.empty()) return id;
    }
    return {};
}

bool isReleaseOfWsl(std::string_view release) {
    const auto has = [release](std::string_view text) {
        return release.find(text) != std::string_view::npos;
    };
    return has("microsoft") || has("Microsoft") || has("WSL");
}

}  // namespace toolkit::quorvah
