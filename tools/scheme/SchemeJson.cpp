#include "tools/scheme/SchemeJson.h"

#include <array>
#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>
#include <vector>

#include "colours/ComponentCodeTable.h"
#include "colours/DeviceRGB.h"
#include "colours/SchemeFile.h"
#include "tools/ToolFailure.h"
#include "tools/scheme/SchemeText.h"

namespace {

using json = nlohmann::ordered_json;

constexpr const char* szFormat = "format";
constexpr const char* szColours = "colours";
constexpr const char* szComponent = "component";
constexpr const char* szCode = "code";
constexpr const char* szName = "name";
constexpr const char* szClass = "class";
constexpr const char* szColour = "colour";
constexpr const char* szStops = "stops";
constexpr const char* szPosition = "position";

double RequireNumber(double value, CComponentColour const& colour) {
    if (std::isfinite(value)) return value;
    throw CToolFailure(exitTrouble,
                       "the colour '" + colour.m_name + "' holds a value that is no number",
                       "Replace it in the program that made the scheme.");
}

constexpr double kHexSteps = 255;
constexpr char szHexDigits[] = "0123456789abcdef";

// "#rrggbb", with two more digits where it is not opaque; empty for a colour that this would not
// give back exactly.
std::string ExactHex(CComponentColour const& colour) {
    std::string hex = "#";
    for (const double channel : colour.m_rgba) {
        const double step = std::round(channel * kHexSteps);
        if (!(step >= 0 && step <= kHexSteps) || step / kHexSteps != channel) return "";
        const auto digits = static_cast<unsigned>(step);
        hex += {szHexDigits[digits / 16], szHexDigits[digits % 16]};
    }
    const bool fOpaque = hex.ends_with("ff");
    return fOpaque ? hex.substr(0, 7) : hex;
}

json ChannelsToJson(CComponentColour const& holder, CComponentColour const& colour, Channels how) {
    if (how == Channels::Rounded) {
        Rgba rgba;
        for (std::size_t index = 0; index < rgba.size(); ++index) {
            rgba[index] = RequireNumber(colour.m_rgba[index], holder);
        }
        return ExactHexText(rgba);
    }
    if (const std::string hex = ExactHex(colour); !hex.empty()) return hex;
    json channels = json::array();
    for (double channel : colour.m_rgba) channels.push_back(RequireNumber(channel, holder));
    return channels;
}

json StopsToJson(CGradientFill const& gradient, Channels how) {
    json stops = json::array();
    for (CGradComponent const* stop : gradient.m_components) {
        stops.push_back({{szPosition, RequireNumber(stop->m_fPosition, gradient)},
                         {szColour, ChannelsToJson(gradient, *stop, how)}});
    }
    return stops;
}

json ColourToJson(CComponentColour const& colour, Channels how) {
    json row = json::object();
    const std::string component(ComponentCodeName(colour.m_code));
    if (!component.empty()) row[szComponent] = component;
    row[szCode] = {colour.m_code.m_nModule, colour.m_code.m_nCompID};
    row[szName] = colour.m_name;
    row[szClass] = colour.m_nClass;
    if (auto const* gradient = dynamic_cast<CGradientFill const*>(&colour)) {
        row[szStops] = StopsToJson(*gradient, how);
    } else {
        row[szColour] = ChannelsToJson(colour, colour, how);
    }
    return row;
}

// A place in the text, for messages: "colour 3".
class CRow {
public:
    CRow(json const& value, std::size_t nIndex) : m_value(value), m_nIndex(nIndex) {
        if (!value.is_object()) Fail("is not an object");
    }

    [[noreturn]] void Fail(std::string const& what) const {
        throw CToolFailure(
            exitTrouble,
            "colour " + std::to_string(m_nIndex + 1) + " in '" + szColours + "' " + what,
            "Compare it with the output of 'tavarin-scheme export designer'.");
    }

    bool Has(const char* key) const { return m_value.contains(key); }

    json const& At(const char* key) const {
        if (!Has(key)) Fail("has no '" + std::string(key) + "'");
        return m_value.at(key);
    }

    std::int32_t Integer(json const& value, const char* key) const {
        // Beyond 64 bits the parser makes floating-point numbers.
        const bool fFits = value.is_number_unsigned()
                               ? std::in_range<std::int32_t>(value.get<std::uint64_t>())
                               : value.is_number_integer() &&
                                     std::in_range<std::int32_t>(value.get<std::int64_t>());
        if (!fFits) Fail("needs a whole number of 32 bits in '" + std::string(key) + "'");
        return value.get<std::int32_t>();
    }

    double Number(json const& value, const char* key) const {
        if (!value.is_number() || !std::isfinite(value.get<double>())) {
            Fail("needs a number in '" + std::string(key) + "'");
        }
        return value.get<double>();
    }

    // "#rrggbb" or "#rrggbbaa".
    std::array<double, 4> HexChannels(std::string const& hex) const {
        const bool fDigits =
            hex.starts_with('#') && (hex.size() == 7 || hex.size() == 9) &&
            hex.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
        if (!fDigits) Fail("needs #rrggbb or #rrggbbaa in '" + std::string(szColour) + "'");
        std::array<double, 4> channels{0, 0, 0, 1};
        for (std::size_t index = 0; 2 * index + 2 < hex.size(); ++index) {
            channels[index] = std::stoi(hex.substr(2 * index + 1, 2), nullptr, 16) / kHexSteps;
        }
        return channels;
    }

