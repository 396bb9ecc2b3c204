#pragma once

#import <AppKit/AppKit.h>

#include "colours/ComponentCode.h"

/// The scheme's colour for a component; of a gradient its first stop. May be nil.
NSColor* PanelColour(CComponentCode code);
