#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "plugin/Take.h"

/// \file
/// A mark beside the file of each take says what became of it, so that whoever opens the capture
/// directory next knows what still waits: also when a plug-in was removed, or a session closed, in
/// the middle of a take. A mark is a plug-in's state with that one take, in `<file>.take`.

/// Writes the mark of a take, in place of an older one. A disk that takes none is passed over: the
/// workstation's session knows of the take as well.
void MarkTake(std::int32_t nKind, CTake const& take);

/// Removes the mark of a take that goes by another name now.
void UnmarkTake(std::string const& strFile);

/// What the marks of a directory say, in the order of the files' names. Without those of other
/// kinds of plug-ins, and of files that have gone.
std::vector<CTake> MarkedTakes(std::int32_t nKind, std::string const& strDirectory);

/// Adds to the takes of a session what happened since it was saved: takes that were handed over,
/// and takes that it does not know and that wait.
void BringUpToDate(std::vector<CTake>& takes, std::vector<CTake> const& marked);
