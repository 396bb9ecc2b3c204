#pragma once

#include <string>

/// Gives the header of a closed WAV file of 32-bit floats the form that every reader takes without
/// a word: a format with its (empty) extension, and the number of frames. An RF64 file stays as it
/// is, and so does one that cannot be written.
void WritePlainFloatHeader(std::string const& strFile);
