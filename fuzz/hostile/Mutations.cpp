#include "fuzz/hostile/Mutations.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <utility>

namespace hostile {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMaxSize = std::size_t{8} << 20;

char anyByte(Random& random) {
    return static_cast<char>(random.below(256));
}

void overwrite(Random& random, std::string& bytes) {
    for (std::size_t i = random.below(1 + bytes.size() / 50) + 1; i > 0 && !bytes.empty(); --i)
        bytes[random.below(bytes.size())] = anyByte(random);
}

// Overwrites bytes with binary numbers or digits.
void insertNumbers(Random& random, std::string& bytes) {
    static const std::string kNumbers[] = {
        "\xFF\xFF\xFF\xFF",
        std::string("\0\0\0\x80", 4),
        std::string("\0\0\0\0", 4),
        "\x7F\xFF\xFF\xFF",
        "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F",
        "18446744073709551616",
        "-1",
        "9223372036854775807",
        "1e999999",
    };
    if (bytes.empty()) return;
    for (std::size_t i = random.below(8) + 1; i > 0; --i) {
        const std::string& number = random.pick(kNumbers);
        const std::size_t at = random.below(bytes.size());
        bytes.replace(at, std::min(number.size(), bytes.size() - at), number);
    }
}

void splice(Random& random, std::string& bytes) {
    if (bytes.empty()) return;
    const std::size_t from = random.below(bytes.size());
    const std::string part = bytes.substr(from, random.below(bytes.size() - from) + 1);
    bytes.insert(random.below(bytes.size()), part);
}

void repeat(Random& random, std::string& bytes) {
    if (bytes.empty()) return;
    const std::size_t from = random.below(bytes.size());
    const std::string part = bytes.substr(from, random.below(bytes.size() - from) + 1);
    const std::size_t most = random.oneIn(4) ? kMaxSize : std::size_t{64} << 10;
    std::string all;
    while (all.size() + part.size() < most) all += part;
    bytes.insert(random.below(bytes.size()), all);
}

void fill(Random& random, std::string& bytes) {
    bytes.resize(random.below(std::size_t{256} << 10));
    for (char& c : bytes) c = anyByte(random);
}

}  // namespace

bool clear(const fs::path& file) {
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    if (error) return false;
    fs::remove_all(file, error);
    return !error;
}

bool write(const fs::path& file, const std::string& bytes) {
    if (!clear(file)) return false;
    std::ofstream(file, std::ios::binary) << bytes;
    return true;
}

std::string mutated(Random& random, std::string bytes) {
    for (std::size_t i = random.below(3); i > 0; --i) {
        switch (random.below(6)) {
            case 0:
                bytes.resize(random.below(bytes.size() + 1));
                break;
            case 1:
                overwrite(random, bytes);
                break;
            case 2:
                insertNumbers(random, bytes);
                break;
            case 3:
                splice(random, bytes);
                break;
            case 4:
                repeat(random, bytes);
                break;
            default:
                if (random.oneIn(4)) fill(random, bytes);
        }
        if (bytes.size() > kMaxSize) bytes.resize(kMaxSize);
    }
    return bytes;
}

std::string mutatedText(Random& random, std::string text) {
    if (text.empty()) return text;
    if (random.oneIn(3)) text.resize(random.below(text.size()));
    for (std::size_t i = random.below(4); i > 0 && !text.empty(); --i)
        text[random.below(text.size())] =
            random.oneIn(2) ? random.pick(std::string("<>&\"'/=${}[]()*?\\")) : anyByte(random);
    return text;
}

void putHostile(Random& random, const fs::path& file, const std::string& bytes, const fs::path& outside) {
    const std::uint64_t kind = random.below(16);
    if (!clear(file)) return;
    std::error_code ignored;
    switch (kind) {
        case 0:
            ::mkfifo(file.c_str(), 0666);
            break;
        case 1:
            // Creating a device requires a privilege.
            if (::mknod(file.c_str(), S_IFCHR | 0666, makedev(1, 5)) != 0)
                fs::create_symlink("/dev/zero", file, ignored);
            break;
        case 2:
            fs::create_directory(file, ignored);
            break;
        case 3:
            fs::create_symlink(file.filename(), file, ignored);
            break;
        case 4:
            fs::create_symlink(outside, file, ignored);
            break;
        case 5: {
            std::string up;
            for (int i = 0; i < 20; ++i) up += "../";
            fs::create_symlink(up + outside.relative_path().string(), file, ignored);
            break;
        }
        case 6:
            write(file, mutated(random, bytes));
            if (::truncate(file.c_str(), off_t{1} << (20 + random.below(20))) != 0) write(file, bytes);
            break;
        default:
            write(file, mutated(random, bytes));
    }
}

void addOddDirectories(Random& random, const fs::path& directory) {
    std::error_code ignored;
    fs::create_directories(directory, ignored);
    fs::path deep = directory / "deep";
    const std::string name(random.oneIn(4) ? 200 : 1 + random.below(20), 'd');
    for (std::size_t i = random.below(15); i > 0; --i) deep /= name;
    fs::create_directories(deep, ignored);
    fs::create_symlink("..", directory / "loop", ignored);
    fs::create_symlink(directory, deep / "top", ignored);
    fs::create_directories(directory / "full", ignored);
    for (std::size_t i = random.oneIn(8) ? 5'000 : random.below(50); i > 0; --i)
        write(directory / "full" / std::to_string(i), "name=value\n");
    for (int i = 0; i < 10; ++i) {
        std::string odd;
        for (std::size_t size = 1 + random.below(30); size > 0; --size) {
            const char c = anyByte(random);
            odd += c == '\0' || c == '/' ? '\n' : c;
        }
        write(directory / ("x" + odd), "name=value\n");
    }
}

ChangingFiles::ChangingFiles(fs::path directory, fs::path outside, std::vector<fs::path> files)
    : directory_(std::move(directory)), outside_(std::move(outside)), files_(std::move(files)) {
    thread_ = std::thread([this] {
        for (unsigned round = 0; !stopped_; ++round) {
            swapDirectory();
            resizeFiles(round);
        }
    });
}

ChangingFiles::~ChangingFiles() {
    stopped_ = true;
    thread_.join();
}

void ChangingFiles::swapDirectory() const {
    std::error_code ignored;
    const fs::path aside = directory_.string() + ".aside";
    fs::rename(directory_, aside, ignored);
    fs::create_symlink(outside_, directory_, ignored);
    std::this_thread::sleep_for(std::chrono::microseconds(50));
    fs::remove(directory_, ignored);
    fs::rename(aside, directory_, ignored);
}

void ChangingFiles::resizeFiles(unsigned round) const {
    for (const fs::path& file : files_) {
        struct stat status {};
        if (::lstat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
        const int open = ::open(file.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (open < 0) continue;
        const off_t size = round % 2 == 0 ? 0 : off_t{1} << 20;
        if (::ftruncate(open, size) != 0) std::perror("ftruncate");
        ::close(open);
    }
}

}  // namespace hostile
