#pragma once

#include <string_view>

#include "link/FixedScripts.h"

/// What the composed scripts share, and the time-out that all of them use.

/// Opening line of a command that lets the host prepare the document.
inline constexpr FixedScript szOpenDocumentTrue{"if SelectAudioSuiteDocument(true) then\n",
                                                "if SelectScriptDocument(true) then\n"};
/// Opening line of every other command.
inline constexpr FixedScript szOpenDocument{"if SelectAudioSuiteDocument() then\n",
                                            "if SelectScriptDocument() then\n"};
/// Closes the opening line.
inline constexpr std::string_view szCloseDocument = "end\n";

/// Said when a host runs and no session is selected in it, or the selected one has no tracks.
inline constexpr char strNoSessionSelected[] = "No Tavarin Pro session has been selected.";

/// Status of an exchange that worked.
inline constexpr int kExchangeDone = 0;
/// Time-out of every command but the track list: none.
inline constexpr int kWaitForEver = -1;
