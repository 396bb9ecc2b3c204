#pragma once

#include <string>

#include "colours/ComponentColour.h"
#include "utils/ParameterBlock.h"

class CFileName;

/// \file
/// Colour schemes as session files: a session image whose top block holds what
/// CComponentsColors::Save writes.

/// What a scheme file begins with.
inline constexpr const char* szSchemeIdentifier = "TavarinColourScheme";

/// Writes a scheme, replacing the file. Returns a SessionStatus.
int SaveSchemeFile(CComponentsColors const& scheme, CFileName const& file);

/// Lays a scheme file over `scheme`. Returns a SessionStatus; sessionBodyFailed also when the file
/// holds no scheme or its last colour cannot be read. Colours that were read before a bad one
/// count.
int LoadSchemeFile(CComponentsColors& scheme, CFileName const& file);

/// What SaveSchemeFile would write. Empty when memory runs out.
std::string SchemeImage(CComponentsColors const& scheme);

/// Replaces all colours by those of an image. False, with nothing changed, when not all of it could
/// be read.
bool ReplaceScheme(CComponentsColors& scheme, std::string const& strImage);
