#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "plugin/Take.h"

/// What of a plug-in travels with the workstation's session.
struct CPlugInState {
    std::int32_t nKind = 0;           ///< a PlugInKind, so that no plug-in reads another's
    std::string strCaptureDirectory;  ///< empty: none yet
    std::int32_t nTrack = 0;          ///< the chosen track; of an APT plug-in 0: guide, 1: dub
    std::vector<CTake> takes;         ///< the last takes, the oldest first
    std::string strReturnedFile;      ///< empty: none
    std::int64_t lReturnedPosition = 0;

    bool operator==(CPlugInState const&) const = default;
};

/// The state as a session image. Empty when memory or the image's limits do not allow it.
std::string SaveState(CPlugInState const& state);

/// Reads a session image. False, with a sentence for the user, when it is none, not whole, or of
/// another kind of plug-in; `*state` is unchanged then.
bool LoadState(std::string const& strImage, std::int32_t nKind, CPlugInState* state,
               std::string* strReason);
