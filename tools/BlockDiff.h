#pragma once

#include <iosfwd>

#include "tools/BlockDocument.h"

/// Prints how two documents differ, one line a difference: "-" for what only the first has, "+" for
/// what only the second has, "~" for a value that changed. Entries are matched by name and type,
/// the first with the first of the same name and type; floating numbers are the same when their
/// bits are. Returns whether there is no difference.
bool WriteDiff(std::ostream& out, CBlockDocument const& first, CBlockDocument const& second);