    std::array<double, 4> Channels(json const& value) const {
        if (value.is_string()) return HexChannels(value.get<std::string>());
        if (!value.is_array() || value.size() != 4) {
            Fail("needs red, green, blue and alpha in '" + std::string(szColour) + "'");
        }
        std::array<double, 4> channels;
        for (std::size_t index = 0; index < channels.size(); ++index) {
            channels[index] = Number(value[index], szColour);
            if (channels[index] < 0 || channels[index] > 1) {
                Fail("needs numbers from 0 to 1 in '" + std::string(szColour) +
                     "'; write 0 to 255 as \"#rrggbb\"");
            }
        }
        return channels;
    }

    std::string Text(const char* key) const {
        if (!At(key).is_string()) Fail("needs a text in '" + std::string(key) + "'");
        return At(key).get<std::string>();
    }

private:
    json const& m_value;
    std::size_t m_nIndex;
};

CComponentCode CodeFromJson(CRow const& row) {
    CNamedComponentCode const* known = nullptr;
    if (row.Has(szComponent)) {
        known = FindComponentCode(row.Text(szComponent));
        if (known == nullptr) row.Fail("names a component that does not exist");
        if (!row.Has(szCode)) return known->code;
    }
    json const& pair = row.At(szCode);
    if (!pair.is_array() || pair.size() != 2) row.Fail("needs module and id in 'code'");
    const CComponentCode code(row.Integer(pair[0], szCode), row.Integer(pair[1], szCode));
    if (known != nullptr && !(known->code == code)) {
        row.Fail("has a 'code' that is not that of its 'component'");
    }
    return code;
}

void AddStops(CRow const& row, json const& stops, CGradientFill& gradient, CGColorSpaceRef space) {
    if (!stops.is_array()) row.Fail("needs a list in 'stops'");
    for (json const& stop : stops) {
        if (!stop.is_object() || !stop.contains(szPosition) || !stop.contains(szColour)) {
            row.Fail("needs 'position' and 'colour' in each of its 'stops'");
        }
        const auto rgba = row.Channels(stop.at(szColour));
        const std::size_t nBefore = gradient.m_components.size();
        gradient.AddColor(row.Number(stop.at(szPosition), szPosition), rgba[0], rgba[1], rgba[2],
                          rgba[3], space, 1.0);
        if (gradient.m_components.size() == nBefore) {
            row.Fail("has two of its 'stops' at one position");
        }
    }
    gradient.Create(space);
}

std::unique_ptr<CComponentColour> MakeColour(CRow const& row, CGColorSpaceRef space) {
    const CComponentCode code = CodeFromJson(row);
    const ColourClass cls = row.Has(szClass) ? row.Integer(row.At(szClass), szClass) : 0;
    if (row.Has(szColour) == row.Has(szStops)) row.Fail("needs either 'colour' or 'stops'");
    if (row.Has(szStops)) {
        auto gradient = std::make_unique<CGradientFill>(code, cls);
        AddStops(row, row.At(szStops), *gradient, space);
        return gradient;
    }
    const auto rgba = row.Channels(row.At(szColour));
    return std::make_unique<CComponentColour>(code, cls, nullptr, rgba[0], rgba[1], rgba[2],
                                              rgba[3], space);
}

std::unique_ptr<CComponentColour> ColourFromJson(CRow const& row, CGColorSpaceRef space) {
    auto colour = MakeColour(row, space);
    colour->m_name = row.Text(szName);
    return colour;
}

json ParseScheme(std::string const& text) {
    json document = json::parse(text, nullptr, false);
    if (document.is_discarded()) {
        throw CToolFailure(exitTrouble, "the text is not JSON",
                           "Look for a missing comma, bracket or quotation mark.");
    }
    const bool fScheme = document.is_object() && document.contains(szFormat) &&
                         document.at(szFormat) == szSchemeIdentifier &&
                         document.contains(szColours) && document.at(szColours).is_array();
    if (!fScheme) {
        throw CToolFailure(exitTrouble, "the JSON text is no colour scheme",
                           "It needs \"format\": \"" + std::string(szSchemeIdentifier) +
                               "\" and a list \"colours\".");
    }
    return document;
}

}  // namespace

std::string SchemeToJson(CComponentsColors const& scheme, Channels channels) {
    // A line for each colour, to be found, compared and copied as one.
    std::string text = "{\"" + std::string(szFormat) + "\": " + json(szSchemeIdentifier).dump() +
                       ",\n \"" + szColours + "\": [";
    const char* szBetween = "\n  ";
    for (auto const& entry : scheme.Entries()) {
        // Names are bytes: what is not UTF-8 in them must not keep the rest from being written.
        text += szBetween + ColourToJson(*entry.pColour, channels)
                                .dump(-1, ' ', false, json::error_handler_t::replace);
        szBetween = ",\n  ";
    }
    return text + "\n ]}\n";
}

void SchemeFromJson(std::string const& text, CComponentsColors& scheme) {
    const json document = ParseScheme(text);
    const CDeviceRGB space;
    std::vector<std::unique_ptr<CComponentColour>> colours;
    std::set<long long> codes;
    for (json const& value : document.at(szColours)) {
        const CRow row(value, colours.size());
        colours.push_back(ColourFromJson(row, space));
        if (!codes.insert(colours.back()->m_code.Packed()).second) {
            row.Fail("has a code that stands further up already");
        }
    }
    for (auto& colour : colours) scheme.Add(colour.release());
}
