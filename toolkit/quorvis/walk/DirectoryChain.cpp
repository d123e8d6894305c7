#include "toolkit/quorvis/walk/DirectoryChain.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

namespace toolkit::quorvis {

namespace {

bool identify(int directory, DirectoryChain::Identity& identity) {
    struct stat status {};
    if (::fstat(directory, &status) != 0) return false;
    identity = {status.st_dev, status.st_ino};
    return true;
}

}  // namespace

void DirectoryChain::start(std::vector<Identity> above) {
    open_.clear();
    above_ = std::move(above);
}

std::vector<DirectoryChain::Identity> DirectoryChain::above(std::size_t index) const {
    std::vector<Identity> identities = above_;
    for (std::size_t i = 0; i < index; ++i) {
        Identity identity;
        if (identify(at(i), identity)) identities.push_back(identity);
    }
    return identities;
}

bool DirectoryChain::holds(int directory) const {
    Identity wanted;
    if (!identify(directory, wanted)) return false;
    if (std::ranges::find(above_, wanted) != above_.end()) return true;
    return std::ranges::any_of(open_, [&](const Open& open) {
        Identity identity;
        return identify(open.directory.number(), identity) && identity == wanted;
    });
}

}  // namespace toolkit::quorvis
