#pragma once

/// \file
/// What a program with windows says to the platform's AppKit besides what all of them understand.

/// Whether there is a display that windows could be shown on, as far as the environment says.
bool HasDisplay();

/// To be called before the application object is made: draws everything so many times larger. Less
/// than 1 stands for what the display says of itself. A scale that the user has set for this
/// program stays.
void UseScale(float scale);

/// To be called first, before the application object is made: the program is one with windows of
/// its own, and shows no window that only this platform's applications have.
void PrepareApplication();

/// To be called when the application object is there: from now on an exception that nobody catches
/// is printed and stops the process, instead of waiting in a panel for a person.
void StopOnExceptions();
