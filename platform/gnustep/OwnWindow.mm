#import "platform/OwnWindow.h"

#import <GNUstepGUI/GSDisplayServer.h>
#include <X11/Xlib.h>

#include <string>

namespace {

struct CWanted {
    Window window;
    Atom closing;
};

// Xlib holds its lock meanwhile.
int IsClosing(Display* /*display*/, XEvent* event, XPointer data) {
    auto const& wanted = *reinterpret_cast<CWanted const*>(data);
    return event->type == ClientMessage && event->xclient.window == wanted.window &&
           static_cast<Atom>(event->xclient.data.l[0]) == wanted.closing;
}

struct CCloseWatch {
    Display* display;
    CWanted wanted;

    bool operator()() {
        XEvent event;
        return XCheckIfEvent(display, &event, IsClosing, reinterpret_cast<XPointer>(&wanted)) != 0;
    }
};

}  // namespace

// Whoever owns a selection loses it with its window: a place whose program was killed is free
// again.
std::uint32_t TakePlace(NSWindow* window, std::uint32_t nWanted, std::uint32_t nPlaces) {
    auto* const display = static_cast<Display*>([GSCurrentServer() serverDevice]);
    const auto own =
        reinterpret_cast<Window>([GSCurrentServer() windowDevice:[window windowNumber]]);
    for (std::uint32_t nStep = 0; nStep < nPlaces; ++nStep) {
        const std::uint32_t nPlace = (nWanted + nStep) % nPlaces;
        const std::string strName = "TAVARIN_PLACE_" + std::to_string(nPlace);
        const Atom place = XInternAtom(display, strName.c_str(), False);
        if (XGetSelectionOwner(display, place) != None) continue;
        XSetSelectionOwner(display, place, own, CurrentTime);
        return nPlace;
    }
    return nWanted % nPlaces;
}

std::function<bool()> CloseWatch(NSWindow* window) {
    auto* const display = static_cast<Display*>([GSCurrentServer() serverDevice]);
    const auto own =
        reinterpret_cast<Window>([GSCurrentServer() windowDevice:[window windowNumber]]);
    return CCloseWatch{display, {own, XInternAtom(display, "WM_DELETE_WINDOW", False)}};
}
