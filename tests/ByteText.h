#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Bytes from hexadecimal digits; anything else in the text only separates.
inline std::vector<unsigned char> Bytes(std::string_view text) {
    const std::string_view digits = "0123456789ABCDEF";
    std::vector<unsigned char> bytes;
    int high = -1;
    for (char c : text) {
        const auto digit = digits.find(c);
        if (digit == std::string_view::npos) continue;
        if (high < 0) {
            high = static_cast<int>(digit);
            continue;
        }
        bytes.push_back(static_cast<unsigned char>(high * 16 + static_cast<int>(digit)));
        high = -1;
    }
    return bytes;
}
