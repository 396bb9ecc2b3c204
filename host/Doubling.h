#pragma once

#include "host/Sound.h"

/// How the double differs from what it doubles.
struct CDoublingSettings {
    double m_dDelaySeconds = 0.025;  ///< shortest distance behind the original
    double m_dDetuneCents = 8.0;     ///< pitch difference, positive is higher; may be 0
    double m_dSweepSeconds = 0.020;  ///< how far the delay wanders while it changes the pitch
};

/// A second performance made of the first: delayed and slightly detuned.
///
/// Two readers move through a delay line a little faster (or slower) than the sound comes in and
/// are faded into each other whenever one of them reaches the end of its sweep. All channels are
/// treated alike, so a stereo image stays. The result has the input's channels and rate and is
/// longer by the longest delay, so that the end is not cut; an empty input gives an empty result.
/// Works block by block.
void MakeDouble(CSound& input, CDoublingSettings const& settings, CSoundSink const& sink,
                CCheckpoint const& checkpoint = {});
