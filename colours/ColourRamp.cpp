#include "colours/ColourRamp.h"

#include <algorithm>

namespace {

constexpr double kTolerance = 1.0 / 256.0;

Rgba RgbaOf(CComponentColour const& colour) {
    return {colour.m_rgba[0], colour.m_rgba[1], colour.m_rgba[2], colour.m_rgba[3]};
}

bool IsStopLike(CColourRamp::Stop const& a, CColourRamp::Stop const& b) {
    const auto near = [](double x, double y) { return WithinCG(x, y, kTolerance); };
    return near(a.dPosition, b.dPosition) && std::ranges::equal(a.rgba, b.rgba, near);
}

}  // namespace

CColourRamp::CColourRamp(CComponentColour const& colour) {
    auto const* gradient = dynamic_cast<CGradientFill const*>(&colour);
    if (gradient == nullptr) {
        m_stops.push_back({0.0, RgbaOf(colour)});
        return;
    }
    for (CGradComponent const* stop : gradient->m_components) {
        m_stops.push_back({stop->m_fPosition, RgbaOf(*stop)});
    }
}

CColourRamp::CColourRamp(CPaletteEntry const& row) {
    for (CPaletteStop const& stop : row.stops) {
        m_stops.push_back({stop.dPosition, {stop.dRed, stop.dGreen, stop.dBlue, stop.dAlpha}});
    }
}

Rgba CColourRamp::At(double place) const {
    if (m_stops.empty()) return {};
    const auto after = std::ranges::upper_bound(m_stops, place, {}, &Stop::dPosition);
    if (after == m_stops.begin()) return m_stops.front().rgba;
    if (after == m_stops.end()) return m_stops.back().rgba;

    Stop const& before = *std::prev(after);
    const double fraction = (place - before.dPosition) / (after->dPosition - before.dPosition);
    Rgba mixed;
    for (std::size_t channel = 0; channel < mixed.size(); ++channel) {
        mixed[channel] =
            before.rgba[channel] + fraction * (after->rgba[channel] - before.rgba[channel]);
    }
    return mixed;
}

bool CColourRamp::IsLike(CColourRamp const& other) const {
    return std::ranges::equal(m_stops, other.m_stops, IsStopLike);
}
