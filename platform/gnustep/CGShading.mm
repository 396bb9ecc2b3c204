#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>

#include <algorithm>
#include <type_traits>

#include "platform/gnustep/AxialShading.h"
#include "platform/gnustep/FunctionValues.h"
#include "platform/posix/CoreObject.h"

struct CGShading {
    CoreHeader header;
    CGPoint start;
    CGPoint end;
    CGFunctionRef function;
    bool extendStart;
    bool extendEnd;

    ~CGShading() { CGFunctionRelease(function); }

    // Two shadings are never taken for the same one.
    bool Equals(const CGShading&) const { return false; }
};

static_assert(std::is_standard_layout_v<CGShading>,
              "a pointer to an object is a pointer to its header");

namespace {

constexpr int kSteps = 64;
constexpr std::size_t kChannels = 3;

GradientStop StopAt(CGFunctionRef function, CGFloat position) {
    const std::vector<CGFloat> values = ValuesOf(function, position);
    GradientStop stop{position, {0, 0, 0, 1}};
    std::copy_n(values.begin(), std::min(values.size(), stop.rgba.size()), stop.rgba.begin());
    if (values.size() <= kChannels) stop.rgba[kChannels] = 1;
    return stop;
}

}  // namespace

AxialShading AxialShadingOf(CGShadingRef shading) {
    AxialShading axial{shading->start, shading->end, shading->extendStart, shading->extendEnd, {}};
    axial.stops.reserve(kSteps + 1);
    for (int step = 0; step <= kSteps; ++step) {
        axial.stops.push_back(StopAt(shading->function, static_cast<CGFloat>(step) / kSteps));
    }
    return axial;
}

extern "C" {

CGShadingRef CGShadingCreateAxial(CGColorSpaceRef, CGPoint start, CGPoint end,
                                  CGFunctionRef function, bool extendStart, bool extendEnd) {
    if (function == nullptr) return nullptr;
    return new CGShading{{&CoreOperationsFor<CGShading>::table},
                         start,
                         end,
                         CGFunctionRetain(function),
                         extendStart,
                         extendEnd};
}

CGShadingRef CGShadingRetain(CGShadingRef shading) {
    if (shading != nullptr) CFRetain(shading);
    return shading;
}

void CGShadingRelease(CGShadingRef shading) {
    if (shading != nullptr) CFRelease(shading);
}
}
