#include "toolkit/machine/files/PathWalk.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <vector>

namespace toolkit {

namespace {

constexpr int kMaxLinks = 40;  // the limit of the kernel

// The components of `path` in reverse order, ready to be pushed on a stack.
std::vector<std::string> reversedComponents(std::string_view path) {
    std::vector<std::string> components;
    while (!path.empty()) {
        const std::size_t slash = path.rfind('/');
        const std::string_view last = path.substr(slash == std::string_view::npos ? 0 : slash + 1);
        if (!last.empty() && last != ".") components.emplace_back(last);
        path = slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
    }
    return components;
}

// The target of the symbolic link `name`; empty when it is not a symbolic link.
std::string linkText(int directory, const std::string& name) {
    std::array<char, 4096> text;
    const ssize_t length = ::readlinkat(directory, name.c_str(), text.data(), text.size());
    return length < 0 ? std::string() : std::string(text.data(), static_cast<std::size_t>(length));
}

// The directories from the root of the tree to the current one.
class Walk {
  public:
    Walk(int tree, const AvoidedMounts& avoided) : tree_(tree), avoided_(avoided) {}

    int directory() const { return below_.empty() ? tree_ : below_.back().number(); }

    void goToRoot() {
        below_.clear();
        path_.clear();
    }

    // The parent of the root is the root.
    void goUp() {
        if (below_.empty()) return;
        below_.pop_back();
        path_.resize(path_.rfind('/'));
    }

    // Whether the next directory or file of this name is one that is avoided. Sets errno then.
    bool avoids(const std::string& name) const {
        if (avoided_.empty() || !avoided_.contain(path_ + "/" + name)) return false;
        errno = EREMOTE;
        return true;
    }

    bool goDown(const std::string& name) {
        kest::Descriptor next(
            ::openat(directory(), name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!next.isOpen()) return false;
        below_.push_back(std::move(next));
        path_.append("/").append(name);
        return true;
    }

  private:
    int tree_;
    const AvoidedMounts& avoided_;
    std::vector<kest::Descriptor> below_;
    std::string path_;  // within the tree, empty at its root
};

}  // namespace

kest::Descriptor openByComponent(int tree, std::string_view path, int flags, const AvoidedMounts& avoided) {
    Walk walk(tree, avoided);
    std::vector<std::string> todo = reversedComponents(path);
    int links = 0;
    while (!todo.empty()) {
        const std::string name = std::move(todo.back());
        todo.pop_back();
        if (name == "..") {
            walk.goUp();
            continue;
        }
        if (walk.avoids(name)) return {};
        const bool last = todo.empty();
        const bool keepLink = last && (flags & O_NOFOLLOW) != 0;
        const std::string link = keepLink ? std::string() : linkText(walk.directory(), name);
        if (!link.empty()) {
            if (++links > kMaxLinks) {
                errno = ELOOP;
                return {};
            }
            if (link.front() == '/') walk.goToRoot();
            const std::vector<std::string> components = reversedComponents(link);
            todo.insert(todo.end(), components.begin(), components.end());
        } else if (last) {
            return kest::Descriptor(::openat(walk.directory(), name.c_str(), flags | O_NOFOLLOW));
        } else if (!walk.goDown(name)) {
            return {};
        }
    }
    return kest::Descriptor(::openat(walk.directory(), ".", flags));
}

}  // namespace toolkit
