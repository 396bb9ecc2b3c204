#include <CoreGraphics/CoreGraphics.h>

#include <algorithm>
#include <atomic>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/gnustep/GradientStops.h"
#include "platform/posix/CoreObject.h"

struct CGGradient {
    CoreHeader header;
    std::vector<GradientStop> stops;
    std::atomic<void*> drawable = nullptr;
    std::atomic<void (*)(void*)> releaseDrawable = nullptr;

    ~CGGradient() {
        if (drawable != nullptr) releaseDrawable.load()(drawable);
    }

    // Two gradients are never taken for the same one.
    bool Equals(const CGGradient&) const { return false; }
};

static_assert(std::is_standard_layout_v<CGGradient>,
              "a pointer to an object is a pointer to its header");

namespace {

CGFloat EvenLocation(CFIndex index, CFIndex count) {
    return count == 1 ? 0.0 : static_cast<CGFloat>(index) / static_cast<CGFloat>(count - 1);
}

/// False when `colors` holds something that is no colour.
bool CollectStops(CFArrayRef colors, const CGFloat* locations, std::vector<GradientStop>* stops) {
    const CFIndex count = CFArrayGetCount(colors);
    stops->reserve(static_cast<std::size_t>(count));
    for (CFIndex index = 0; index < count; ++index) {
        auto* color =
            static_cast<CGColorRef>(const_cast<void*>(CFArrayGetValueAtIndex(colors, index)));
        if (color == nullptr) return false;
        GradientStop stop{locations == nullptr ? EvenLocation(index, count) : locations[index], {}};
        std::copy_n(CGColorGetComponents(color), stop.rgba.size(), stop.rgba.begin());
        stops->push_back(stop);
    }
    return true;
}

}  // namespace

std::span<const GradientStop> StopsOf(CGGradientRef gradient) {
    if (gradient == nullptr) return {};
    return gradient->stops;
}

void* DrawableOf(CGGradientRef gradient, void* (*make)(std::span<const GradientStop>),
                 void (*release)(void*)) {
    void* drawable = gradient->drawable;
    if (drawable != nullptr) return drawable;
    void* made = make(gradient->stops);
    gradient->releaseDrawable = release;
    if (gradient->drawable.compare_exchange_strong(drawable, made)) return made;
    release(made);
    return drawable;
}

extern "C" {

CGGradientRef CGGradientCreateWithColors(CGColorSpaceRef, CFArrayRef colors,
                                         const CGFloat* locations) {
    if (colors == nullptr || CFArrayGetCount(colors) == 0) return nullptr;
    std::vector<GradientStop> stops;
    if (!CollectStops(colors, locations, &stops)) return nullptr;
    return new CGGradient{{&CoreOperationsFor<CGGradient>::table}, std::move(stops)};
}

CGGradientRef CGGradientRetain(CGGradientRef gradient) {
    if (gradient != nullptr) CFRetain(gradient);
    return gradient;
}

void CGGradientRelease(CGGradientRef gradient) {
    if (gradient != nullptr) CFRelease(gradient);
}
}
