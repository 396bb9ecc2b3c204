#pragma once

#include <stdexcept>
#include <string>

/// Why a command of `tavarin-scheme` cannot be done, and what the user can do about it.
class CToolFailure : public std::runtime_error {
public:
    CToolFailure(std::string const& strError, std::string strAdvice)
        : std::runtime_error(strError), m_strAdvice(std::move(strAdvice)) {}

    std::string const& Advice() const { return m_strAdvice; }

private:
    std::string m_strAdvice;
};
