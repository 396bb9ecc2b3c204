#include "host/Utf8.h"

#include <cstddef>
#include <cstdint>

namespace {

/// The length of the well-formed character at the front of a text that is not empty; 0 for none.
std::size_t CharacterLength(std::string_view text) {
    auto byte = [&](std::size_t n) -> unsigned { return static_cast<unsigned char>(text[n]); };
    unsigned const nFirst = byte(0);
    if (nFirst < 0x80) return 1;
    std::size_t const nLength = nFirst >= 0xF0 ? 4 : nFirst >= 0xE0 ? 3 : 2;
    if (nFirst < 0xC2 || nFirst > 0xF4 || text.size() < nLength) return 0;
    std::uint32_t nCode = nFirst & (0x7Fu >> nLength);
    for (std::size_t n = 1; n < nLength; ++n) {
        if ((byte(n) & 0xC0) != 0x80) return 0;
        nCode = nCode << 6 | (byte(n) & 0x3F);
    }
    bool const fOverlong = (nLength == 3 && nCode < 0x800) || (nLength == 4 && nCode < 0x10000);
    bool const fSurrogate = nCode >= 0xD800 && nCode <= 0xDFFF;
    return fOverlong || fSurrogate || nCode > 0x10FFFF ? 0 : nLength;
}

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

std::string_view EscapedAscii(char const& ch) {
    switch (ch) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&apos;";
        default:
            break;
    }
    bool const fControl = static_cast<unsigned char>(ch) < 0x20 || ch == 0x7F;
    return fControl ? kReplacement : std::string_view(&ch, 1);
}

}  // namespace

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        std::size_t const nLength = CharacterLength(text);
        if (nLength == 0) return false;
        text.remove_prefix(nLength);
    }
    return true;
}

std::string XmlText(std::string_view text) {
    std::string strResult;
    strResult.reserve(text.size());
    while (!text.empty()) {
        std::size_t const nLength = CharacterLength(text);
        bool const fNonCharacter =
            text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF");
        if (nLength == 0 || fNonCharacter)
            strResult += kReplacement;
        else if (nLength == 1)
            strResult += EscapedAscii(text.front());
        else
            strResult += text.substr(0, nLength);
        text.remove_prefix(nLength == 0 ? 1 : nLength);
    }
    return strResult;
}
