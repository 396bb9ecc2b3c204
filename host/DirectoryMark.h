#pragma once

#include <cstddef>
#include <cstdint>

#include "link/MappedSegment.h"
#include "link/SharedSegments.h"

/// A directory segment as this host makes it. The mark tells the next host that its maker had the
/// lock, and has died if the lock is to be had.
struct MarkedDirectory {
    DirectoryRecord record;
    char szMark[8];
    std::int32_t nProcess;  ///< the maker's
};

/// Puts mark and process behind the record of a directory that this process has made.
void MarkDirectory(MarkedDirectory& directory) noexcept;

/// The mark of a directory; null for one of another maker's.
MarkedDirectory const* FindMark(CMappedSegment const& directory) noexcept;
