#pragma once

#include <string>

#include "colours/ComponentColour.h"

/// Fills a scheme from what the user named: `designer`, `engineer`, a scheme file or a JSON file.
/// Its colours are laid over those that `scheme` has. Throws CToolFailure.
void ReadScheme(std::string const& strSource, CComponentsColors& scheme);

/// Writes a scheme file. One that is there already stays as it is until the new one is whole.
/// Throws CToolFailure.
void WriteSchemeFile(std::string const& strFile, CComponentsColors const& scheme);

/// Reads a whole file, or standard input for "-". Throws CToolFailure.
std::string ReadText(std::string const& strFile);

/// Writes a whole file, or standard output for "-". Throws CToolFailure.
void WriteText(std::string const& strFile, std::string const& strText);
