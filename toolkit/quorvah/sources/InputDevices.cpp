#include "toolkit/quorvah/sources/InputDevices.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/KernelInfo.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMaxWords = 64;  // the kernel knows fewer than 1,024 codes
constexpr unsigned kWide = 64;
constexpr unsigned kNarrow = 32;

const std::string kClass = "/sys/class/input/";

// Whether a word of some bitmap has more digits than a word of 32 bits can have.
bool hasWideWord(std::string_view text) {
    std::size_t digits = 0;
    for (const char c : text) {
        const bool digit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
        digits = digit ? digits + 1 : 0;
        if (digits > 8) return true;
    }
    return false;
}

// The words have the size of those of the kernel's processor, and leading zeros are not printed. Keyboards of a 64-bit
// kernel have longer words than those of a 32-bit kernel ever are.
unsigned wordSize(const Root& root, std::string_view bitmaps) {
    if (hasWideWord(bitmaps)) return kWide;
    const std::string machine = readKernelInfo(root).machine;
    for (const std::string_view narrow : {"arm", "i386", "i486", "i586", "i686", "ppc", "mips", "riscv32"}) {
        const bool wide = machine.starts_with("ppc64") || machine.starts_with("mips64");
        if (machine.starts_with(narrow) && !wide) return kNarrow;
    }
    return kWide;
}

// The text between the quotation marks.
std::string unquoted(std::string_view text) {
    if (text.starts_with('"')) text.remove_prefix(1);
    if (text.ends_with('"')) text.remove_suffix(1);
    return std::string(trimmed(text));
}

// Takes the value of "Vendor=046d " from a line.
std::string wordAfter(std::string_view line, std::string_view key) {
    const std::size_t at = line.find(key);
    if (at == std::string_view::npos) return {};
    std::string_view rest = line.substr(at + key.size());
    return std::string(nextWord(rest));
}

std::string eventHandler(std::string_view handlers) {
    for (std::string_view word = nextWord(handlers); !word.empty(); word = nextWord(handlers)) {
        if (word.starts_with("event")) return std::string(word);
    }
    return {};
}

void setBitmap(std::string_view line, unsigned bits, InputDevice& device) {
    const std::string_view name = takeField(line, '=');
    const std::pair<std::string_view, EventCodes*> bitmaps[] = {
        {"PROP", &device.properties}, {"EV", &device.events},    {"KEY", &device.keys},
        {"REL", &device.relative},    {"ABS", &device.absolute},
    };
    for (const auto& [known, codes] : bitmaps) {
        if (known == name) *codes = EventCodes(line, bits);
    }
}

// "N: Name="AT Keyboard"" and so on.
void readLine(std::string_view line, unsigned bits, InputDevice& device) {
    if (line.size() < 3) return;
    const char kind = line.front();
    line.remove_prefix(3);
    switch (kind) {
        case 'I':
            device.bus = wordAfter(line, "Bus=");
            device.vendor = wordAfter(line, "Vendor=");
            device.product = wordAfter(line, "Product=");
            break;
        case 'N':
            takeField(line, '=');
            device.name = unquoted(line);
            break;
        case 'P':
            takeField(line, '=');
            device.phys = line;
            break;
        case 'S':
            takeField(line, '=');
            device.sysfs = line;
            device.id = line.substr(line.rfind('/') + 1);
            break;
        case 'U':
            takeField(line, '=');
            device.unique = line;
            break;
        case 'H':
            takeField(line, '=');
            device.handler = eventHandler(line);
            break;
        case 'B':
            setBitmap(line, bits, device);
            break;
        default:
            break;
    }
}

std::vector<InputDevice> readClass(const Root& root) {
    std::vector<InputDevice> devices;
    std::vector<std::string> names = root.list(kClass);
    std::erase_if(names, [](const std::string& name) { return !name.starts_with("input"); });
    std::string bitmaps;
    for (const std::string& name : names)
        bitmaps += root.readLine(kClass + name + "/capabilities/key") + "\n";
    const unsigned bits = names.empty() ? kWide : wordSize(root, bitmaps);
    for (const std::string& name : names) {
        const std::string directory = kClass + name + "/";
        const auto codes = [&](const char* file) {
            return EventCodes(root.readLine(directory + file), bits);
        };
        InputDevice device;
        device.id = name;
        device.name = root.readLine(directory + "name");
        device.bus = root.readLine(directory + "id/bustype");
        device.vendor = root.readLine(directory + "id/vendor");
        device.product = root.readLine(directory + "id/product");
        device.phys = root.readLine(directory + "phys");
        device.unique = root.readLine(directory + "uniq");
        device.sysfs = root.readLink(kClass + name);
        for (const std::string& child : root.list(directory)) {
            if (child.starts_with("event")) device.handler = child;
        }
        device.properties = codes("properties");
        device.events = codes("capabilities/ev");
        device.keys = codes("capabilities/key");
        device.relative = codes("capabilities/rel");
        device.absolute = codes("capabilities/abs");
        devices.push_back(std::move(device));
    }
    return devices;
}

}  // namespace

EventCodes::EventCodes(std::string_view text, unsigned bitsPerWord) : bits_(bitsPerWord) {
    text = trimmed(text);
    for (std::string_view word = nextWord(text); !word.empty(); word = nextWord(text)) {
        std::uint64_t bits = 0;
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), bits, 16);
        const bool valid = error == std::errc() && end == word.data() + word.size();
        if (!valid || words_.size() == kMaxWords) {
            words_.clear();
            return;
        }
        words_.push_back(bits);
    }
    std::ranges::reverse(words_);
}

bool EventCodes::has(unsigned code) const {
    const std::size_t word = code / bits_;
    return word < words_.size() && (words_[word] >> code % bits_ & 1U) != 0;
}

unsigned EventCodes::count(unsigned first, unsigned last) const {
    unsigned found = 0;
    for (unsigned code = first; code <= last; ++code) found += has(code) ? 1 : 0;
    return found;
}

std::vector<InputDevice> parseInputDevices(std::string_view text, unsigned bitsPerWord) {
    std::vector<InputDevice> devices;
    InputDevice device;
    for (std::string_view line; nextLine(text, line);) {
        if (!line.empty()) {
            readLine(line, bitsPerWord, device);
        } else if (!device.id.empty()) {
            devices.push_back(std::exchange(device, {}));
        }
    }
    if (!device.id.empty()) devices.push_back(std::move(device));
    return devices;
}

std::vector<InputDevice> readInputDevices(const Root& root) {
    const std::string text = root.read("/proc/bus/input/devices").value_or("");
    if (text.empty()) return readClass(root);
    return parseInputDevices(text, wordSize(root, text));
}

std::string_view inputBusName(std::string_view bus) {
    constexpr std::pair<std::string_view, std::string_view> kBuses[] = {
        {"0001", "PCI"},       {"0002", "ISA PnP"},       {"0003", "USB"},  {"0005", "Bluetooth"},
        {"0006", "Virtual"},   {"0010", "ISA"},           {"0011", "PS/2"}, {"0013", "RS-232"},
        {"0014", "Game port"}, {"0015", "Parallel port"}, {"0017", "ADB"},  {"0018", "I2C"},
        {"0019", "Host"},      {"001c", "SPI"},           {"001d", "RMI"},
    };
    for (const auto& [number, name] : kBuses) {
        if (number == bus) return name;
    }
    return {};
}

}  // namespace toolkit::quorvah
