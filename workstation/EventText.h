#pragma once

#include <cstdint>
#include <string>

/// "3.00 s", or "144000 samples" at an unknown rate.
std::string LengthText(std::int64_t lSamples, int nSampleRate);

/// "48000 to 192000 (3.00 s)".
std::string SpanText(double dStart, double dEnd, int nSampleRate);

/// Throws `std::runtime_error` when a file is there already that may not be replaced.
void RequireRoom(std::string const& strFile, bool fForce);
