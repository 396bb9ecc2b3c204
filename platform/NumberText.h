#pragma once

#include <cstdint>

/// Numbers read from text the way the C library reads them in its "C" locale, whatever locale the
/// workstation has set. Leading white space and one sign are accepted; reading ends at the first
/// character that does not belong to the number. Safe on any thread.

/// The leading decimal integer of `text`; 0 when there is none, the nearest 64-bit limit when it
/// does not fit.
std::int64_t ParseInteger(const char* text) noexcept;

/// The leading floating-point number of `text`; 0.0 when there is none.
double ParseDouble(const char* text) noexcept;
