#pragma once

#include <string>
#include <vector>

#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// A variable that the host gives a value; for every signature when the guid is empty.
struct PresetValue {
    std::string name;
    std::string value;
    std::string guid;
};

// What a configuration file says, all texts in UTF-8 and in the order of the file.
struct Configuration {
    std::vector<PresetValue> presets;
    std::vector<PluginSetting> settings;
    std::string error;  // why the file cannot be read; empty when it can
    std::vector<Event> events;
};

// Reads the elements <Variable name value guid/> and <Attribute name value/>, the latter within a <Plugin name>,
// wherever they stand. The lines of a file that is ill-formed, because its writer does not escape what it puts
// between quotes, are taken literally, and an event tells so.
Configuration readConfiguration(const std::string& path);

}  // namespace toolkit::quorvis
