#include "toolkit/quorvah/sources/HyperVPairs.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kKey = 512;
constexpr std::size_t kValue = 2048;

std::string_view textOf(std::string_view bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

}  // namespace

std::string hyperVValue(std::string_view pool, std::string_view key) {
    for (; pool.size() >= kKey + kValue; pool.remove_prefix(kKey + kValue)) {
        if (textOf(pool.substr(0, kKey)) == key) return std::string(textOf(pool.substr(kKey, kValue)));
    }
    return {};
}

}  // namespace toolkit::quorvah
