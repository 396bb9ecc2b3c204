#pragma once

#include <string>
#include <string_view>

/// A text made fit for XML content and attribute values: markup is escaped, control characters and
/// bytes that are not UTF-8 become U+FFFD.
std::string XmlText(std::string_view text);
