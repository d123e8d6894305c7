#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// A plug-in setting as the configuration file has it.
struct PluginSetting {
    std::string plugin;
    std::string attribute;
    std::string value;
};

// The plug-in settings, with their defaults.
struct Settings {
    struct FileSystem {
        std::string root;
        std::uint32_t maxDepth = 12;
        std::uint64_t maxEntries = 2'000'000;
        std::uint64_t maxEntriesPerDirectory = 200'000;
        std::uint64_t maxMatches = 1'000;                        // of one leaf
        std::uint64_t maxContentSize = std::uint64_t{16} << 20;  // bytes
        std::uint64_t maxHashedSize = std::uint64_t{256} << 20;  // bytes
        bool crossDevices = true;                                // onto other local file systems
        bool remote = false;
        std::vector<std::string>
            exclude;  // patterns of paths that no walk enters, besides those that are never entered
        bool wholeTree = false;  // whether "**" may stand below no directory of a fixed name
    } fileSystem;
    struct Packages {
        std::vector<std::string> types;  // all when empty
        std::string database;            // instead of where the database normally lies
    } packages;
    struct Processes {
        bool enabled = true;
    } processes;
    struct Swid {
        bool enabled = true;
        std::vector<std::string> directories;  // besides the usual ones
    } swid;
    struct Secrets {
        std::vector<std::string> allow;  // trees in which signatures may see what other users may not
    } secrets;
    struct Sandbox {
        bool required = true;  // whether nothing is evaluated where it is not whole
    } sandbox;
    struct Evaluation {
        std::chrono::seconds timeLimit{120};
        std::uint64_t memoryLimit = std::uint64_t{512} << 20;  // bytes
        std::uint32_t jobs = 2;                                // threads that walk
        bool skipInvalid = false;
        bool evidence = true;
        std::string cache;  // the file for the hashes of files; none when empty
    } evaluation;
};

// Applies the settings in order. An unknown plug-in or attribute and a value of the wrong kind are events of code
// Config; the default then stays.
Settings makeSettings(const std::vector<PluginSetting>& given, std::vector<Event>& events);

}  // namespace toolkit::quorvis
