#pragma once

#include <iosfwd>
#include <string>

#include "tools/BlockDocument.h"

/// The word for a parameter's type, such as "int"; "unknown" for null and for types of no image.
const char* TypeWord(CParameter const* parameter);

/// A value as a person reads it: quoted texts, numbers as short as they come back exactly. Empty
/// for a block.
std::string ValueText(CParameter const& parameter);

/// Prints a block as a tree, one parameter a line: type, name, value.
void WriteTree(std::ostream& out, CBlockDocument const& document);

/// Prints what a block holds, as it stands in such a tree.
void WriteEntries(std::ostream& out, CParameterBlock const& block);
