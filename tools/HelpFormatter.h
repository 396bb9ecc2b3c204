#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// The help of a command line, with no line beyond 80 columns where there is a blank to break it
/// at.
class CHelpFormatter : public CLI::Formatter {
public:
    std::string make_help(CLI::App const* pApp, std::string strName,
                          CLI::AppFormatMode mode) const override;
};
