#pragma once

#include <cstdint>
#include <string>

/// \file
/// The views' preferences, in the platform's own store for the user; its domain is the bundle's
/// identifier. Keys are UTF-8. To be called on the thread of the user interface.

/// The key of the APT view's automatic track switch: "AutoSwitch".
extern std::string strAutoSwitch;

/// The stored value, or `nDefault` when the key is not there; either raised to `nMin` and then
/// lowered to `nMax`. A text counts up to its first character that is no digit; what is no number
/// at all is 0, and a truth value is 0 or 1.
std::int32_t GetInt(std::string const& strKey, std::int32_t nDefault, std::int32_t nMin,
                    std::int32_t nMax);

/// Stores the value as decimal text. When it reaches the disk is the platform's decision, unless
/// WritePreferences is called.
void SaveInt(std::string const& strKey, std::int32_t nValue);

/// Writes to disk what was saved; returns at once when nothing was.
void WritePreferences();
