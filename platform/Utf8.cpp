#include "platform/Utf8.h"

#include <boost/locale/utf.hpp>

std::size_t Utf8CharacterLength(std::string_view text) {
    const char* pPosition = text.data();
    const auto character =
        boost::locale::utf::utf_traits<char>::decode(pPosition, text.data() + text.size());
    if (!boost::locale::utf::is_valid_codepoint(character)) return 0;
    return static_cast<std::size_t>(pPosition - text.data());
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t nLength = Utf8CharacterLength(text);
        if (nLength == 0) return false;
        text.remove_prefix(nLength);
    }
    return true;
}
