#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A stretch of sound on a track of the host's session, in samples of the session.
struct CLinkRegion {
    std::size_t nTrack;  ///< from 0
    std::int64_t lStart;
    std::int64_t lEnd;
};

/// What a document of the host's session holds.
struct CLinkContents {
    int nSampleRate;  ///< in Hz
    std::vector<std::string> tracks;
    std::vector<CLinkRegion> regions;
};

/// A script that prints it. `strSelect` is the call that selects the document.
std::string ContentsScript(std::string const& strSelect);

/// What such a script has printed, in its lines; no value when that is something else.
std::optional<CLinkContents> ReadContents(std::vector<std::string> const& lines);
