// The components that files of programming languages name: themselves, and what they were built from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/FormatReaders.h"

namespace toolkit::quorvis {

// Missing information is empty.
struct Component {
    std::string
        role;  // main: what the file itself is; dependency, toolchain: what it contains; build, setting
    std::string name;
    std::string version;
    std::string group;      // of the name: the group of a Java artifact, the scope of a package of npm
    std::string place;      // within the file: "!/WEB-INF/lib/a.jar"
    std::string container;  // the place of what contains it, unless it is the main component; empty: the file
    std::string purl;
    std::string value;  // of a setting
};

struct ComponentList {
    std::vector<Component> components;
    bool tooMany = false;   // there are more than the limit
    bool tooLarge = false;  // something exceeds another limit; `problem` tells it
    std::string problem;    // what could not be read; empty if everything could

    // False, with tooMany set, if the limit is reached.
    bool add(Component component, std::size_t limit);
};

struct ComponentLimits {
    std::size_t components = 0;
    std::uint64_t unpacked = 0;  // bytes of one member of an archive
};

// Reads a file of a format. `path` is the file's own, which may tell what its content does not.
using ReadComponentFile = ComponentList (*)(const RandomAccessFile& file, std::string_view path,
                                            const ComponentLimits& limits,
                                            const ProgressCheck& checkProgress);
using ReadComponentText = ComponentList (*)(std::string_view text, std::string_view path,
                                            const ComponentLimits& limits,
                                            const ProgressCheck& checkProgress);

struct ComponentFormat {
    std::string_view name;
    ReadComponentFile readFile = nullptr;  // null for formats that are read as a whole
    ReadComponentText readText = nullptr;
    bool ofPrograms = false;  // whether it reads programs of any kind, most of which have no components
};

// The formats that read programs.
std::vector<const ComponentFormat*> programFormats();

// Null if there is no format of this name.
const ComponentFormat* componentFormat(std::string_view name);
// "go, rust or jar"
std::string componentFormatNames();

// What the linker of Go recorded in a program for Linux or Windows: the main module, its dependencies, the toolchain, and
// the settings of the build, whose role is "setting".
ComponentList readGoComponents(const RandomAccessFile& file, std::string_view path,
                               const ComponentLimits& limits, const ProgressCheck& checkProgress);
// The list of crates that cargo-auditable adds to a program. Dependencies of the build have the role "build".
ComponentList readRustComponents(const RandomAccessFile& file, std::string_view path,
                                 const ComponentLimits& limits, const ProgressCheck& checkProgress);

// A Java archive, and the archives within it, two levels deep. Those within it, and artifacts that were unpacked into it, have
// the role "dependency".
ComponentList readJarComponents(const RandomAccessFile& file, std::string_view path,
                                const ComponentLimits& limits, const ProgressCheck& checkProgress);

// installed.json or composer.lock of Composer. What only development needs has the role "build" in the latter.
ComponentList readComposerComponents(std::string_view text, std::string_view path,
                                     const ComponentLimits& limits, const ProgressCheck& checkProgress);
// NAME.deps.json of a program of .NET.
ComponentList readDotnetComponents(std::string_view text, std::string_view path,
                                   const ComponentLimits& limits, const ProgressCheck& checkProgress);
// The .gemspec file of an installed gem.
ComponentList readGemComponents(std::string_view text, std::string_view path, const ComponentLimits& limits,
                                const ProgressCheck& checkProgress);
// package.json of a package of npm. It is read until its name and version are known.
ComponentList readNpmComponents(std::string_view text, std::string_view path, const ComponentLimits& limits,
                                const ProgressCheck& checkProgress);
// package-lock.json, npm-shrinkwrap.json or node_modules/.package-lock.json of npm. What only development needs has the role
// "build".
ComponentList readNpmLockComponents(std::string_view text, std::string_view path,
                                    const ComponentLimits& limits, const ProgressCheck& checkProgress);
// NAME.nuspec of a package of NuGet.
ComponentList readNugetComponents(std::string_view text, std::string_view path, const ComponentLimits& limits,
                                  const ProgressCheck& checkProgress);
// META.json or MYMETA.json of a distribution of CPAN.
ComponentList readPerlComponents(std::string_view text, std::string_view path, const ComponentLimits& limits,
                                 const ProgressCheck& checkProgress);
// METADATA or PKG-INFO of a distribution of Python.
ComponentList readPythonComponents(std::string_view text, std::string_view path,
                                   const ComponentLimits& limits, const ProgressCheck& checkProgress);
// DESCRIPTION of a package of R.
ComponentList readRComponents(std::string_view text, std::string_view path, const ComponentLimits& limits,
                              const ProgressCheck& checkProgress);

}  // namespace toolkit::quorvis
