#include <CoreGraphics/CoreGraphics.h>

#include <algorithm>
#include <array>
#include <type_traits>

#include "platform/posix/CoreObject.h"

namespace {

constexpr std::size_t kChannels = 3;
constexpr std::size_t kComponents = kChannels + 1;

}  // namespace

struct CGColorSpace {
    CoreHeader header;

    bool Equals(const CGColorSpace&) const { return true; }
};

struct CGColor {
    CoreHeader header;
    CGColorSpaceRef space;
    std::array<CGFloat, kComponents> components;

    ~CGColor() { CGColorSpaceRelease(space); }

    bool Equals(const CGColor& other) const {
        return space == other.space && components == other.components;
    }
};

static_assert(std::is_standard_layout_v<CGColorSpace> && std::is_standard_layout_v<CGColor>,
              "a pointer to an object is a pointer to its header");

extern "C" {

CGColorSpaceRef CGColorSpaceCreateDeviceRGB(void) {
    static constinit CGColorSpace space{{&CoreOperationsFor<CGColorSpace>::table, kImmortal}};
    return &space;
}

CGColorSpaceRef CGColorSpaceRetain(CGColorSpaceRef space) {
    if (space != nullptr) CFRetain(space);
    return space;
}

void CGColorSpaceRelease(CGColorSpaceRef space) {
    if (space != nullptr) CFRelease(space);
}

std::size_t CGColorSpaceGetNumberOfComponents(CGColorSpaceRef space) {
    return space == nullptr ? 0 : kChannels;
}

CGColorRef CGColorCreate(CGColorSpaceRef space, const CGFloat* components) {
    if (space == nullptr || components == nullptr) return nullptr;
    auto* color = new CGColor{{&CoreOperationsFor<CGColor>::table}, CGColorSpaceRetain(space), {}};
    std::copy_n(components, kComponents, color->components.begin());
    return color;
}

CGColorRef CGColorRetain(CGColorRef color) {
    if (color != nullptr) CFRetain(color);
    return color;
}

void CGColorRelease(CGColorRef color) {
    if (color != nullptr) CFRelease(color);
}

bool CGColorEqualToColor(CGColorRef color1, CGColorRef color2) {
    if (color1 == nullptr || color2 == nullptr) return color1 == color2;
    return CFEqual(color1, color2) != 0;
}

const CGFloat* CGColorGetComponents(CGColorRef color) {
    return color == nullptr ? nullptr : color->components.data();
}

std::size_t CGColorGetNumberOfComponents(CGColorRef color) {
    return color == nullptr ? 0 : kComponents;
}

CGFloat CGColorGetAlpha(CGColorRef color) {
    return color == nullptr ? 0.0 : color->components.back();
}

CGColorSpaceRef CGColorGetColorSpace(CGColorRef color) {
    return color == nullptr ? nullptr : color->space;
}
}
