#include "tools/scheme/SchemePicture.h"

#include <algorithm>
#include <map>
#include <vector>

#include "colours/ColourRamp.h"
#include "colours/ComponentCodes.h"
#include "tools/scheme/SchemeDiff.h"
#include "tools/scheme/SchemeText.h"

namespace {

constexpr int kColumns = 4;
constexpr int kColumnWidth = 385;
constexpr int kRowHeight = 48;
constexpr int kMargin = 24;
constexpr int kSwatchWidth = 62;
constexpr int kSwatchHeight = 40;
constexpr std::size_t kMostStopsTold = 3;
constexpr int kTitleHeight = 64;
constexpr int kHeadingHeight = 44;
constexpr int kWidth = 2 * kMargin + kColumns * kColumnWidth;

using Colours = std::vector<CComponentColour const*>;

std::map<ColourClass, Colours> GroupByClass(CComponentsColors const& scheme) {
    std::map<ColourClass, Colours> groups;
    auto const& entries = scheme.Entries();
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        groups[entry->pColour->m_nClass].push_back(entry->pColour.get());
    }
    return groups;
}

std::string ClassName(ColourClass cls) {
    switch (cls) {
        case 1:
            return "Areas";
        case 2:
            return "Audio and tracks";
        case 3:
            return "Point editing";
        case 4:
            return "General and controls";
        case 5:
            return "Track groups";
        default:
            return "Class " + std::to_string(cls);
    }
}

std::string StopColour(Rgba const& rgba, const char* property) {
    const double alpha = PaintOver({rgba[3], 0.0, 0.0, 1.0}, {})[0];
    std::string text = std::string(property) + "-color=\"" + HexText(rgba) + "\"";
    if (alpha != 1.0)
        text += " " + std::string(property) + "-opacity=\"" + NumberText(alpha) + "\"";
    return text;
}

// As ColourText, or only as much of a gradient as there is room for.
std::string ShortText(CComponentColour const& colour) {
    const CColourRamp ramp(colour);
    auto const& stops = ramp.Stops();
    if (stops.size() <= kMostStopsTold) return ColourText(colour);
    return HexText(stops.front().rgba) + " to " + HexText(stops.back().rgba) + ", " +
           std::to_string(stops.size()) + " stops";
}

class CSchemePicture {
public:
    CSchemePicture(CComponentsColors const& scheme, std::string const& title,
                   CComponentsColors const* pBase)
        : m_groups(GroupByClass(scheme)), m_pBase(pBase), m_strTitle(title) {
        m_strPaper = FirstColour(scheme, ccWindowBackground, "#808080");
        m_strInk = FirstColour(scheme, ccLabelText, "#000000");
    }

    std::string Draw() {
        int y = kTitleHeight;
        std::string body;
        for (auto const& [cls, colours] : m_groups) body += DrawGroup(cls, colours, y);
        if (m_pBase) m_strTitle += " (" + std::to_string(m_nChanged) + " changed)";
        return Opening(y + kMargin) + "<defs>\n" + Chequers() + m_strGradients + "</defs>\n" +
               Background() + Text(kMargin, 40, 22, m_strTitle, 1.0) + body + "</svg>\n";
    }

private:
    static std::string FirstColour(CComponentsColors const& scheme, CComponentCode code,
                                   const char* fallback) {
        CComponentColour const* colour = scheme.Find(code);
        return colour == nullptr ? fallback : HexText(CColourRamp(*colour).At(0.0));
    }

    static std::string Opening(int height) {
        const std::string size =
            "width=\"" + std::to_string(kWidth) + "\" height=\"" + std::to_string(height) + "\"";
        return "<svg xmlns=\"http://www.w3.org/2000/svg\" " + size +
               " font-family=\"sans-serif\">\n";
    }

    static std::string Chequers() {
        return "<pattern id=\"chequers\" width=\"8\" height=\"8\" patternUnits=\"userSpaceOnUse\">"
               "<rect width=\"8\" height=\"8\" fill=\"#b0b0b0\"/>"
               "<path d=\"M0 0h4v8h4V4H0z\" fill=\"#686868\"/></pattern>\n";
    }

    std::string Background() const {
        return "<rect width=\"100%\" height=\"100%\" fill=\"" + m_strPaper + "\"/>\n";
    }

