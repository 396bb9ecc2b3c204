#pragma once

#include <string>

/// \file
/// AppKit in a process that belongs to somebody else, who has a user interface, an event loop and
/// settings of his own. For the one thread that shows windows.

/// Makes the application object, once, without taking the process over: no event loop runs, and the
/// process's locale, its signal handlers and its handling of display errors stay as they are. False
/// with a reason when no window can be shown here.
bool StartHostedApplication(std::string* strReason);

/// Handles what waits for the application's windows, and returns. To be called regularly. Does
/// nothing where the workstation's own event loop serves every window of the process.
void TurnRunLoop();
