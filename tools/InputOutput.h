#pragma once

#include <string>

#include "tools/NewFile.h"

/// The bytes of a file, or of standard input for "-". Throws CToolFailure when there are none to
/// be had.
std::string ReadInput(std::string const& path);

/// Writes a file (see `CNewFile`), or to standard output for "-". A pipe or a device is written to
/// where it is. Throws CToolFailure.
void WriteOutput(std::string const& path, std::string const& bytes, Replace replace);

/// Throws CToolFailure unless everything that was printed has been written.
void RequireOutput();

/// The text in double quotes, safe for a terminal: control characters and bytes that are no UTF-8
/// stand as \xNN.
std::string Quoted(std::string const& text);
