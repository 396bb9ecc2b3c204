#include "colours/ComponentColour.h"
#include "colours/SchemeBlocks.h"
#include "utils/ParameterBlock.h"

namespace {

constexpr const char* szPosition = "Position";
constexpr const char* szColor = "Color";

}  // namespace

CGradComponent::CGradComponent(float position, CComponentCode code)
    : CComponentColour(code, 0), m_fPosition(position) {}

CGradComponent::CGradComponent(double position, double r, double g, double b, double a,
                               CGColorSpace* space)
    : CComponentColour(CComponentCode(), 0, "", r, g, b, a, space),
      m_fPosition(static_cast<float>(position)) {}

CGradComponent& CGradComponent::operator=(CGradComponent& other) {
    m_fPosition = other.m_fPosition;
    CComponentColour::operator=(other);
    return *this;
}

bool CGradComponent::operator!=(CGradComponent const& other) const {
    return m_fPosition != other.m_fPosition || NotEqual(other);
}

void CGradComponent::Save(CParameterBlock* block) const {
    block->AddParameter(szPosition, m_fPosition);
    CComponentColour::Save(&AppendBlock(*block, szColor));
}

bool CGradComponent::Load(CParameterBlock* block, CGColorSpace* space) {
    CParameterBlock* color = nullptr;
    const bool fPosition = block->FindParameter(szPosition, &m_fPosition, 0.0f);
    const bool fColor = block->FindParameter(szColor, &color);
    return fPosition && fColor && CComponentColour::Load(color, space);
}
