#include "colours/ComponentColour.h"

#include <algorithm>
#include <iterator>

#include "colours/DeviceRGB.h"
#include "colours/NativeColour.h"
#include "colours/SchemeBlocks.h"
#include "colours/SchemeTypes.h"
#include "utils/ParameterBlock.h"

namespace {

constexpr double kChannelTolerance = 1.0 / 256.0;

constexpr const char* kChannelNames[] = {CComponentColour::szRed, CComponentColour::szGreen,
                                         CComponentColour::szBlue, CComponentColour::szAlpha};

}  // namespace

// Two-sided, because an absolute difference rounds differently and a negated test lets NaN through.
bool WithinCG(double a, double b, double tolerance) {
    return b >= a - tolerance && a + tolerance >= b;
}

CComponentColour::CComponentColour(CComponentCode code, ColourClass cls)
    : m_code(code), m_nClass(cls) {}

CComponentColour::CComponentColour(CComponentCode code, ColourClass cls, const char* name, double r,
                                   double g, double b, double a, CGColorSpace* space)
    : m_rgba{r, g, b, a}, m_code(code), m_nClass(cls), m_name(name == nullptr ? "" : name) {
    MakeColours(space);
}

CComponentColour::~CComponentColour() {
    CGColorRelease(m_cgColor);
    ReleaseColour(m_nsColor);
}

void CComponentColour::MakeColours(CGColorSpace* space) {
    CGColorRelease(m_cgColor);
    m_cgColor = space == nullptr ? nullptr : CGColorCreate(space, m_rgba);
    ReleaseColour(m_nsColor);
    m_nsColor = MakeCalibratedColour(m_rgba);
}

void CComponentColour::UpdateColour(double r, double g, double b, double a) {
    const double rgba[] = {r, g, b, a};
    std::ranges::copy(rgba, m_rgba);
    MakeColours(CDeviceRGB());
}

CComponentColour& CComponentColour::operator=(CComponentColour& other) {
    m_code = other.m_code;
    m_nClass = other.m_nClass;
    m_name = other.m_name;
    UpdateColour(other.m_rgba[0], other.m_rgba[1], other.m_rgba[2], other.m_rgba[3]);
    return *this;
}

bool CComponentColour::operator!=(CComponentColour const& other) const {
    return NotEqual(other);
}

bool CComponentColour::NotEqual(CComponentColour const& other) const {
    return !std::ranges::equal(
        m_rgba, other.m_rgba, [](double a, double b) { return WithinCG(a, b, kChannelTolerance); });
}

void CComponentColour::Save(CParameterBlock* block) const {
    block->AddParameter(szType, kPlainType);
    m_code.Save(block);
    block->AddParameter(szClass, m_nClass);
    for (std::size_t channel = 0; channel < std::size(m_rgba); ++channel) {
        block->AddParameter(kChannelNames[channel], m_rgba[channel]);
    }
    AppendText(*block, szName, m_name);
}

bool CComponentColour::Load(CParameterBlock* block, CGColorSpace* space) {
    bool fComplete = m_code.Load(block);
    block->FindParameter(szClass, &m_nClass, m_nClass);
    for (std::size_t channel = 0; channel < std::size(m_rgba); ++channel) {
        fComplete &= block->FindParameter(kChannelNames[channel], &m_rgba[channel], 0.0);
    }
    fComplete &= block->FindParameter(szName, &m_name, "");
    MakeColours(fComplete ? space : nullptr);
    return fComplete;
}
