#include "cli/scan/SignatureEvaluation.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "cli/scan/ErrorMessages.h"
#include "cli/scan/SoftwareResults.h"
#include "cli/system/Failure.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

using Files = std::vector<const SignatureFile*>;

constexpr int kSignaturesRefused = 3;  // exit status of the scanner

int scannerStatus(ZAVSwCtx* software) {
    int status = -1;
    ZAV_sw_get_returncode(software, &status);
    return status;
}

std::string failureMessage(int code, ZAVSwCtx* software, const std::string& scanner) {
    if (code == ZAV_ERROR_SW_SCANNER) return describeScannerExit(scannerStatus(software), scanner);
    return fmt::format("{} ({})", errorMessage(code), scanner);
}

// The line of the scanner about the file, without the prefix that all refusals have.
std::string refusalOf(const std::string& line, const std::string& path) {
    constexpr std::string_view kLead = "error: invalid: ";
    const std::string text = line.starts_with(kLead) ? line.substr(kLead.size()) : line;
    return text.find(path) == std::string::npos ? fmt::format("{}: {}", path, text) : text;
}

bool canBeJoined(const SignatureFile& file) {
    return file.body.has_value();
}

class Evaluation {
  public:
    Evaluation(LibraryHandle& library, ScannerOutput& output, const std::string& scanner,
               const std::vector<SignatureFile>& files, const std::vector<std::string>& guids,
               const std::function<void(const std::string&)>& report)
        : software_(library.software()),
          output_(output),
          scanner_(scanner),
          guids_(guids),
          report_(report),
          names_(namesIn(files)) {}

    SoftwareInventory run(const std::vector<SignatureFile>& files) {
        Files joined;
        Files single;
        const bool several = std::count_if(files.begin(), files.end(), canBeJoined) > 1;
        for (const SignatureFile& file : files) {
            (several && canBeJoined(file) ? joined : single).push_back(&file);
            inventory_.signatures += file.count;
        }
        inventory_.files = files.size();
        evaluateEach(single);
        // If the joined file is refused, a run for each file reports the errors with the right lines.
        if (several && !evaluateJoined(joined)) evaluateEach(joined);
        return std::move(inventory_);
    }

  private:
    void evaluateEach(const Files& files) {
        std::vector<std::string> refused;
        for (const SignatureFile* const file : files) {
            output_.clear();
            if (addResults(ZAV_sw_evaluate_file(software_, widenBytes(file->path).c_str()))) continue;
            for (const std::string& line : output_.lines()) report_(refusalOf(line, file->path));
            refused.push_back(file->path);
        }
        if (!refused.empty())
            throw Failure(kExitFailed,
                          fmt::format("the scanner refuses the signatures of {}", fmt::join(refused, ", ")));
    }

    bool evaluateJoined(const Files& files) {
        std::vector<std::wstring> bodies;
        bodies.reserve(files.size());
        for (const SignatureFile* const file : files) bodies.push_back(widenBytes(*file->body));
        std::vector<const wchar_t*> texts;
        texts.reserve(bodies.size());
        for (const std::wstring& body : bodies) texts.push_back(body.c_str());
        return addResults(
            ZAV_sw_evaluate_multi(software_, texts.data(), static_cast<unsigned int>(texts.size())));
    }

    // Adds the results of a run. Returns false if the scanner refused the signatures.
    bool addResults(int code) {
        if (code == ZAV_ERROR_SW_SIGNATURE && scannerStatus(software_) == kSignaturesRefused) return false;
        if (code != ZAV_SUCCESS && code != ZAV_ERROR_SW_WARNINGS)
            throw Failure(kExitFailed, failureMessage(code, software_, scanner_));
        if (code == ZAV_ERROR_SW_WARNINGS) inventory_.fault = failureMessage(code, software_, scanner_);
        inventory_.matches += countMatches(software_);
        append(inventory_.results, readMatches(software_, guids_, names_));
        append(inventory_.warnings, readWarnings(software_));
        return true;
    }

    template <typename Item>
    static void append(std::vector<Item>& items, std::vector<Item> others) {
        std::move(others.begin(), others.end(), std::back_inserter(items));
    }

    ZAVSwCtx* software_;
    ScannerOutput& output_;
    const std::string& scanner_;
    const std::vector<std::string>& guids_;
    const std::function<void(const std::string&)>& report_;
    const std::map<std::string, std::string> names_;
    SoftwareInventory inventory_;
};

}  // namespace

SoftwareInventory evaluateFiles(LibraryHandle& library, ScannerOutput& output, const std::string& scanner,
                                const std::vector<SignatureFile>& files,
                                const std::vector<std::string>& guids,
                                const std::function<void(const std::string&)>& report) {
    return Evaluation(library, output, scanner, files, guids, report).run(files);
}

void evaluateNothing(LibraryHandle& library, const std::string& scanner) {
    const wchar_t* none = nullptr;
    const int code = ZAV_sw_evaluate_multi(library.software(), &none, 0);
    if (code != ZAV_SUCCESS) throw Failure(kExitFailed, failureMessage(code, library.software(), scanner));
}

}  // namespace zavcli
