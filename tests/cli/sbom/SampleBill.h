// Sample inventories for the tests of bills of materials.
#pragma once

#include "cli/sbom/BillBuilder.h"

namespace zavtest {

inline zavcli::HardwareInventory sampleSystem() {
    using zavcli::GroupState;
    const auto package = [](const char* purl, const char* name, const char* version, const char* status) {
        return zavcli::Instance{{"InstanceID", purl},       {"Name", name},
                                {"VersionString", version}, {"Manufacturer", "A Team (x) <a@example.com>"},
                                {"Description", "a tool"},  {"Architecture", "amd64"},
                                {"Status", status},         {"PackageFormat", "dpkg"}};
    };
    zavcli::HardwareInventory hardware;
    hardware.groups = {{4,
                        "OperatingSystem",
                        {{{"Name", "linux"},
                          {"Caption", "Debian GNU/Linux 12 (bookworm)"},
                          {"Id", "debian"},
                          {"VersionId", "12"},
                          {"LastBootUpTime", "2026-11-22T07:51:15Z"}}},
                        {GroupState::Complete, ""}},
                       {25,
                        "SoftwarePackages",
                        {package("pkg:deb/debian/nginx-core@1.22.1-9?arch=amd64", "nginx-core", "1.22.1-9",
                                 "install ok installed"),
                         package("pkg:deb/debian/old@1?arch=amd64", "old", "1", "deinstall ok config-files")},
                        {GroupState::Complete, ""}}};
    return hardware;
}

inline zavcli::MatchedSignature sampleMatch(const char* guid, const char* name,
                                            std::vector<zavcli::Field> variables,
                                            const std::string& metadata) {
    return {guid, name, std::move(variables), "<Metadata>" + metadata + "</Metadata>"};
}

inline zavcli::SoftwareInventory sampleSoftware() {
    zavcli::SoftwareInventory software;
    const auto leftPad = [](const char* place) {
        return sampleMatch(
            "zav.npm", "left-pad",
            {{"package", ""}, {"path", place}, {"purl", "pkg:npm/%40scope/left-pad@1.3.0"}},
            "<Evidence kind=\"property\" source=\"" + std::string(place) + "/package.json\"/>");
    };
    software.results = {
        leftPad("/srv/b"),
        sampleMatch("zav.os", "Operating system", {{"version", "12"}},
                    "<Evidence kind=\"property\" source=\"/etc/os-release\"/>"),
        sampleMatch(
            "zav.nginx", "nginx",
            {{"package", "pkg:deb/debian/nginx-core@1.22.1-9?arch=amd64&amp;x=y"}, {"version", "1.22.1"}},
            "<Publisher>F5</Publisher><Home>https://nginx.org/</"
            "Home><Cpe>cpe:2.3:a:f5:nginx:1.22.1:*:*:*:*:*:*:*"
            "</Cpe><Evidence kind=\"package\" source=\"/var/lib/dpkg/status\" name=\"nginx-core\"/>"
            "<Evidence kind=\"elf\" source=\"/usr/sbin/nginx\" version=\"1.22.1\"/>"),
        sampleMatch("zav.tool", "tool", {{"package", ""}, {"path", "/opt/tool"}}, ""),
        leftPad("/srv/a"),
    };
    return software;
}

}  // namespace zavtest
