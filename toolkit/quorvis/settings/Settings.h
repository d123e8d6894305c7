// The configuration file, and the settings that it makes.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// A setting of a plug-in in the configuration file.
struct PluginSetting {
    std::string plugin;
    std::string attribute;
    std::string value;
};

// The settings of all plug-ins, with their defaults.
struct Settings {
    struct FileSystem {
        std::string root;
        std::uint32_t maxDepth = 12;
        std::uint64_t maxEntries = 2'000'000;
        std::uint64_t maxEntriesPerDirectory = 200'000;
        std::uint64_t maxMatches = 1'000;                        // per leaf
        std::uint64_t maxContentSize = std::uint64_t{16} << 20;  // bytes
        std::uint64_t maxHashedSize = std::uint64_t{256} << 20;  // bytes
        bool crossDevices = true;                                // enter other local file systems
        bool remote = false;
        // Patterns of paths that no walk enters, in addition to those that are never entered.
        std::vector<std::string> exclude;
        bool wholeTree = false;  // whether "**" may occur without a fixed directory name above it
    } fileSystem;
    struct Packages {
        std::vector<std::string> types;      // all when empty
        std::string database;                // replaces the standard path of the database
        std::uint64_t maxFiles = 2'000'000;  // whose packages are known
    } packages;
    struct Processes {
        bool enabled = true;
    } processes;
    struct Swid {
        bool enabled = true;
        std::vector<std::string> directories;  // in addition to the standard ones
    } swid;
    struct Secrets {
        std::vector<std::string>
            allow;  // trees that are disclosed to signatures although other users may not see them
    } secrets;
    struct Sandbox {
        bool required = true;  // whether the scan fails if the sandbox is incomplete
    } sandbox;
    struct Evaluation {
        std::chrono::seconds timeLimit{120};
        std::uint64_t memoryLimit = std::uint64_t{512} << 20;  // bytes
        std::uint32_t jobs = 2;                                // threads of a walk
        bool skipInvalid = false;
        bool evidence = true;
        std::string cache;      // path of the hash cache; empty for none
        bool progress = false;  // whether lines about the progress are printed
    } evaluation;
};

// Applies the settings in order. An unknown plug-in, an unknown attribute or an invalid value adds an event with the code
// Config and has no other effect.
Settings makeSettings(const std::vector<PluginSetting>& given, std::vector<Event>& events);

// A variable that is set by the host, for one signature or, with an empty guid, for all signatures.
struct PresetValue {
    std::string name;
    std::string value;
    std::string guid;
};

// The content of a configuration file in document order. All texts are UTF-8.
struct Configuration {
    std::vector<PresetValue> presets;
    std::vector<PluginSetting> settings;
    std::string error;  // why the file cannot be read; empty if it can
    std::vector<Event> events;
};

// Reads the elements <Variable name value guid/>, and <Attribute name value/> within <Plugin name>, at any depth. Some
// hosts do not escape attribute values. Therefore the lines of a file that is not well-formed are read literally, and an
// event reports this.
Configuration readConfiguration(const std::string& path);

}  // namespace toolkit::quorvis
