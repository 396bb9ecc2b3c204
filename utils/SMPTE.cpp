#include "utils/SMPTE.h"

#include <algorithm>
#include <limits>

namespace {

constexpr double ntscFrameRate = 29.97002997002997;
static_assert(ntscFrameRate == 30000.0 / 1001.0);

constexpr double twoTo31 = 2147483648.0;
constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 18446744073709551616.0;

constexpr std::int64_t dropFramesPerMinute = 1798;
constexpr std::int64_t dropFramesPerTenMinutes = 17982;
constexpr std::int64_t dropFramesPerHour = 107892;
constexpr std::int64_t nominalFramesPerSecond = 30;

std::int32_t ToInt32(double d) {
    if (d > -twoTo31 - 1.0 && d < twoTo31) return static_cast<std::int32_t>(d);
    return std::numeric_limits<std::int32_t>::min();
}

std::int64_t ToInt64(double d) {
    if (d >= -twoTo63 && d < twoTo63) return static_cast<std::int64_t>(d);
    return std::numeric_limits<std::int64_t>::min();
}

std::uint64_t ToUInt64(double d) {
    if (d >= -twoTo63 && d < twoTo63)
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(d));
    if (d >= twoTo64) return 0;
    if (d >= twoTo63) return static_cast<std::uint64_t>(d);
    return static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::min());
}

std::int16_t Low16(std::int64_t n) {
    return static_cast<std::int16_t>(n);
}

std::int16_t Low16(std::uint64_t n) {
    return static_cast<std::int16_t>(n);
}

// 1000 times the rate, rounded up: from its whole part, for std::ceil is a call where the processor
// cannot be relied on to round.
std::int64_t RateCode(double dFrameRate) {
    const double thousandfold = 1000.0 * dFrameRate;
    if (!(thousandfold >= -twoTo63 && thousandfold < twoTo63)) return ToInt64(thousandfold);
    const auto whole = static_cast<std::int64_t>(thousandfold);
    return static_cast<double>(whole) < thousandfold ? whole + 1 : whole;
}

bool IsNtscFamily(std::int64_t rateCode) {
    return rateCode >= 29970 && rateCode <= 29999;
}

double JoinHalves(std::uint64_t low, std::int64_t high) {
    return static_cast<double>(low) + static_cast<double>(high) * twoTo64;
}

SMPTETimeCode DropFrameTimeCode(double dSampleRate, bool ntsc, std::uint64_t position) {
    const double samplesPerFrame = dSampleRate / (ntsc ? ntscFrameRate : 30.0);
    const std::int64_t frames =
        ToInt64(static_cast<double>(static_cast<std::int64_t>(position)) / samplesPerFrame);
    const std::int64_t tens = frames / dropFramesPerTenMinutes;
    const std::int64_t inTen = frames - tens * dropFramesPerTenMinutes;

    std::int64_t minute = inTen / dropFramesPerMinute;
    std::int64_t inMinute = inTen - minute * dropFramesPerMinute;
    if (inTen >= 10 * dropFramesPerMinute) {
        // The two frames left over of ten minutes stay in the ninth.
        minute = 9;
        inMinute = std::min<std::int64_t>(inTen - 9 * dropFramesPerMinute, 1800);
    }
    return {Low16(frames / dropFramesPerHour), Low16(tens % 6 * 10 + minute),
            Low16(inMinute / nominalFramesPerSecond), Low16(inMinute % nominalFramesPerSecond), 0};
}

SMPTETimeCode NonDropTimeCode(double dSampleRate, double dFrameRate, bool ntsc,
                              std::uint64_t position) {
    if (ntsc) position = ToUInt64(static_cast<double>(position) * 1000.0 / 1001.0);
    const std::uint64_t seconds = ToUInt64(static_cast<double>(position) / dSampleRate);
    const std::uint64_t inSecond =
        ToUInt64(static_cast<double>(position) - static_cast<double>(seconds) * dSampleRate);
    const auto wholeRate = static_cast<std::uint64_t>(std::int64_t{ToInt32(dFrameRate)});
    const double frames = static_cast<double>(wholeRate * inSecond) / dSampleRate;
    return {Low16(seconds / 3600), Low16(seconds % 3600 / 60), Low16(seconds % 3600 % 60),
            Low16(ToUInt64(frames)), 0};
}

}  // namespace

std::int64_t SamplesToFrames(double dSampleRate, double dFrameRate, unsigned char,
                             double dSamples) {
    return ToInt64(dSamples / dSampleRate * dFrameRate);
}

std::int64_t SamplesToFrames(double dSampleRate, double dFrameRate, unsigned char fDropFrame,
                             std::uint64_t nSamplesLow, std::int64_t nSamplesHigh) {
    return SamplesToFrames(dSampleRate, dFrameRate, fDropFrame,
                           JoinHalves(nSamplesLow, nSamplesHigh));
}

double PTFramesToSamples(double dSampleRate, double dFrameRate, std::int64_t nFrames) {
    return dSampleRate / dFrameRate * static_cast<double>(nFrames);
}

bool SampleToSMPTE(double dSampleRate, double dFrameRate, unsigned char fDropFrame, unsigned char,
                   double dSamples, SMPTETimeCode* pTimeCode) {
    const std::uint64_t position = ToUInt64(dSamples);
    const bool ntsc = IsNtscFamily(RateCode(dFrameRate));
    *pTimeCode = fDropFrame != 0 ? DropFrameTimeCode(dSampleRate, ntsc, position)
                                 : NonDropTimeCode(dSampleRate, dFrameRate, ntsc, position);
    return true;
}

bool SampleToSMPTE(double dSampleRate, double dFrameRate, unsigned char fDropFrame, unsigned char,
                   std::uint64_t nSamplesLow, std::int64_t nSamplesHigh, SMPTETimeCode* pTimeCode) {
    return SampleToSMPTE(dSampleRate, dFrameRate, fDropFrame, 0,
                         JoinHalves(nSamplesLow, nSamplesHigh), pTimeCode);
}

double SMPTEToSamples(double dSampleRate, double dFrameRate, unsigned char fDropFrame,
                      unsigned char fUseSubFrames, SMPTETimeCode const* pTimeCode) {
    if (pTimeCode->nHours > 24 || pTimeCode->nMinutes > 60 || pTimeCode->nSeconds > 60 ||
        pTimeCode->nSubFrames > 99)
        return 0.0;

    const std::int64_t rateCode = RateCode(dFrameRate);
    const bool ntsc = IsNtscFamily(rateCode);
    const double framesPerSecond = ntsc ? 30.0 : dFrameRate;
    const std::int32_t minutes = pTimeCode->nHours * 60 + pTimeCode->nMinutes;
    const auto unsignedMinutes = static_cast<std::uint32_t>(minutes);
    const std::uint32_t dropped =
        fDropFrame != 0 ? (unsignedMinutes - unsignedMinutes / 10) * 2 : 0;

    double frames =
        pTimeCode->nFrames + (framesPerSecond * (minutes * 60 + pTimeCode->nSeconds) - dropped);
    if (fUseSubFrames != 0) frames += pTimeCode->nSubFrames / 100;
    return frames * dSampleRate / (ntsc ? ntscFrameRate : static_cast<double>(rateCode) / 1000.0);
}
