#include <CoreGraphics/CoreGraphics.h>

#include <algorithm>
#include <type_traits>
#include <vector>

#include "platform/gnustep/FunctionValues.h"
#include "platform/posix/CoreObject.h"

struct CGFunction {
    CoreHeader header;
    void* info;
    std::size_t inputs;
    std::size_t outputs;
    std::vector<CGFloat> domain;
    std::vector<CGFloat> range;
    CGFunctionCallbacks callbacks;

    ~CGFunction() {
        if (callbacks.releaseInfo != nullptr) callbacks.releaseInfo(info);
    }

    // Two functions are never taken for the same one.
    bool Equals(const CGFunction&) const { return false; }
};

static_assert(std::is_standard_layout_v<CGFunction>,
              "a pointer to an object is a pointer to its header");

namespace {

std::vector<CGFloat> Limits(const CGFloat* table, std::size_t dimension) {
    if (table == nullptr) return {};
    return {table, table + 2 * dimension};
}

void Cut(std::vector<CGFloat>& values, std::vector<CGFloat> const& limits) {
    for (std::size_t index = 0; 2 * index < limits.size(); ++index) {
        // Not std::clamp, which must not be given limits in the wrong order.
        values[index] = std::min(std::max(values[index], limits[2 * index]), limits[2 * index + 1]);
    }
}

}  // namespace

std::vector<CGFloat> ValuesOf(CGFunctionRef function, CGFloat input) {
    std::vector<CGFloat> in(std::max<std::size_t>(function->inputs, 1), input);
    std::vector<CGFloat> out(function->outputs);
    Cut(in, function->domain);
    function->callbacks.evaluate(function->info, in.data(), out.data());
    Cut(out, function->range);
    return out;
}

extern "C" {

CGFunctionRef CGFunctionCreate(void* info, std::size_t domainDimension, const CGFloat* domain,
                               std::size_t rangeDimension, const CGFloat* range,
                               const CGFunctionCallbacks* callbacks) {
    if (callbacks == nullptr || callbacks->evaluate == nullptr) return nullptr;
    return new CGFunction{{&CoreOperationsFor<CGFunction>::table},
                          info,
                          domainDimension,
                          rangeDimension,
                          Limits(domain, domainDimension),
                          Limits(range, rangeDimension),
                          *callbacks};
}

CGFunctionRef CGFunctionRetain(CGFunctionRef function) {
    if (function != nullptr) CFRetain(function);
    return function;
}

void CGFunctionRelease(CGFunctionRef function) {
    if (function != nullptr) CFRelease(function);
}
}
