#pragma once

#include <string>

/// Replaces a file's contents as one step: writes beside it, flushes to the disk, renames. A reader
/// sees the old contents or the new ones; after a failure the old ones are still there and nothing
/// is left beside them. Permissions and symbolic links are honoured as by `CWholeFile`. Throws
/// `std::system_error` naming the file.
void WriteFileAtomically(std::string const& strPath, std::string const& strContents);
