#pragma once

#include <cstdint>

/// \file
/// Decimal formatting, comparison, bounded copying and token substitution of zero-terminated
/// strings, and a family for length-prefixed strings: one length byte (0 to 255) followed by that
/// many characters, no terminator. Positions into a length-prefixed string count from 1.
///
/// Case folding touches the letters A to Z only, whatever the locale: the byte is folded unsigned
/// and the results are compared as signed bytes, so bytes of 128 and above sort below all plain
/// characters.
///
/// Pointers must not be null unless a function says so. Nothing here keeps state, so every function
/// may run on any thread.

/// Writes the decimal text of `value`; `base` is ignored. `buffer` holds at least 21 bytes.
void ltoa(std::int64_t value, char* buffer, int base);

/// Writes the decimal text of `value`; `base` is ignored. `buffer` holds at least 12 bytes.
void itoa(std::int32_t value, char* buffer, int base);

/// Compares two texts without regard to case. Returns -1, 0 or 1.
std::int32_t strcmpi(const char* first, const char* second);

/// Copies at most `size` - 1 characters and always terminates `destination`. A `size` below 2
/// writes the terminator alone, so `destination` has room for one byte at least.
void lstrcpyn(char* destination, const char* source, std::int32_t size);

/// Cuts a text that is longer than `n` characters down to `n` - 1 of them, one fewer than `n`;
/// for an `n` below 1 nothing remains. Returns the length before.
std::int32_t StringTruncate(char* text, std::int32_t n);

/// Replaces every occurrence of `token` in `text`, always searching from the start again.
///
/// `text` comes from `new char[]`; it may be freed and replaced by a longer buffer, so the caller
/// goes on with (and owns) the returned one. A `replacement` that contains the `token` would never
/// come to an end and stops the process.
char* substituteToken(const char* token, char* text, const char* replacement);

/// Copies a length-prefixed string into a zero-terminated one, which holds length + 1 bytes.
void PtoCcpy(char* destination, unsigned char const* source);

/// Copies a zero-terminated text into a length-prefixed string, 254 characters at most.
/// Returns the length written.
std::int32_t CtoPcpy(unsigned char* destination, const char* source);

/// Byte comparison of a length-prefixed string, up to its first zero byte if it has one, with a
/// text. Returns what the C library's comparison gives, narrowed to 16 bits with its sign.
std::int32_t PtoCcmp(unsigned char const* string, const char* text);

/// Copies a length-prefixed string whole.
void pstrcpy(unsigned char* destination, unsigned char const* source);

/// Copies the first `n` characters (fewer when the source is shorter). A negative `n` counts as 0.
void pstrcpyn(unsigned char* destination, unsigned char const* source, std::int32_t n);

/// Appends as many of the source's characters as fit into 255. Returns how many that were.
std::int32_t pstrcat(unsigned char* destination, unsigned char const* source);

/// Compares two length-prefixed strings by unsigned bytes, then by length. Returns -1, 0 or 1.
std::int32_t pstrcmp(unsigned char const* first, unsigned char const* second);

/// The same without regard to case; the folded characters are compared as signed bytes.
std::int32_t pstrcmpi(unsigned char const* first, unsigned char const* second);

/// Whether `string` ends with `ending`, without regard to case. An empty ending always matches.
bool PStringEndCompare(unsigned char const* string, unsigned char const* ending);

/// Sets the length byte to `n` when the string is longer; a negative `n` counts as 0.
/// Returns the length before.
std::int32_t PStringTruncate(unsigned char* string, std::int32_t n);

/// Searches `string` for `part`, case-sensitively.
///
/// Two limits are part of the contract: strings of equal length never contain each other, and a
/// part that stands only at the very end is not found. `*position` (which may be null) receives the
/// 1-based start of the first match, or 0; it stays untouched when `part` is the longer string.
bool PStringContains(unsigned char const* string, unsigned char const* part,
                     std::int32_t* position);
