#import "platform/OwnWindow.h"

// Programs do not know of each other's windows here.
std::uint32_t TakePlace(NSWindow* /*window*/, std::uint32_t nWanted, std::uint32_t nPlaces) {
    return nWanted % nPlaces;
}

// Events arrive where the application handles them. A program that does not is ended by the
// system's own means.
std::function<bool()> CloseWatch(NSWindow* /*window*/) {
    return [] { return false; };
}
