#pragma once

#include <string>

/// The beginning of a text in double quotes, safe for a terminal.
std::string Shorten(std::string const& strText);

/// A duration with its unit.
std::string Milliseconds(double dMilliseconds);
