#import "controls/GraphicUtils.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace {

/// A channel falls from `c + k` to `k`. The fourth coefficient is for spaces of four channels.
template <typename Number>
struct CRamp {
    Number c[4];
    double k;
};

constexpr CRamp<double> kNormal{{0.4, 0.4, 0.4, 0.4}, 0.2};
constexpr CRamp<float> kSelected{{0.4F, 0.4F, 0.4F, 0.4F}, 0.4};
constexpr CRamp<double> kDisabled{{0.15, 0.15, 0.15, 0.15}, 0.75};

template <typename Number>
void Evaluate(CRamp<Number> const& ramp, void* info, CGFloat const* pIn, CGFloat* pOut) {
    const auto nOutputs = reinterpret_cast<std::uintptr_t>(info);
    if (nOutputs == 0) return;
    for (std::size_t nOutput = 0; nOutput + 1 < nOutputs; ++nOutput) {
        const double c = ramp.c[std::min(nOutput, std::size(ramp.c) - 1)];
        pOut[nOutput] = c * (1.0 - *pIn) + ramp.k;
    }
    pOut[nOutputs - 1] = 1.0;
}

}  // namespace

void QXShaderNormalBtn(void* info, CGFloat const* pIn, CGFloat* pOut) {
    Evaluate(kNormal, info, pIn, pOut);
}

void QXShaderSelectedBtn(void* info, CGFloat const* pIn, CGFloat* pOut) {
    Evaluate(kSelected, info, pIn, pOut);
}

void QXShaderDisabledNormalBtn(void* info, CGFloat const* pIn, CGFloat* pOut) {
    Evaluate(kDisabled, info, pIn, pOut);
}

void QXShaderDisabledSelectedBtn(void* info, CGFloat const* pIn, CGFloat* pOut) {
    Evaluate(kDisabled, info, pIn, pOut);
}

CGFunctionRef GetBtnShader(CGColorSpace* space, CGFunctionEvaluateCallback evaluator) {
    constexpr CGFloat kDomain[] = {0, 1};
    constexpr CGFloat kRange[] = {0, 1, 0, 1, 0, 1, 0, 1};
    const std::size_t nOutputs = CGColorSpaceGetNumberOfComponents(space) + 1;
    if (2 * nOutputs > std::size(kRange)) return nullptr;
    const CGFunctionCallbacks callbacks{0, evaluator, nullptr};
    return CGFunctionCreate(reinterpret_cast<void*>(nOutputs), 1, kDomain, nOutputs, kRange,
                            &callbacks);
}
