#include "host/XmlText.h"

#include "platform/Utf8.h"

namespace {

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

std::string XmlText(std::string_view text) {
    std::string strResult;
    strResult.reserve(text.size());
    while (!text.empty()) {
        std::size_t const nLength = Utf8CharacterLength(text);
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
