#pragma once

#include <optional>
#include <string>

#include "plugin/PlugInTable.h"
#include "plugin/Take.h"

/// \file
/// What is said of a guide, for the user.

/// As in "Guide: 0:09.2 to 0:14.7, two minutes ago".
std::string GuideText(CGuide const& guide, int nSampleRate);

/// Why a take cannot be aligned with the guide: there is none, or the two have no sample of the
/// timeline in common. Empty when it can, and for what is no dub: other plug-ins' takes, and those
/// for another track than 1.
std::string WhyNotAligned(PlugInKind kind, std::int32_t nTrack, std::optional<CTake> const& guide,
                          CTake const& take, int nSampleRate);
