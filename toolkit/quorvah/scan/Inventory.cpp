#include "toolkit/quorvah/scan/Inventory.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "toolkit/machine/files/OutputFile.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/OutputDocument.h"
#include "toolkit/quorvah/report/Sanitizer.h"
#include "toolkit/quorvah/scan/Configuration.h"
#include "toolkit/quorvah/scan/Confinement.h"
#include "toolkit/quorvah/scan/GroupRunner.h"

namespace toolkit::quorvah {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

Scan openScan(Options options) {
    try {
        return Scan(std::move(options));
    } catch (const std::system_error& failure) {
        throw BadInput(failure.what());
    }
}

class Inventory {
  public:
    explicit Inventory(Options options) : scan_(openScan(std::move(options))) {
        if (scan_.options().sanitize) sanitizer_.emplace();
        scan_.summary.startTime = std::time(nullptr);
    }

    void take() {
        const std::vector<const Group*> wanted = readWanted();
        std::vector<const Group*> gathered = wanted;
        const bool tellsOfItself = std::erase(gathered, &kScanInfo) > 0;
        if (!gathered.empty() && needNoChild(scan_, gathered)) {
            const std::string missing = enterSandbox();
            if (!missing.empty()) tellOfSandbox(scan_, missing);
        }
        gatherGroups(
            scan_, gathered, Limits(), [this](Report& report) { prepare(report); },
            [this](GroupResult&& result) { add(std::move(result)); });
        if (tellsOfItself) addScanInfo();
        writeOutputFile(scan_.options().output, [this](const TextSink& sink) {
            writeDocument(results_, scan_.options().pretty, sink);
        });
    }

  private:
    // The groups that are asked for, each once, in the order of the table.
    std::vector<const Group*> readWanted() {
        const Configuration configuration = readConfiguration(scan_.options().config);
        if (!configuration.error.empty()) throw BadInput(configuration.error);
        for (const std::string& warning : configuration.warnings)
            warn(scan_.options().config + ": " + warning);
        std::vector<const Group*> named;
        for (const std::string& name : configuration.groups) {
            const Group* const group = findGroup(name);
            if (group == nullptr) warn("unknown group \"" + name + "\"");
            named.push_back(group);
        }
        std::vector<const Group*> wanted;
        for (const Group* const group : allGroups()) {
            if (std::ranges::find(named, group) == named.end()) continue;
            wanted.push_back(group);
            scan_.summary.requested.emplace_back(group->xmlName);
        }
        return wanted;
    }

    void warn(const std::string& text) {
        std::fprintf(stderr, "quorvah: %s\n", text.c_str());
        scan_.summary.warnings.push_back(text);
    }

    // What goes into the file: sorted, and without what the options leave out or hide.
    void prepare(Report& report) const {
        if (scan_.options().noVolatile) dropVolatile(report);
        if (sanitizer_) sanitizer_->hide(report);
        report.sort();
    }

    void note(const GroupResult& result) {
        Summary& summary = scan_.summary;
        const std::string name = result.group->xmlName;
        switch (result.state) {
            case GroupState::Complete:
                return summary.complete.push_back(name);
            case GroupState::NotApplicable:
                return summary.notApplicable.push_back(name + "=" + result.reason);
            case GroupState::Unsupported:
                return summary.unsupported.push_back(name);
            case GroupState::Partial:
                return summary.partial.push_back(name + "=" + result.reason);
            case GroupState::Unread:
                return summary.unread.push_back(name + "=" + result.reason);
        }
    }

    // Leaves out a group with which the file would be more than a host reads.
    void bound(GroupResult& result) {
        constexpr std::size_t kMost = std::size_t{192} << 20;
        if (result.xml.size() <= kMost - rendered_) {
            rendered_ += result.xml.size();
            return;
        }
        result.xml = {};
        result.memory.reset();
        result.instances = 0;
        result.state = GroupState::Unread;
        result.reason = "too-large";
    }

    void add(GroupResult&& result) {
        const char* const name = result.group->xmlName;
        bound(result);
        note(result);
        for (const std::string& warning : result.warnings) warn(warning);
        std::printf("group %s: %zu instance%s, %lld ms%s%s\n", name, result.instances,
                    result.instances == 1 ? "" : "s", static_cast<long long>(result.elapsed.count()),
                    result.reason.empty() ? "" : ", ", result.reason.c_str());
        std::fflush(stdout);
        results_.push_back(std::move(result));
    }

    void addScanInfo() {
        const Clock::time_point start = Clock::now();
        Summary& summary = scan_.summary;
        summary.endTime = std::time(nullptr);
        summary.elapsed = std::chrono::duration_cast<milliseconds>(start - start_).count();
        summary.complete.emplace_back(kScanInfo.xmlName);
        Report report(kScanInfo);
        kScanInfo.gather(scan_, report);
        summary.complete.pop_back();  // add() counts it
        report.setElapsed(std::chrono::duration_cast<milliseconds>(Clock::now() - start));
        prepare(report);
        add(render(report, scan_.options().pretty));
    }

    const Clock::time_point start_ = Clock::now();
    Scan scan_;
    std::optional<Sanitizer> sanitizer_;
    std::vector<GroupResult> results_;
    std::size_t rendered_ = 0;  // bytes of their xml
};

}  // namespace

void takeInventory(Options options) {
    Inventory(std::move(options)).take();
}

}  // namespace toolkit::quorvah
