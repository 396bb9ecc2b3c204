#include "tools/scheme/SchemeText.h"

#include <algorithm>
#include <boost/locale/utf.hpp>
#include <charconv>
#include <cmath>
#include <iterator>

#include "colours/ColourRamp.h"
#include "colours/ComponentCodeTable.h"

namespace {

std::string StopText(Rgba const& rgba) {
    std::string text = HexText(rgba);
    if (rgba[3] != 1.0) text += " alpha " + NumberText(rgba[3]);
    return text;
}

bool IsAllowedInXml(char32_t character) {
    if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
    return character != 0xFFFE && character != 0xFFFF;
}

}  // namespace

std::string NumberText(double value) {
    char digits[400];
    const double rounded = std::round(value * 1000.0) / 1000.0;
    const auto end =
        std::to_chars(std::begin(digits), std::end(digits),
                      std::isfinite(rounded) ? rounded : value, std::chars_format::fixed);
    return {digits, end.ptr};
}

std::string HexText(Rgba const& rgba) {
    return ExactHexText({rgba[0], rgba[1], rgba[2], 1.0});
}

std::string ExactHexText(Rgba const& rgba) {
    constexpr const char* digits = "0123456789abcdef";
    Rgba cut = PaintOver({rgba[0], rgba[1], rgba[2], 1.0}, {});
    cut[3] = PaintOver({rgba[3], 0.0, 0.0, 1.0}, {})[0];
    std::string text = "#";
    for (const double channel : cut) {
        const int byte = static_cast<int>(std::lround(channel * 255.0));
        text += digits[byte / 16];
        text += digits[byte % 16];
    }
    return text.ends_with("ff") ? text.substr(0, 7) : text;
}

std::string CodeText(CComponentCode code) {
    const auto name = ComponentCodeName(code);
    if (!name.empty()) return std::string(name);
    return "(" + std::to_string(code.m_nModule) + ", " + std::to_string(code.m_nCompID) + ")";
}

std::string ColourText(CComponentColour const& colour) {
    const CColourRamp ramp(colour);
    if (dynamic_cast<CGradientFill const*>(&colour) == nullptr) {
        return StopText(ramp.Stops().front().rgba);
    }
    std::string text;
    for (CColourRamp::Stop const& stop : ramp.Stops()) {
        if (!text.empty()) text += ", ";
        text += NumberText(stop.dPosition) + " " + StopText(stop.rgba);
    }
    return text.empty() ? "no stops" : text;
}

std::string XmlText(std::string const& text) {
    using Utf8 = boost::locale::utf::utf_traits<char>;
    std::string escaped;
    for (auto position = text.begin(); position != text.end();) {
        const auto start = position;
        const auto character = Utf8::decode(position, text.end());
        const bool fValid =
            boost::locale::utf::is_valid_codepoint(character) && IsAllowedInXml(character);
        switch (fValid ? character : '?') {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                fValid ? escaped.append(start, position) : escaped.append("?");
        }
    }
    return escaped;
}
