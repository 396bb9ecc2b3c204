#pragma once

#include <string>

#include "colours/ComponentColour.h"

/// Fills a scheme from what the user named: `designer`, `engineer`, a scheme file or a JSON file.
/// Its colours are laid over those that `scheme` has. Throws CToolFailure.
void ReadScheme(std::string const& strSource, CComponentsColors& scheme);

/// Writes a scheme file. One that is there already stays as it is until the new one is whole.
/// Throws CToolFailure.
void WriteSchemeFile(std::string const& strFile, CComponentsColors const& scheme);
