#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "colours/ComponentColour.h"
#include "colours/SchemeBlocks.h"
#include "colours/SchemeTypes.h"
#include "utils/ParameterBlock.h"

namespace {

constexpr const char* szGradColor = "GradColor";

// NaN stays NaN.
double CapAtOne(double value) {
    return value > 1.0 ? 1.0 : value;
}

/// The text that "%f" prints in the "C" locale, whatever the locale is.
void AppendFixed(std::string& text, double value) {
    constexpr int decimals = 6;
    char digits[std::numeric_limits<double>::max_exponent10 + decimals + 4];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), value,
                                   std::chars_format::fixed, decimals);
    text.append(digits, end.ptr);
}

}  // namespace

CGradientFill::CGradientFill(CComponentCode code, ColourClass cls) : CComponentColour(code, cls) {}

CGradientFill::CGradientFill(CComponentCode code, ColourClass cls, const char* name)
    : CComponentColour(code, cls) {
    if (name != nullptr) m_name = name;
}

CGradientFill::~CGradientFill() {
    Clear();
}

void CGradientFill::AddColor(double position, double r, double g, double b, double a,
                             CGColorSpace* space, double factor) {
    auto stop =
        std::make_unique<CGradComponent>(position, CapAtOne(r * factor), CapAtOne(g * factor),
                                         CapAtOne(b * factor), CapAtOne(a), space);
    if (m_components.insert(stop.get()).second) stop.release();
}

void CGradientFill::DeleteColor(CGradComponent* stop) {
    const auto found = std::ranges::find(m_components, stop);
    if (found == m_components.end()) return;
    m_components.erase(found);
    delete stop;
}

void CGradientFill::Create(CGColorSpace* space) {
    CGGradientRelease(m_gradient);
    m_gradient = nullptr;

    std::vector<const void*> colors;
    std::vector<CGFloat> locations;
    for (CGradComponent const* stop : m_components) {
        colors.push_back(stop->m_cgColor);
        locations.push_back(stop->m_fPosition);
    }
    using CArray = std::unique_ptr<std::remove_pointer_t<CFArrayRef>, void (*)(CFTypeRef)>;
    const CArray array(CFArrayCreate(kCFAllocatorDefault, colors.data(),
                                     static_cast<CFIndex>(colors.size()), nullptr),
                       CFRelease);
    m_gradient = CGGradientCreateWithColors(space, array.get(), locations.data());
}

void CGradientFill::Clear() {
    CGGradientRelease(m_gradient);
    m_gradient = nullptr;
    for (CGradComponent* stop : m_components) delete stop;
    m_components.clear();
}

CGradientFill& CGradientFill::operator=(CGradientFill& other) {
    if (this == &other) return *this;
    Clear();
    m_name = other.m_name;
    m_code = other.m_code;
    m_nClass = other.m_nClass;
    for (CGradComponent* source : other.m_components) {
        auto stop = std::make_unique<CGradComponent>(0.0f, CComponentCode());
        *stop = *source;
        if (m_components.insert(stop.get()).second) stop.release();
    }
    return *this;
}

bool CGradientFill::operator!=(CComponentColour const& other) const {
    auto const* gradient = dynamic_cast<CGradientFill const*>(&other);
    // A plain colour in place of a gradient is no difference: deliberately so.
    if (gradient == nullptr) return false;
    if (m_components.size() != gradient->m_components.size()) return true;
    return !std::equal(m_components.begin(), m_components.end(), gradient->m_components.begin(),
                       [](auto const* a, auto const* b) { return !(*a != *b); });
}

void CGradientFill::Save(CParameterBlock* block) const {
    block->AddParameter(szType, kGradientType);
    m_code.Save(block);
    block->AddParameter(szClass, m_nClass);
    AppendText(*block, szName, m_name);
    for (CGradComponent const* stop : m_components) stop->Save(&AppendBlock(*block, szGradColor));
}

bool CGradientFill::Load(CParameterBlock* block, CGColorSpace* space) {
    Clear();
    const bool fCode = m_code.Load(block);
    block->FindParameter(szClass, &m_nClass, m_nClass);
    const bool fName = block->FindParameter(szName, &m_name, "");
    bool fLoaded = fCode && fName;

    CParameterBlock* stopBlock = nullptr;
    CParameterBlock::position where{};
    bool fMore = fLoaded && block->FindFirstParameter(szGradColor, &stopBlock, &where);
    while (fMore) {
        auto stop = std::make_unique<CGradComponent>(0.0f, CComponentCode());
        // Only the last stop decides: one that cannot be read does not cost the whole gradient.
        fLoaded = stop->Load(stopBlock, space);
        if (fLoaded && m_components.insert(stop.get()).second) stop.release();
        fMore = block->FindNextParameter(szGradColor, &stopBlock, &where);
    }
    Create(space);
    return fLoaded;
}

void CGradientFill::DumpCode() const {
    std::string text = "\t{\n\t\tCGradientFill *pFill = new CGradientFill(XXXX, \"";
    text.append(m_name.c_str()).append("\", true);\n");
    for (CGradComponent const* stop : m_components) {
        text += "\t\tpFill->AddColor(";
        for (double number : {static_cast<double>(stop->m_fPosition), stop->m_rgba[0],
                              stop->m_rgba[1], stop->m_rgba[2], stop->m_rgba[3]}) {
            AppendFixed(text, number);
            text += ", ";
        }
        text += "refSpace, true);\n";
    }
    text += "\t\tpFill->Create(refSpace);\n\t\tgAppColours.Add(pFill);\n\t}\n";
    std::fputs(text.c_str(), stderr);
}
