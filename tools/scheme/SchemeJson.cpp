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

json ChannelsToJson(CComponentColour const& holder, CComponentColour const& colour) {
    json channels = json::array();
    for (double channel : colour.m_rgba) channels.push_back(RequireNumber(channel, holder));
    return channels;
}

json StopsToJson(CGradientFill const& gradient) {
    json stops = json::array();
    for (CGradComponent const* stop : gradient.m_components) {
        stops.push_back({{szPosition, RequireNumber(stop->m_fPosition, gradient)},
                         {szColour, ChannelsToJson(gradient, *stop)}});
    }
    return stops;
}

json ColourToJson(CComponentColour const& colour) {
    json row = json::object();
    const std::string component(ComponentCodeName(colour.m_code));
    if (!component.empty()) row[szComponent] = component;
    row[szCode] = {colour.m_code.m_nModule, colour.m_code.m_nCompID};
    row[szName] = colour.m_name;
    row[szClass] = colour.m_nClass;
    if (auto const* gradient = dynamic_cast<CGradientFill const*>(&colour)) {
        row[szStops] = StopsToJson(*gradient);
    } else {
        row[szColour] = ChannelsToJson(colour, colour);
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

    std::array<double, 4> Channels(json const& value) const {
        if (!value.is_array() || value.size() != 4) {
            Fail("needs red, green, blue and alpha in '" + std::string(szColour) + "'");
        }
        std::array<double, 4> channels;
        for (std::size_t index = 0; index < channels.size(); ++index) {
            channels[index] = Number(value[index], szColour);
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

std::string SchemeToJson(CComponentsColors const& scheme) {
    json colours = json::array();
    for (auto const& entry : scheme.Entries()) colours.push_back(ColourToJson(*entry.pColour));
    const json document{{szFormat, szSchemeIdentifier}, {szColours, std::move(colours)}};
    // Names are bytes: what is not UTF-8 in them must not keep the rest from being written.
    return document.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
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
