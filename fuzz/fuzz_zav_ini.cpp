// The configuration file of the toolkit's location. Any bytes must give a directory that is empty or ends in /bin,
// and a product may be registered only if the file contains its name.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "core/ZAVlocation.h"

namespace {

const std::uint8_t* input = nullptr;
std::size_t inputSize = 0;

}  // namespace

// Replaces fopen at link time: every file that the library opens contains the fuzzer's input.
extern "C" FILE* __wrap_fopen(const char* /*path*/, const char* /*mode*/) {
    static std::uint8_t lineFeed = '\n';
    if (inputSize == 0) return fmemopen(&lineFeed, 1, "r");
    return fmemopen(const_cast<std::uint8_t*>(input), inputSize, "r");
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    input = data;
    inputSize = size;
    const zav::ZAVlocation location(nullptr, "beta", nullptr);
    const std::wstring directory = location.getLocation();
    if (!directory.empty() && !directory.ends_with(L"/bin")) std::abort();
    if (directory.find(L"//") != std::wstring::npos) std::abort();
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (location.isRegistered() != 0 && bytes.find("beta") == std::string_view::npos) std::abort();
    return 0;
}
