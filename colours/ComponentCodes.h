#pragma once

#include <cstdint>
#include <string>

#include "colours/ComponentCode.h"

/// \file
/// The registry of component codes: one constant per element that is drawn in a colour of its own.

#define TAVARIN_COMPONENT(name, module, id) inline constexpr CComponentCode name{module, id};
#include "colours/ComponentCodeList.inc"
#undef TAVARIN_COMPONENT

/// Name of the cursor over a control point.
inline const std::string strControlPointCursor = "GuideEdgeCursor";

/// Name of the cursor over the play position.
inline const std::string strPlayPositionCursor = "PlayPositionCursor";

/// How buttons are drawn: 0 shaded, anything else flat in the colours of the scheme. Read whenever
/// one is drawn; it does not choose the palette.
extern std::int32_t gnAppStyle;
