#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace quester::testing {

// Sets (or, with nullopt, unsets) an environment variable for the lifetime of
// a scope and puts the old value back afterwards.
class EnvironmentVariable {
public:
    EnvironmentVariable(std::string name, std::optional<std::string> value) : name(std::move(name)) {
        if (const char* old = std::getenv(this->name.c_str())) previous = old;
        apply(value);
    }
    ~EnvironmentVariable() { apply(previous); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    void apply(const std::optional<std::string>& value) {
        if (value) {
            setenv(name.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name.c_str());
        }
    }

    std::string name;
    std::optional<std::string> previous;
};

}  // namespace quester::testing
