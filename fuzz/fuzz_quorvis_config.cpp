// The configuration of the signature scanner: the result is an error, or variables and settings within their limits.
#include <cstdlib>

#include "fuzz/MemoryFile.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace {

void must(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const zavfuzz::MemoryFile file(data, size);
    toolkit::quorvis::Configuration configuration = toolkit::quorvis::readConfiguration(file.path());
    must(configuration.error.empty() || (configuration.presets.empty() && configuration.settings.empty()));
    const toolkit::quorvis::Settings settings =
        toolkit::quorvis::makeSettings(configuration.settings, configuration.events);
    must(settings.fileSystem.maxDepth >= 1 && settings.fileSystem.maxDepth <= 64);
    must(settings.fileSystem.maxMatches >= 1);
    must(settings.evaluation.timeLimit.count() >= 1);
    return 0;
}
