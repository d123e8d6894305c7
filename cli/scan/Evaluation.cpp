#include "cli/scan/Evaluation.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "cli/scan/Codes.h"
#include "cli/scan/Findings.h"
#include "cli/system/Failure.h"
#include "cli/terminal/Terminal.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

using Files = std::vector<const SignaturesFile*>;

constexpr int kSignaturesRefused = 3;  // the scanner's exit status

int scannerStatus(ZAVSwCtx* software) {
    int status = -1;
    ZAV_sw_get_returncode(software, &status);
    return status;
}

std::string explain(int code, ZAVSwCtx* software, const std::string& scanner) {
    if (code == ZAV_ERROR_SW_SCANNER) return howEnded(scannerStatus(software), scanner);
    return fmt::format("{} ({})", sentence(code), scanner);
}

std::map<std::string, std::string> namesIn(const std::vector<SignaturesFile>& files) {
    std::map<std::string, std::string> names;
    for (const SignaturesFile& file : files) {
        for (const auto& [guid, name] : file.names) noteName(names, guid, name);
    }
    return names;
}

// What the scanner said of the file, without the words that go for every refusal.
std::string complaintOf(const std::string& line, const std::string& path) {
    constexpr std::string_view kLead = "error: invalid: ";
    const std::string text = line.starts_with(kLead) ? line.substr(kLead.size()) : line;
    return text.find(path) == std::string::npos ? fmt::format("{}: {}", path, text) : text;
}

bool canBeJoined(const SignaturesFile& file) {
    return file.body.has_value();
}

class Evaluation {
  public:
    Evaluation(Library& library, ScannerLines& lines, const std::string& scanner,
               const std::vector<SignaturesFile>& files, const std::vector<std::string>& guids)
        : software_(library.software()),
          lines_(lines),
          scanner_(scanner),
          guids_(guids),
          names_(namesIn(files)) {}

    SoftwareReport run(const std::vector<SignaturesFile>& files) {
        Files together;
        Files alone;
        const bool several = std::count_if(files.begin(), files.end(), canBeJoined) > 1;
        for (const SignaturesFile& file : files) {
            (several && canBeJoined(file) ? together : alone).push_back(&file);
            report_.signatures += file.count;
        }
        report_.files = files.size();
        evaluateEach(alone);
        // The scanner counts lines in the joined file, so those at fault are told by a run of their own.
        if (several && !evaluateJoined(together)) evaluateEach(together);
        return std::move(report_);
    }

  private:
    void evaluateEach(const Files& files) {
        std::vector<std::string> refused;
        for (const SignaturesFile* const file : files) {
            lines_.clear();
            if (take(ZAV_sw_evaluate_file(software_, widenBytes(file->path).c_str()))) continue;
            for (const std::string& line : lines_.lines()) complain(complaintOf(line, file->path));
            refused.push_back(file->path);
        }
        if (!refused.empty())
            throw Failure(kExitFailed,
                          fmt::format("the scanner refuses the signatures of {}", fmt::join(refused, ", ")));
    }

    bool evaluateJoined(const Files& files) {
        std::vector<std::wstring> bodies;
        bodies.reserve(files.size());
        for (const SignaturesFile* const file : files) bodies.push_back(widenBytes(*file->body));
        std::vector<const wchar_t*> texts;
        texts.reserve(bodies.size());
        for (const std::wstring& body : bodies) texts.push_back(body.c_str());
        return take(ZAV_sw_evaluate_multi(software_, texts.data(), static_cast<unsigned int>(texts.size())));
    }

    // Adds the results of a run to the report; false when the scanner refused the signatures.
    bool take(int code) {
        if (code == ZAV_ERROR_SW_SIGNATURE && scannerStatus(software_) == kSignaturesRefused) return false;
        if (code != ZAV_SUCCESS && code != ZAV_ERROR_SW_WARNINGS)
            throw Failure(kExitFailed, explain(code, software_, scanner_));
        if (code == ZAV_ERROR_SW_WARNINGS) report_.fault = explain(code, software_, scanner_);
        report_.matches += countFindings(software_);
        append(report_.results, readFindings(software_, guids_, names_));
        append(report_.warnings, readWarnings(software_));
        return true;
    }

    template <typename Item>
    static void append(std::vector<Item>& items, std::vector<Item> others) {
        std::move(others.begin(), others.end(), std::back_inserter(items));
    }

    ZAVSwCtx* software_;
    ScannerLines& lines_;
    const std::string& scanner_;
    const std::vector<std::string>& guids_;
    const std::map<std::string, std::string> names_;
    SoftwareReport report_;
};

}  // namespace

SoftwareReport evaluateFiles(Library& library, ScannerLines& lines, const std::string& scanner,
                             const std::vector<SignaturesFile>& files,
                             const std::vector<std::string>& guids) {
    return Evaluation(library, lines, scanner, files, guids).run(files);
}

void evaluateNothing(Library& library, const std::string& scanner) {
    const wchar_t* none = nullptr;
    const int code = ZAV_sw_evaluate_multi(library.software(), &none, 0);
    if (code != ZAV_SUCCESS) throw Failure(kExitFailed, explain(code, library.software(), scanner));
}

}  // namespace zavcli
