#include "colours/ColourVision.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>;

constexpr Matrix kFullVision = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

// Machado, Oliveira and Fernandes (2009), severity 1.0, on linear sRGB.
constexpr Matrix kProtanopia = {{{0.152286, 1.052583, -0.204868},
                                 {0.114503, 0.786281, 0.099216},
                                 {-0.003882, -0.048116, 1.051998}}};
constexpr Matrix kDeuteranopia = {{{0.367322, 0.860646, -0.227968},
                                   {0.280085, 0.672501, 0.047413},
                                   {-0.011820, 0.042940, 0.968881}}};
constexpr Matrix kTritanopia = {{{1.255528, -0.076749, -0.178779},
                                 {-0.078411, 0.930809, 0.147602},
                                 {0.004733, 0.691367, 0.303900}}};

// Ottosson's OKLab (2020): linear sRGB to cone responses, and their cube roots to the three axes.
constexpr Matrix kCones = {{{0.4122214708, 0.5363325363, 0.0514459929},
                            {0.2119034982, 0.6806995451, 0.1073969566},
                            {0.0883024619, 0.2817188376, 0.6299787005}}};
constexpr Matrix kAxes = {{{0.2104542553, 0.7936177850, -0.0040720468},
                           {1.9779984951, -2.4285922050, 0.4505937099},
                           {0.0259040371, 0.7827717662, -0.8086757660}}};

Vector operator*(Matrix const& matrix, Vector const& vector) {
    Vector product{};
    for (std::size_t row = 0; row < product.size(); ++row) {
        for (std::size_t column = 0; column < vector.size(); ++column) {
            product[row] += matrix[row][column] * vector[column];
        }
    }
    return product;
}

// NaN fails the first test.
double Clamp(double channel) {
    return channel > 0.0 ? std::min(channel, 1.0) : 0.0;
}

double Linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

Vector Linear(Rgba const& colour) {
    return {Linear(colour[0]), Linear(colour[1]), Linear(colour[2])};
}

Vector Perceived(Matrix const& vision, Vector const& linear) {
    Vector seen = vision * linear;
    std::ranges::transform(seen, seen.begin(), Clamp);
    Vector cones = kCones * seen;
    std::ranges::transform(cones, cones.begin(),
                           [](double response) { return std::cbrt(response); });
    return kAxes * cones;
}

}  // namespace

Rgba PaintOver(Rgba const& top, Rgba const& bottom) {
    const double alpha = Clamp(top[3]);
    Rgba painted{0.0, 0.0, 0.0, 1.0};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        painted[channel] = alpha * Clamp(top[channel]) + (1.0 - alpha) * Clamp(bottom[channel]);
    }
    return painted;
}

double Luminance(Rgba const& colour) {
    const Vector linear = Linear(colour);
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2];
}

double ContrastRatio(double luminance1, double luminance2) {
    constexpr double flare = 0.05;
    const auto [darker, lighter] = std::minmax(luminance1, luminance2);
    return (lighter + flare) / (darker + flare);
}

double PerceivedDistance(Rgba const& colour1, Rgba const& colour2) {
    const Vector linear1 = Linear(colour1);
    const Vector linear2 = Linear(colour2);
    double nearest = std::numeric_limits<double>::infinity();
    for (Matrix const* vision : {&kFullVision, &kProtanopia, &kDeuteranopia, &kTritanopia}) {
        const Vector seen1 = Perceived(*vision, linear1);
        const Vector seen2 = Perceived(*vision, linear2);
        nearest = std::min(
            nearest, std::hypot(seen1[0] - seen2[0], seen1[1] - seen2[1], seen1[2] - seen2[2]));
    }
    return 100.0 * nearest;
}

std::array<double, 3> OKLab(Rgba const& colour) {
    return Perceived(kFullVision, Linear(colour));
}
