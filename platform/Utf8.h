#pragma once

#include <cstddef>
#include <string_view>

/// \file
/// Text in UTF-8, as the Unicode Standard (chapter 3.9) defines it: no overlong forms, no
/// surrogates, nothing above U+10FFFF. Safe on any thread.

/// The length in bytes, 1 to 4, of the character at the front of a text; 0 when there is none that
/// is well-formed.
std::size_t Utf8CharacterLength(std::string_view text);

/// Whether a whole text is well-formed. An empty one is.
bool IsUtf8(std::string_view text);
