#pragma once

#include <cstdint>

#include "host/Sound.h"

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
std::int64_t FindDubLag(CSound& guide, CSound& dub, CCheckpoint const& checkpoint = {});

/// Makes the dub, shifted to where the guide is, exactly as long as the guide; silence where the
/// dub has nothing. Takes memory for a few bytes of every 256 samples, and for the loudest half
/// minute.
void AlignDub(CSound& guide, CSound& dub, CSoundSink const& sink,
              CCheckpoint const& checkpoint = {});
