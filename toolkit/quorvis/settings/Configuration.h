#pragma once

#include <string>
#include <vector>

#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

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
