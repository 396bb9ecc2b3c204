#pragma once

#include <string>
#include <string_view>

/// Whether a text is well-formed UTF-8 (no overlong forms, no surrogates).
bool IsUtf8(std::string_view text);

/// A text made fit for XML content and attribute values: markup is escaped, control characters and
/// bytes that are not UTF-8 become U+FFFD.
std::string XmlText(std::string_view text);