    std::string Text(int x, int y, int size, std::string const& text, double opacity) const {
        std::string tag = "<text x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) +
                          "\" font-size=\"" + std::to_string(size) + "\" fill=\"" + m_strInk + "\"";
        if (opacity != 1.0) tag += " opacity=\"" + NumberText(opacity) + "\"";
        return tag + ">" + XmlText(text) + "</text>\n";
    }

    std::string DrawGroup(ColourClass cls, Colours const& colours, int& y) {
        const std::string heading = ClassName(cls) + " (" + std::to_string(colours.size()) + ")";
        std::string group = Text(kMargin, y + 28, 15, heading, 1.0);
        y += kHeadingHeight;
        // Down the columns, so that neighbouring codes stand below each other.
        const int rows = static_cast<int>((colours.size() + kColumns - 1) / kColumns);
        for (std::size_t index = 0; index < colours.size(); ++index) {
            const int column = static_cast<int>(index) / rows;
            const int row = static_cast<int>(index) % rows;
            group +=
                DrawColour(*colours[index], kMargin + column * kColumnWidth, y + row * kRowHeight);
        }
        y += rows * kRowHeight;
        return group;
    }

    std::string DrawColour(CComponentColour const& colour, int x, int y) {
        const int textX = x + kSwatchWidth + 10;
        std::string tags = Swatch(x, y, kSwatchWidth, "url(#chequers)");
        std::string strValue = ShortText(colour);
        CComponentColour const* before = m_pBase ? m_pBase->Find(colour.m_code) : nullptr;
        const bool fChanged = m_pBase && (!before || !LooksAlike(*before, colour));
        if (fChanged) {
            ++m_nChanged;
            strValue = (before ? ShortText(*before) : "new") + " -> " + strValue;
            tags += Mark(x, y);
        }
        // What it was on the left, what it is on the right.
        const int width = fChanged && before ? kSwatchWidth / 2 : kSwatchWidth;
        if (width < kSwatchWidth) tags += Swatch(x, y, width, Fill(*before));
        tags += Swatch(x + kSwatchWidth - width, y, width, Fill(colour));
        return tags + Text(textX, y + 11, 11, colour.m_name, 1.0) +
               Text(textX, y + 24, 10, CodeText(colour.m_code), 0.75) +
               Text(textX, y + 37, 10, strValue, fChanged ? 1.0 : 0.75);
    }

    std::string Mark(int x, int y) const {
        return "<rect class=\"changed\" x=\"" + std::to_string(x - 5) + "\" y=\"" +
               std::to_string(y - 3) + "\" width=\"" + std::to_string(kColumnWidth - 8) +
               "\" height=\"" + std::to_string(kSwatchHeight + 6) +
               "\" rx=\"4\" fill=\"none\" stroke=\"" + m_strInk + "\"/>\n";
    }

    std::string Swatch(int x, int y, int width, std::string const& fill) const {
        return "<rect x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) + "\" width=\"" +
               std::to_string(width) + "\" height=\"" + std::to_string(kSwatchHeight) +
               "\" rx=\"3\" fill=\"" + fill + "\" stroke=\"" + m_strInk +
               "\" stroke-opacity=\"0.4\"/>\n";
    }

    // The name of a gradient that it adds to the picture: a plain colour is one with a single stop.
    std::string Fill(CComponentColour const& colour) {
        const std::string name = "g" + std::to_string(m_nGradients++);
        m_strGradients += "<linearGradient id=\"" + name + "\" x2=\"0\" y2=\"1\">";
        const CColourRamp ramp(colour);
        for (CColourRamp::Stop const& stop : ramp.Stops()) {
            m_strGradients += "<stop offset=\"" + NumberText(stop.dPosition) + "\" " +
                              StopColour(stop.rgba, "stop") + "/>";
        }
        m_strGradients += "</linearGradient>\n";
        return "url(#" + name + ")";
    }

    std::map<ColourClass, Colours> m_groups;
    CComponentsColors const* m_pBase;
    int m_nChanged = 0;
    std::string m_strTitle;
    std::string m_strPaper;
    std::string m_strInk;
    std::string m_strGradients;
    int m_nGradients = 0;
};

}  // namespace

std::string DrawScheme(CComponentsColors const& scheme, std::string const& strTitle,
                       CComponentsColors const* pBase) {
    return CSchemePicture(scheme, strTitle, pBase).Draw();
}
