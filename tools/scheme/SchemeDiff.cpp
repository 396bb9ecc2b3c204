#include "tools/scheme/SchemeDiff.h"

#include "colours/ColourRamp.h"
#include "tools/scheme/SchemeText.h"

namespace {

using Entry = CComponentsColors::Entry;

bool IsGradientColour(CComponentColour const& colour) {
    return dynamic_cast<CGradientFill const*>(&colour) != nullptr;
}

std::string DescribeChange(CComponentColour const& a, CComponentColour const& b) {
    std::string change;
    const auto add = [&change](std::string const& text) {
        change += (change.empty() ? "" : "; ") + text;
    };
    if (!LooksAlike(a, b)) add(ColourText(a) + " -> " + ColourText(b));
    if (a.m_name != b.m_name) add("name \"" + a.m_name + "\" -> \"" + b.m_name + "\"");
    if (a.m_nClass != b.m_nClass) {
        add("class " + std::to_string(a.m_nClass) + " -> " + std::to_string(b.m_nClass));
    }
    return change;
}

std::string DescribeSole(char sign, CComponentColour const& colour) {
    return std::string(1, sign) + " " + CodeText(colour.m_code) + ": " + ColourText(colour);
}

}  // namespace

// Not CComponentColour's own comparison, which takes a gradient and a plain colour for equal.
bool LooksAlike(CComponentColour const& a, CComponentColour const& b) {
    return IsGradientColour(a) == IsGradientColour(b) && CColourRamp(a).IsLike(CColourRamp(b));
}

std::vector<std::string> DiffSchemes(CComponentsColors const& first,
                                     CComponentsColors const& second) {
    std::vector<std::string> lines;
    auto a = first.Entries().begin();
    auto b = second.Entries().begin();
    const auto endA = first.Entries().end();
    const auto endB = second.Entries().end();
    while (a != endA || b != endB) {
        if (b == endB || (a != endA && a->lCode > b->lCode)) {
            lines.push_back(DescribeSole('-', *a++->pColour));
        } else if (a == endA || b->lCode > a->lCode) {
            lines.push_back(DescribeSole('+', *b++->pColour));
        } else {
            const std::string change = DescribeChange(*a->pColour, *b->pColour);
            if (!change.empty())
                lines.push_back("~ " + CodeText(a->pColour->m_code) + ": " + change);
            ++a;
            ++b;
        }
    }
    return lines;
}
