#include "toolkit/quorvah/sources/BusAddress.h"

#include <charconv>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {
namespace {

bool readHex(std::string_view text, std::size_t least, std::size_t most, unsigned& number) {
    if (text.size() < least || text.size() > most) return false;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    return error == std::errc() && end == text.data() + text.size();
}

// "1-1.2": the bus, counted from 1, a dash and the ports, separated by dots.
bool isUsbDevice(std::string_view name) {
    const std::size_t dash = name.find('-');
    if (dash == 0 || name.starts_with('0') || dash == std::string_view::npos || dash + 1 == name.size())
        return false;
    return name.find_first_not_of("0123456789") == dash &&
           name.find_first_not_of("0123456789.", dash + 1) == std::string_view::npos;
}

template <class Predicate>
std::string_view innermost(std::string_view path, Predicate wanted) {
    std::string_view found;
    while (!path.empty()) {
        const std::string_view component = takeField(path, '/');
        if (wanted(component)) found = component;
    }
    return found;
}

}  // namespace

std::optional<PciAddress> readPciAddress(std::string_view text) {
    PciAddress address;
    const bool read = readHex(takeField(text, ':'), 4, 8, address.domain) &&
                      readHex(takeField(text, ':'), 2, 2, address.bus) &&
                      readHex(takeField(text, '.'), 2, 2, address.device) &&
                      readHex(text, 1, 1, address.function);
    if (!read || address.device > 31 || address.function > 7) return {};
    return address;
}

std::string_view pciAddressIn(std::string_view path) {
    return innermost(path, [](std::string_view component) { return readPciAddress(component).has_value(); });
}

std::string_view usbDeviceIn(std::string_view path) {
    // The devices of a Thunderbolt domain have names of the same form.
    if (path.find("/domain") != std::string_view::npos) return {};
    return innermost(path, isUsbDevice);
}

}  // namespace toolkit::quorvah
