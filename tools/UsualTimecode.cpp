#include "tools/UsualTimecode.h"

#include <cmath>
#include <cstdio>

namespace {

constexpr std::int64_t kMinutesPerHour = 60;
constexpr std::int64_t kSecondsPerMinute = 60;

// Rates of colour television: a thousandth slower than their labels.
constexpr int kSlowed[] = {24, 30, 48, 60, 120};
constexpr double kAlike = 0.005;

std::int64_t Minutes(CTimeLabel const& label) {
    return label.nHours * kMinutesPerHour + label.nMinutes;
}

// Drop-frame leaves the first labels of every minute out, except of every tenth.
bool IsDroppingMinute(std::int64_t nMinute) {
    return nMinute % 10 != 0;
}

// Which label the frame would have if none was left out.
std::int64_t WithDropped(CFrameRate const& rate, std::int64_t nFrame) {
    const std::int64_t nMinute = rate.nLabels * kSecondsPerMinute - rate.nDropped;
    const std::int64_t nTen = 10 * nMinute + rate.nDropped;
    const std::int64_t nTens = nFrame / nTen, nInTen = nFrame % nTen;
    const std::int64_t nMinutes = nInTen < rate.nDropped ? 0 : (nInTen - rate.nDropped) / nMinute;
    return nFrame + rate.nDropped * (9 * nTens + nMinutes);
}

}  // namespace

CFrameRate UsualFrameRate(double dTyped) {
    for (const int nLabels : kSlowed) {
        const double dExact = nLabels * 1000.0 / 1001.0;
        if (std::abs(dTyped - dExact) < kAlike)
            return {dExact, nLabels, nLabels % 30 == 0 ? nLabels / 15 : 0};
    }
    constexpr double kMostLabels = 1000;
    const double dWhole = std::round(dTyped);
    const bool fWhole = dWhole == dTyped && dWhole <= kMostLabels;
    return {dTyped, fWhole ? static_cast<int>(dWhole) : 0, 0};
}

bool LabelExists(CFrameRate const& rate, bool fDrop, CTimeLabel const& label) {
    if (label.nMinutes >= kMinutesPerHour || label.nSeconds >= kSecondsPerMinute ||
        label.nFrames >= rate.nLabels)
        return false;
    return !fDrop || label.nSeconds > 0 || label.nFrames >= rate.nDropped ||
           !IsDroppingMinute(label.nMinutes);
}

std::int64_t FrameOfLabel(CFrameRate const& rate, bool fDrop, CTimeLabel const& label) {
    const std::int64_t nMinutes = Minutes(label);
    const std::int64_t nDropped = fDrop ? rate.nDropped * (nMinutes - nMinutes / 10) : 0;
    return (nMinutes * kSecondsPerMinute + label.nSeconds) * rate.nLabels + label.nFrames -
           nDropped;
}

std::string LabelOfFrame(CFrameRate const& rate, bool fDrop, std::int64_t nFrame) {
    const bool fBefore = nFrame < 0;
    const bool fDrops = fDrop && rate.nDropped > 0;
    std::int64_t nLabel = fBefore ? -nFrame : nFrame;
    if (fDrops) nLabel = WithDropped(rate, nLabel);
    const std::int64_t nSeconds = nLabel / rate.nLabels;
    char text[64];
    std::snprintf(text, sizeof text, "%s%02lld:%02lld:%02lld%c%02lld", fBefore ? "-" : "",
                  static_cast<long long>(nSeconds / 3600),
                  static_cast<long long>(nSeconds / 60 % 60), static_cast<long long>(nSeconds % 60),
                  fDrops ? ';' : ':', static_cast<long long>(nLabel % rate.nLabels));
    return text;
}

std::int64_t FrameAtSample(CFrameRate const& rate, double dSampleRate, double dSample) {
    // Where a frame begins at a whole sample, the quotient may fall short of it by its last digits.
    constexpr double kLastDigits = 1e-6;
    return static_cast<std::int64_t>(
        std::floor(dSample * rate.dPerSecond / dSampleRate + kLastDigits));
}

double SampleOfFrame(CFrameRate const& rate, double dSampleRate, std::int64_t nFrame) {
    return static_cast<double>(nFrame) * dSampleRate / rate.dPerSecond;
}
