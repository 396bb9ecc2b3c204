#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/HostFunctions.h"

/// Longest range that a process reads from a track, in samples: close to six minutes at 48 kHz.
inline constexpr std::int64_t kMaxProcessFrames = std::int64_t{1} << 24;

/// The sound of a track in a timeline range: all regions that reach into it, mixed, silence between
/// them. As many channels as the region with the most; one-channel regions are heard on all of
/// them. Throws `CHostFunctionError` when no region reaches into the range or it is too long.
CAudio CollectTrackAudio(CHostContext const& context, CTrack const& track, std::int64_t lStart,
                         std::int64_t lEnd);

/// Carries a process out: collects its inputs, writes the result into the audio directory, puts it
/// as a region on the output track, marks each input's range on its track's first marker track, and
/// registers the process. An APT result starts where the guide starts, a Doubler result where the
/// input starts. A failure leaves the session and the directory as they were.
CSessionId CarryOutProcess(CHostContext& context, CProcess process);
