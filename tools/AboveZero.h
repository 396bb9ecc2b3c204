#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// Accepts numbers above 0. CLI11's own check tells the largest one with all of its 309 digits.
inline CLI::Validator AboveZero() {
    return {[](std::string& strText) {
                double dNumber = 0;
                const bool fNumber = CLI::detail::lexical_cast(strText, dNumber);
                return fNumber && dNumber > 0 ? std::string() : strText + " is no number above 0";
            },
            "ABOVE 0"};
}
