#include "toolkit/quorvah/sources/FileSystemIdentity.h"

#include <blkid/blkid.h>

#include <memory>

namespace toolkit::quorvah {

namespace {

struct FreeProbe {
    void operator()(blkid_probe probe) const { blkid_free_probe(probe); }
};
using Probe = std::unique_ptr<blkid_struct_probe, FreeProbe>;

std::string valueOf(const Probe& probe, const char* name) {
    const char* value = nullptr;
    const bool found = blkid_probe_lookup_value(probe.get(), name, &value, nullptr) == 0 && value != nullptr;
    return found ? std::string(value) : std::string();
}

}  // namespace

std::optional<FileSystemIdentity> readFileSystemIdentity(const kest::Descriptor& device) {
    if (!device.isOpen()) return std::nullopt;
    const Probe probe(blkid_new_probe());
    if (!probe || blkid_probe_set_device(probe.get(), device.number(), 0, 0) != 0) return std::nullopt;
    blkid_probe_enable_superblocks(probe.get(), 1);
    blkid_probe_set_superblocks_flags(
        probe.get(), BLKID_SUBLKS_LABEL | BLKID_SUBLKS_UUID | BLKID_SUBLKS_TYPE | BLKID_SUBLKS_USAGE);
    if (blkid_do_safeprobe(probe.get()) != 0) return std::nullopt;
    return FileSystemIdentity{valueOf(probe, "TYPE"), valueOf(probe, "USAGE"), valueOf(probe, "LABEL"),
                              valueOf(probe, "UUID")};
}

}  // namespace toolkit::quorvah
