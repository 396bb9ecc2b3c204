#import "platform/WindowIcon.h"

#import <GNUstepGUI/GSDisplayServer.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <vector>

// As _NET_WM_ICON of the Extended Window Manager Hints has it: width, height, and rows of pixels
// whose lowest 32 bits are alpha, red, green and blue.
void SetWindowIcon(NSWindow* window, NSBitmapImageRep* picture) {
    const NSInteger nWidth = [picture pixelsWide];
    const NSInteger nHeight = [picture pixelsHigh];
    std::vector<unsigned long> values{static_cast<unsigned long>(nWidth),
                                      static_cast<unsigned long>(nHeight)};
    for (NSInteger y = 0; y < nHeight; ++y) {
        for (NSInteger x = 0; x < nWidth; ++x) {
            NSUInteger rgba[4] = {0, 0, 0, 255};
            [picture getPixel:rgba atX:x y:y];
            values.push_back(rgba[3] << 24 | rgba[0] << 16 | rgba[1] << 8 | rgba[2]);
        }
    }
    auto* const display = static_cast<Display*>([GSCurrentServer() serverDevice]);
    const auto own =
        reinterpret_cast<Window>([GSCurrentServer() windowDevice:[window windowNumber]]);
    XChangeProperty(display, own, XInternAtom(display, "_NET_WM_ICON", False), XA_CARDINAL, 32,
                    PropModeReplace, reinterpret_cast<unsigned char*>(values.data()),
                    static_cast<int>(values.size()));
}
