#include "cli/Explanation.h"

#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "cli/Codes.h"
#include "cli/Failure.h"
#include "cli/Program.h"
#include "cli/XmlText.h"
#include "include/zav.h"

namespace zavcli {

namespace {

// A directory for the files of one run.
class Workspace {
  public:
    explicit Workspace(const std::string& parent) : path_(parent + "/zav_explain_XXXXXX") {
        if (mkdtemp(path_.data()) == nullptr)
            throw Failure(kExitFailed, std::string(sentence(ZAV_ERROR_WORKSPACE)));
    }
    ~Workspace() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    std::string file(const char* name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

std::string configuration(const std::vector<Preset>& presets, const std::vector<Setting>& settings) {
    std::string xml = "<Configuration>\n";
    for (const Preset& preset : presets) {
        xml += fmt::format("<Variable name=\"{}\" value=\"{}\" guid=\"{}\"/>\n", escapedXml(preset.name),
                           escapedXml(preset.value), escapedXml(preset.guid));
    }
    for (const Setting& setting : settings) {
        xml +=
            fmt::format("<Plugin name=\"{}\"><Attribute name=\"{}\" value=\"{}\"/></Plugin>\n",
                        escapedXml(setting.plugin), escapedXml(setting.attribute), escapedXml(setting.value));
    }
    return xml + "</Configuration>\n";
}

}  // namespace

std::string explainSignature(const std::string& scanner, const std::string& signatures,
                             const std::string& guid, const std::vector<Preset>& presets,
                             const std::vector<Setting>& settings, const std::string& directory) {
    const Workspace workspace(directory);
    std::ofstream(workspace.file("config.xml"), std::ios::binary) << configuration(presets, settings);
    const ProgramEnd end =
        runProgram(scanner, {"-c", workspace.file("config.xml"), "-o", workspace.file("output.xml"), "-e",
                             workspace.file("warnings.xml"), "-i", signatures, "--explain", guid});
    if (end.status == 0) return end.out;
    throw Failure(kExitFailed, fmt::format("the scanner {} cannot explain the signature: it ended with "
                                           "status {}{}{}",
                                           scanner, end.status, end.out.empty() ? "" : " and said: ",
                                           end.out.substr(0, end.out.find('\n'))));
}

}  // namespace zavcli
