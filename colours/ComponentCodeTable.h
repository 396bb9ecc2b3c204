#pragma once

#include <span>
#include <string_view>

#include "colours/ComponentCode.h"

/// A row of the registry.
struct CNamedComponentCode {
    const char* szName;  ///< The constant's name, as in "ccButtonFace".
    CComponentCode code;
};

/// All rows of the registry, aliases included.
std::span<const CNamedComponentCode> ComponentCodeTable();

/// The name of a code, of an alias the name that the palettes use; empty when it has none.
std::string_view ComponentCodeName(CComponentCode code);

/// The row of a name; null when there is none.
CNamedComponentCode const* FindComponentCode(std::string_view name);
