#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

#include "plugin/PlugInTable.h"
#include "plugin/Take.h"

/// Which plug-in of this process handed a take over last, for each track of the host: two that
/// capture for the same one are told apart. Any thread but the audio thread.
class CTrackClaims {
public:
    enum class Claim {
        Free,      ///< nobody else's
        Replaces,  ///< another plug-in has its take there
        Twin,      ///< another one has just captured the same stretch for it, as both halves of a
                   ///< mono plug-in on a stereo track do
    };

    /// That of the process.
    static CTrackClaims& Shared();

    /// A plug-in is about to hand a take over. Of a twin nothing is noted.
    Claim Make(void const* plugIn, PlugInKind kind, std::int32_t nTrack, CTake const& take);

    /// A plug-in goes, and its claims with it.
    void Drop(void const* plugIn);

private:
    struct CHolder {
        void const* plugIn;
        std::int64_t lPosition;
        std::chrono::steady_clock::time_point when;
    };

    std::mutex m_Lock;
    std::map<std::pair<PlugInKind, std::int32_t>, CHolder> m_Holders;
};
