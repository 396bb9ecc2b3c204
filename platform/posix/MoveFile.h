#pragma once

#include <system_error>

namespace FileSystem {

/// Moves an item without ever replacing one, onto another file system too (plain files only).
/// On failure the source is still there and nothing of the move is left at the target.
std::error_code MoveFile(const char* from, const char* to);

/// The way of moving on file systems whose rename cannot be told to keep an existing target: a
/// second link, which never replaces, and then the removal of the first. Where there are no hard
/// links either, and for directories, the target is looked for before a plain rename.
std::error_code MoveFileByLink(const char* from, const char* to);

/// The way of moving between file systems: a copy beside the target under a name of its own, which
/// takes the target's name when it is complete.
std::error_code MoveFileByCopy(const char* from, const char* to);

}  // namespace FileSystem
