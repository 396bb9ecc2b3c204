#pragma once

#include <cstdint>

/// \file
/// Conversions between a position in audio samples, a count of video frames and a SMPTE time code.
///
/// Rates are per second. A frame rate belongs to the 29.97 family when 1000 times the rate, rounded
/// up, lies in 29970 to 29999; such a rate divides as 30000/1001.
///
/// Every step is one operation on doubles in the written order, and numbers are cut toward zero on
/// their way to integers. What does not fit (or is no number) becomes, for a signed integer, the
/// most negative one; for an unsigned 64-bit one, a negative number wraps modulo 2^64, anything
/// from 2^64 on becomes 0 and no number (or one below -2^63) becomes 2^63. So no rate and no
/// position is undefined.
///
/// Samples given as two halves are a 128-bit number: `nSamplesLow` + `nSamplesHigh` * 2^64, rounded
/// to a double first.
///
/// Nothing here keeps state, so every function may run on any thread.

/// Hours, minutes, seconds, frames within the second and hundredths of a frame.
struct SMPTETimeCode {
    std::int16_t nHours;      ///< hours
    std::int16_t nMinutes;    ///< minutes of the hour
    std::int16_t nSeconds;    ///< seconds of the minute
    std::int16_t nFrames;     ///< frames of the second, from 0
    std::int16_t nSubFrames;  ///< hundredths of the frame
};

/// The number of whole frames before a position. Drop-frame makes no difference to it.
std::int64_t SamplesToFrames(double dSampleRate, double dFrameRate, unsigned char fDropFrame,
                             double dSamples);

/// The same for a position in two halves.
std::int64_t SamplesToFrames(double dSampleRate, double dFrameRate, unsigned char fDropFrame,
                             std::uint64_t nSamplesLow, std::int64_t nSamplesHigh);

/// The position at which a frame begins, in samples, not rounded.
double PTFramesToSamples(double dSampleRate, double dFrameRate, std::int64_t nFrames);

/// Fills `*pTimeCode` for a position. Always true; sub-frames are always 0.
///
/// Drop-frame counting runs at 30 frames per second, or 30000/1001 in the 29.97 family, with 1798
/// frames in every minute and 17982 in ten; no frame numbers are skipped. Without drop-frame the
/// frames of a second count to the whole part of the rate: 0 to 28 at 29.97, 0 to 22 at 23.976.
/// `fSubFrames` plays no part.
bool SampleToSMPTE(double dSampleRate, double dFrameRate, unsigned char fDropFrame,
                   unsigned char fSubFrames, double dSamples, SMPTETimeCode* pTimeCode);

/// The same for a position in two halves.
bool SampleToSMPTE(double dSampleRate, double dFrameRate, unsigned char fDropFrame,
                   unsigned char fSubFrames, std::uint64_t nSamplesLow, std::int64_t nSamplesHigh,
                   SMPTETimeCode* pTimeCode);

/// The position of a time code in samples, not rounded.
///
/// 0.0 for more than 24 hours, 60 minutes, 60 seconds or 99 sub-frames. Negative fields count
/// backwards, except that a negative number of minutes drops frames as an unsigned 32-bit number
/// does. Sub-frames add their whole hundredths only, hence nothing from 0 to 99.
double SMPTEToSamples(double dSampleRate, double dFrameRate, unsigned char fDropFrame,
                      unsigned char fUseSubFrames, SMPTETimeCode const* pTimeCode);
