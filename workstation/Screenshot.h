#pragma once

#import <AppKit/AppKit.h>

#include <string>

/// Writes what a view on the screen shows as a PNG file. False when that did not work.
bool WriteScreenshot(NSView* view, std::string const& strFile);
