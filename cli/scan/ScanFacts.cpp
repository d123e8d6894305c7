#include "cli/scan/ScanFacts.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <utility>

namespace zavcli {

ScanTimer::ScanTimer(std::string toolkit, std::string root)
    : toolkit_(std::move(toolkit)), root_(std::move(root)), time_(std::time(nullptr)), begin_(Clock::now()) {}

ScanFacts ScanTimer::facts() const {
    return {"zav " ZAV_CLI_VERSION,
            fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(time_)),
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin_).count(),
            toolkit_,
            root_,
            time_,
            {}};
}

}  // namespace zavcli
