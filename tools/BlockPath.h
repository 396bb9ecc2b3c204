#pragma once

#include <string>
#include <vector>

#include "utils/ParameterBlock.h"

/// One step from a block to an entry of it.
struct CBlockStep {
    std::string strName;
    std::size_t nPlace = 0;  ///< which of the entries of that name, from 0
};

/// Reads a path such as `Take/Name`, `Code[1]/Mod` or `/"a/b"`: names with `/` between them, in
/// quotation marks where they hold `/`, `[` or a quotation mark, as `tavarin block diff` writes
/// them. Ends the command with a `CToolFailure` when the text is no path.
std::vector<CBlockStep> ReadBlockPath(std::string const& strPath);

/// The entry at a path; null when there is none. It is the block's.
CParameter* FindEntry(CParameterBlock& root, std::vector<CBlockStep> const& steps);

/// The block that holds, or would hold, the entry at a path; null when there is none.
CParameterBlock* FindBlockOf(CParameterBlock& root, std::vector<CBlockStep> const& steps);
