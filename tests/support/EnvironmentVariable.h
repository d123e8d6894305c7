#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace zavtest {

// Sets or removes an environment variable and restores it at the end.
class EnvironmentVariable {
  public:
    EnvironmentVariable(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* const before = std::getenv(name)) before_ = before;
        set(value);
    }
    ~EnvironmentVariable() { set(before_); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

  private:
    void set(const std::optional<std::string>& value) const {
        if (value) {
            setenv(name_, value->c_str(), 1);
        } else {
            unsetenv(name_);
        }
    }

    const char* name_;
    std::optional<std::string> before_;
};

}  // namespace zavtest
