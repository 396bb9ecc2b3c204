#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

/// Sets or unsets an environment variable until the end of the scope.
class CScopedEnvironment {
public:
    CScopedEnvironment(std::string name, std::optional<std::string> const& value)
        : m_strName(std::move(name)) {
        if (const char* former = std::getenv(m_strName.c_str())) m_strFormer = former;
        Set(value);
    }

    ~CScopedEnvironment() { Set(m_strFormer); }

    CScopedEnvironment(CScopedEnvironment const&) = delete;
    CScopedEnvironment& operator=(CScopedEnvironment const&) = delete;

private:
    void Set(std::optional<std::string> const& value) const {
        if (value) {
            setenv(m_strName.c_str(), value->c_str(), 1);
        } else {
            unsetenv(m_strName.c_str());
        }
    }

    std::string m_strName;
    std::optional<std::string> m_strFormer;
};
