#include "bench/OutputFile.h"

#include <array>
#include <cstdint>
#include <fstream>

namespace zavbench {

namespace {

// The same file on every machine.
class Numbers {
  public:
    std::uint32_t below(std::uint32_t limit) {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::uint32_t>(state_ >> 33U) % limit;
    }

  private:
    std::uint64_t state_ = 42;
};

constexpr std::array<const char*, 16> kWords = {
    "library", "shared",    "files", "development", "tools", "support", "for",    "runtime",
    "common",  "documents", "data",  "command",     "line",  "utility", "module", "GNU"};

std::string words(Numbers& numbers, std::uint32_t count, const char* separator) {
    std::string text = kWords.at(numbers.below(kWords.size()));
    for (std::uint32_t i = 1; i < count; ++i)
        text.append(separator).append(kWords.at(numbers.below(kWords.size())));
    return text;
}

void writeField(std::ostream& out, const char* name, const std::string& value) {
    out << '<' << name << '>' << value << "</" << name << '>';
}

}  // namespace

void writeOutputFile(const std::string& path, int instances) {
    std::ofstream out(path, std::ios::binary);
    Numbers numbers;
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Hardware>";
    for (int i = 0; i < instances; ++i) {
        const std::string name = words(numbers, 2, "-") + std::to_string(i);
        const std::string version = std::to_string(numbers.below(9)) + '.' +
                                    std::to_string(numbers.below(99)) + ".2-" +
                                    std::to_string(numbers.below(9)) + "+b1";
        out << "<SoftwarePackages>";
        writeField(out, "InstanceID", "pkg:deb/debian/" + name + '@' + version + "?arch=amd64");
        writeField(out, "Name", name);
        writeField(out, "VersionString", version);
        writeField(out, "Manufacturer",
                   "The " + words(numbers, 2, " ") + " team &lt;team@lists.example.org&gt;");
        writeField(out, "Description", words(numbers, 5 + numbers.below(6), " "));
        writeField(out, "InstallDate", "2026-11-21T06:14:45Z");
        writeField(out, "Architecture", "amd64");
        writeField(out, "InstalledSize", std::to_string(numbers.below(1000000)));
        out << "</SoftwarePackages>";
    }
    out << "</Hardware>";
}

}  // namespace zavbench
