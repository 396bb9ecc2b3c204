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

// Whether the rate code is between 29970 and 29999, without rounding anything up.
bool IsNtscFamily(double dFrameRate) {
    const double thousandfold = 1000.0 * dFrameRate;
    return thousandfold > 29969.0 && thousandfold <= 29999.0;
}

// What every position and rate of real audio is: then no conversion below leaves its range, and
// none has to be guarded.
bool IsOrdinary(double dSampleRate, double dFrameRate, double dSamples) {
    return dSamples >= 0.0 && dSamples < 0x1p52 && dSampleRate >= 4.0 && dSampleRate < 0x1p31 &&
           dFrameRate >= 0.0 && dFrameRate < 0x1p31;
}

struct CGuardedConversion {
    static std::uint64_t Whole(double d) { return ToUInt64(d); }
    static std::int32_t Rate(double d) { return ToInt32(d); }
};

struct CPlainConversion {
    static std::uint64_t Whole(double d) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(d));
    }
    static std::int32_t Rate(double d) { return static_cast<std::int32_t>(d); }
};

double JoinHalves(std::uint64_t low, std::int64_t high) {
    return static_cast<double>(low) + static_cast<double>(high) * twoTo64;
}

void PutDropFrameTimeCode(double dSampleRate, bool ntsc, std::uint64_t position,
                          SMPTETimeCode& code) {
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
    code.nHours = Low16(frames / dropFramesPerHour);
    code.nMinutes = Low16(tens % 6 * 10 + minute);
    code.nSeconds = Low16(inMinute / nominalFramesPerSecond);
    code.nFrames = Low16(inMinute % nominalFramesPerSecond);
    code.nSubFrames = 0;
}

template <typename CConversion>
void PutNonDropTimeCode(double dSampleRate, double dFrameRate, bool ntsc, std::uint64_t position,
                        SMPTETimeCode& code) {
    if (ntsc) position = CConversion::Whole(static_cast<double>(position) * 1000.0 / 1001.0);
    const std::uint64_t seconds = CConversion::Whole(static_cast<double>(position) / dSampleRate);
    const std::uint64_t inSecond = CConversion::Whole(static_cast<double>(position) -
                                                      static_cast<double>(seconds) * dSampleRate);
    const auto wholeRate = static_cast<std::uint64_t>(std::int64_t{CConversion::Rate(dFrameRate)});
    const double frames = static_cast<double>(wholeRate * inSecond) / dSampleRate;
    code.nHours = Low16(seconds / 3600);
    code.nMinutes = Low16(seconds % 3600 / 60);
    code.nSeconds = Low16(seconds % 3600 % 60);
    code.nFrames = Low16(CConversion::Whole(frames));
    code.nSubFrames = 0;
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
    const bool ntsc = IsNtscFamily(dFrameRate);
    if (fDropFrame != 0) {
        PutDropFrameTimeCode(dSampleRate, ntsc, ToUInt64(dSamples), *pTimeCode);
    } else if (IsOrdinary(dSampleRate, dFrameRate, dSamples)) {
        PutNonDropTimeCode<CPlainConversion>(dSampleRate, dFrameRate, ntsc,
                                             CPlainConversion::Whole(dSamples), *pTimeCode);
    } else {
        PutNonDropTimeCode<CGuardedConversion>(dSampleRate, dFrameRate, ntsc, ToUInt64(dSamples),
                                               *pTimeCode);
    }
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

    const bool ntsc = IsNtscFamily(dFrameRate);
    const double framesPerSecond = ntsc ? 30.0 : dFrameRate;
    const std::int32_t minutes = pTimeCode->nHours * 60 + pTimeCode->nMinutes;
    const auto unsignedMinutes = static_cast<std::uint32_t>(minutes);
    const std::uint32_t dropped =
        fDropFrame != 0 ? (unsignedMinutes - unsignedMinutes / 10) * 2 : 0;

    double frames =
        pTimeCode->nFrames + (framesPerSecond * (minutes * 60 + pTimeCode->nSeconds) - dropped);
    if (fUseSubFrames != 0) frames += pTimeCode->nSubFrames / 100;
    return frames * dSampleRate /
           (ntsc ? ntscFrameRate : static_cast<double>(RateCode(dFrameRate)) / 1000.0);
}
