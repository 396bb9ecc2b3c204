#pragma once

#include <cstdint>
#include <string>

#include "plugin/CaptureRing.h"

/// A take on disk.
struct CTake {
    std::string strFile;         ///< full path of a WAV file
    std::int64_t lPosition = 0;  ///< of its first sample on the timeline, in samples
    std::int64_t lFrames = 0;    ///< its length
    TakeEnd end = TakeEnd::Stopped;
    std::int32_t nTrack = -1;  ///< the track of the host that has it; -1: none yet
    bool fHandled = false;     ///< whether it was handed over, or refused for good
    bool fReplaces = false;    ///< the host's track has a take of another plug-in of this process
    bool fMayBeThere = false;  ///< the host may have it already, under an earlier name

    bool operator==(CTake const&) const = default;
};

/// A guide that the host has, for dubs to be aligned with.
struct CGuide {
    CTake take;
    std::int64_t lAge = -1;  ///< seconds since it was captured; -1: not known
};
