// The readers of package databases, one of which the first byte selects: any bytes give packages whose texts are parts of
// the input, or none.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <span>
#include <string_view>

#include "toolkit/machine/packages/ApkDatabase.h"
#include "toolkit/machine/packages/DpkgDatabase.h"
#include "toolkit/machine/packages/PacmanDatabase.h"
#include "toolkit/machine/packages/RpmBlobs.h"
#include "toolkit/machine/packages/RpmDatabase.h"
#include "toolkit/machine/packages/SnapDatabase.h"
#include "toolkit/machine/text/Budget.h"
#include "toolkit/machine/text/KeyFile.h"
#include "toolkit/machine/text/ShellVariables.h"

namespace {

void must(bool holds, int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "line %d does not hold\n", line);
    std::abort();
}

bool isPartOf(std::string_view part, std::string_view whole) {
    return part.empty() ||
           (part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size());
}

// Values are trimmed parts of single lines.
void checkValues(std::initializer_list<std::string_view> values, std::string_view input) {
    for (const std::string_view value : values) {
        must(isPartOf(value, input));
        must(value.find('\n') == std::string_view::npos);
        must(value.empty() || (value.front() != ' ' && value.back() != ' '));
    }
}

void readDpkg(std::string_view input) {
    toolkit::DpkgStatusParser status(input);
    toolkit::DpkgStanza stanza;
    std::size_t names = 0;
    while (status.next(stanza)) {
        must(!stanza.package.empty());
        checkValues(
            {stanza.package, stanza.status, stanza.version, stanza.architecture, stanza.multiArch,
             stanza.maintainer, stanza.description, stanza.source, stanza.section, stanza.installedSize},
            input);
        must(stanza.source.find('(') == std::string_view::npos);
        names += stanza.package.size();
        const toolkit::DpkgVersion version = toolkit::splitDpkgVersion(stanza.version);
        const std::size_t separators =
            stanza.version.size() - version.epoch.size() - version.upstream.size() - version.revision.size();
        must(separators <= 2);
        must(!toolkit::isInstalled(stanza.status) || stanza.status.find(' ') != std::string_view::npos);
    }
    must(stanza.package.empty() && names <= input.size());
}

void readRpm(std::string_view input) {
    toolkit::RpmPackage package;
    must(toolkit::readRpmHeader(input, package) == !package.name.empty());
    for (const std::string_view text : {package.name, package.version, package.release, package.architecture,
                                        package.vendor, package.summary, package.group, package.sourceRpm}) {
        must(isPartOf(text, input) && text.size() <= toolkit::kMaxValueLength);
        must(text.find('\0') == std::string_view::npos);
    }
    must(isPartOf(toolkit::nameOfSourceRpm(package.sourceRpm), package.sourceRpm));
    toolkit::readRpmFiles(input, [input](std::string_view directory, std::string_view name) {
        must(isPartOf(directory, input) && isPartOf(name, input));
    });
}

// Every blob is a copy of bytes of the file, and together they are not much longer than the file: a chain of pages may be used
// for several, but each needs an entry of its own.
void readBlobs(std::string_view input,
               toolkit::BlobReading (*reader)(const toolkit::BlobFile&, const toolkit::BlobVisitor&)) {
    toolkit::Budget budget;
    const toolkit::BlobFile file{[&](std::uint64_t offset, std::span<char> bytes) {
                                     if (!budget.read(bytes.size()) || offset > input.size()) return false;
                                     if (bytes.size() > input.size() - offset) return false;
                                     std::copy_n(input.data() + offset, bytes.size(), bytes.data());
                                     return true;
                                 },
                                 input.size()};
    reader(file, [&](std::string_view blob) { must(blob.size() <= input.size()); });
}

void readNdb(std::string_view input) {
    readBlobs(input, toolkit::readNdbBlobs);
}

void readBerkeley(std::string_view input) {
    readBlobs(input, toolkit::readBerkeleyBlobs);
}

void readApk(std::string_view input) {
    toolkit::ApkParser parser(input);
    toolkit::ApkPackage package;
    std::size_t names = 0;
    while (parser.next(package)) {
        must(!package.name.empty());
        checkValues({package.name, package.version, package.architecture, package.maintainer,
                     package.description, package.origin, package.installedSize},
                    input);
        names += package.name.size();
    }
    must(package.name.empty() && names <= input.size());
}

void readPacman(std::string_view input) {
    const toolkit::PacmanPackage package = toolkit::readPacmanDesc(input);
    checkValues({package.name, package.version, package.architecture, package.packager, package.description,
                 package.base, package.installDate, package.size},
                input);
}

void readSnap(std::string_view input) {
    const toolkit::SnapMeta snap = toolkit::readSnapMeta(input);
    for (const std::string_view text : {snap.name, snap.version, snap.summary, snap.architectures}) {
        must(text.size() <= 2 * input.size());
        must(text.find('\n') == std::string_view::npos);
    }
}

void readFlatpak(std::string_view input) {
    checkValues({toolkit::keyFileValue(input, "Application", "name")}, input);
}

void readOsRelease(std::string_view input) {
    must(toolkit::ShellVariables(input).value("ID").size() <= input.size());
}

constexpr void (*kReaders[])(std::string_view) = {readDpkg,    readRpm,       readApk, readPacman,  readSnap,
                                                  readFlatpak, readOsRelease, readNdb, readBerkeley};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
    kReaders[data[0] % std::size(kReaders)](input);
    return 0;
}
