#import "platform/EmbeddedWindow.h"

#import <GNUstepGUI/GSDisplayServer.h>
#include <X11/Xlib.h>

namespace {

Display* DisplayOf() {
    return static_cast<Display*>([GSCurrentServer() serverDevice]);
}

Window WindowOf(NSWindow* window) {
    return reinterpret_cast<Window>([GSCurrentServer() windowDevice:[window windowNumber]]);
}

// The other program takes its window away when it likes, and this one with it.
int IgnoreError(Display* /*display*/, XErrorEvent* /*error*/) {
    return 0;
}

}  // namespace

void EmbedWindow(NSWindow* window, std::uint64_t nParent) {
    XSetErrorHandler(IgnoreError);
    Display* const display = DisplayOf();
    const Window own = WindowOf(window);
    // A window manager must never have seen it.
    XSetWindowAttributes attributes{};
    attributes.override_redirect = True;
    XChangeWindowAttributes(display, own, CWOverrideRedirect, &attributes);
    XReparentWindow(display, own, static_cast<Window>(nParent), 0, 0);
    XMapWindow(display, own);
    XSync(display, False);
    [window orderFront:nil];
    FollowParent(window);
}

// What a window manager would say: without it the application takes the place within the other
// window for one on the screen, and opens menus there.
void FollowParent(NSWindow* window) {
    Display* const display = DisplayOf();
    const Window own = WindowOf(window);
    XWindowAttributes attributes{};
    if (XGetWindowAttributes(display, own, &attributes) == 0) return;
    // The application places it as if it stood on the screen.
    if (attributes.x != 0 || attributes.y != 0) XMoveWindow(display, own, 0, 0);
    XEvent event{};
    Window child = 0;
    XTranslateCoordinates(display, own, attributes.root, 0, 0, &event.xconfigure.x,
                          &event.xconfigure.y, &child);
    static int nX = -1, nY = -1;
    if (event.xconfigure.x == nX && event.xconfigure.y == nY) return;
    nX = event.xconfigure.x;
    nY = event.xconfigure.y;
    event.xconfigure.type = ConfigureNotify;
    event.xconfigure.event = own;
    event.xconfigure.window = own;
    event.xconfigure.width = attributes.width;
    event.xconfigure.height = attributes.height;
    XSendEvent(display, own, False, StructureNotifyMask, &event);
}
