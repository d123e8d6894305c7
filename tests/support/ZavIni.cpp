#include "tests/support/ZavIni.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <utility>

// The names that the linker's option --wrap=fopen uses.
extern "C" std::FILE* zavtestOpen(const char* path, const char* mode) __asm__("__wrap_fopen");
extern "C" std::FILE* zavtestOpenReally(const char* path, const char* mode) __asm__("__real_fopen");

namespace zavtest {

// A list linked through the rules. A lookup allocates nothing, so it works when memory is short.
struct OpenRules {
    static void add(OpenRule& rule) {
        const std::lock_guard guard(lock);
        rule.older_ = std::exchange(youngest, &rule);
    }

    static void remove(OpenRule& rule) {
        const std::lock_guard guard(lock);
        OpenRule** place = &youngest;
        while (*place != &rule) place = &(*place)->older_;
        *place = rule.older_;
    }

    static std::FILE* open(const char* path, const char* mode) {
        const std::lock_guard guard(lock);
        for (OpenRule* rule = youngest; rule != nullptr; rule = rule->older_) {
            if (rule->path_ != path) continue;
            ++rule->count_;
            if (rule->error_ != 0) return refuse(rule->error_);
            return zavtestOpenReally(rule->instead_.c_str(), mode);
        }
        return std::strcmp(path, kZavIni) == 0 ? refuse(ENOENT) : zavtestOpenReally(path, mode);
    }

    static std::FILE* refuse(int error) {
        errno = error;
        return nullptr;
    }

    static inline std::mutex lock;
    static inline OpenRule* youngest = nullptr;
};

OpenRule::OpenRule(std::string path) : path_(std::move(path)), instead_(path_), error_(0) {
    OpenRules::add(*this);
}

OpenRule::OpenRule(std::string path, const std::filesystem::path& instead)
    : path_(std::move(path)), instead_(instead.string()), error_(0) {
    OpenRules::add(*this);
}

OpenRule::OpenRule(std::string path, int error) : path_(std::move(path)), error_(error) {
    OpenRules::add(*this);
}

OpenRule::~OpenRule() {
    OpenRules::remove(*this);
}

}  // namespace zavtest

std::FILE* zavtestOpen(const char* path, const char* mode) {
    return zavtest::OpenRules::open(path, mode);
}
