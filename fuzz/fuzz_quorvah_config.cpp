// Reads arbitrary bytes as a configuration of quorvah. The result must be either groups or an error, never both.
#include <cstdlib>

#include "fuzz/MemoryFile.h"
#include "toolkit/quorvah/scan/Configuration.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const zavfuzz::MemoryFile file(data, size);
    const toolkit::quorvah::Configuration configuration = toolkit::quorvah::readConfiguration(file.path());
    if (!configuration.error.empty() && !configuration.groups.empty()) std::abort();
    return 0;
}
