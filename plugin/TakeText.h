#pragma once

#include <string>

#include "plugin/PlugInTable.h"
#include "plugin/Take.h"

/// How long a take is, as people say it: "2.1 s".
std::string TakeLength(CTake const& take, int nSampleRate);

/// The result of a take that the host has. One that the disk cut short stays an error.
PlugInResult HandedOverResult(CTake const& take);

/// The same as a sentence.
std::string HandedOverText(CTake const& take, int nSampleRate);
