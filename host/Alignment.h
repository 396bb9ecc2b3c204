#pragma once

#include <cstdint>

#include "host/AudioFile.h"

/// Time alignment of a dub to a guide, by one shift for the whole dub.
///
/// The loudness envelopes of both are compared at every shift up to ten seconds (or the longer of
/// the two, when that is less): the shift with the highest cross-correlation of the envelopes wins,
/// the smaller one when two are equal. A coarse search over envelopes of 256-sample steps is
/// followed by one over 16-sample steps and one over single samples around the best place. The
/// work grows with the length times the shift range of each step, never with the square of the
/// length. Performances that drift against each other are not warped.

/// By how many samples the dub lies behind the guide: sample i of the guide belongs to sample
/// i + result of the dub. 0 when either is empty or silent.
std::int64_t FindDubLag(CAudio const& guide, CAudio const& dub, CCheckpoint const& checkpoint = {});

/// The dub shifted onto the guide: as long as the guide, with the dub's channels and rate. Where
/// the dub has no sound for a place, there is silence; an empty guide gives an empty result.
CAudio AlignDub(CAudio const& guide, CAudio const& dub, CCheckpoint const& checkpoint = {});
