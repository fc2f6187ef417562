// Environment variables set for one test: what was there before (or its absence) comes back when
// the object goes, in reverse order, so tests that share a process cannot leak PATH or HOME
// into each other. A variable set twice is restored to its value before the first set.
//
// Header-only and free of Quoddle's libraries, like the rest of tests/support.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quod::testing {

class ScopedEnvironment {
  public:
    ScopedEnvironment() = default;
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;
    ~ScopedEnvironment() {
        for (auto saved = saved_.rbegin(); saved != saved_.rend(); ++saved) {
            if (saved->second)
                ::setenv(saved->first.c_str(), saved->second->c_str(), 1);
            else
                ::unsetenv(saved->first.c_str());
        }
    }

    void set(const std::string& name, const std::string& value) {
        remember(name);
        ::setenv(name.c_str(), value.c_str(), 1);
    }
    void unset(const std::string& name) {
        remember(name);
        ::unsetenv(name.c_str());
    }

  private:
    void remember(const std::string& name) {
        const char* value = ::getenv(name.c_str());
        saved_.emplace_back(name, value ? std::optional<std::string>(value) : std::nullopt);
    }

    std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

}  // namespace quod::testing
