#include "host/DirectoryMark.h"

#include <unistd.h>

#include <cstring>

namespace {

constexpr char szDirectoryMark[] = "tvrnlck";
static_assert(sizeof(szDirectoryMark) == sizeof(MarkedDirectory::szMark));

}  // namespace

void MarkDirectory(MarkedDirectory& directory) noexcept {
    directory.nProcess = getpid();
    std::memcpy(directory.szMark, szDirectoryMark, sizeof(szDirectoryMark));
}

MarkedDirectory const* FindMark(CMappedSegment const& directory) noexcept {
    if (directory.Size() < sizeof(MarkedDirectory)) return nullptr;
    const auto* const pMarked = reinterpret_cast<MarkedDirectory const*>(directory.Bytes());
    const bool fMarked =
        std::memcmp(pMarked->szMark, szDirectoryMark, sizeof(szDirectoryMark)) == 0;
    return fMarked ? pMarked : nullptr;
}
