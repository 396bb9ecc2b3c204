#include "utils/SMPTE.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double ntsc = 29.97002997002997;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr std::int64_t mostNegative = std::numeric_limits<std::int64_t>::min();

std::string Text(SMPTETimeCode const& code) {
    char text[64];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d:%02d.%02d", code.nHours, code.nMinutes,
                  code.nSeconds, code.nFrames, code.nSubFrames);
    return text;
}

std::string TimeCode(double sampleRate, double frameRate, bool drop, double samples) {
    SMPTETimeCode code{-1, -1, -1, -1, -1};
    EXPECT_TRUE(SampleToSMPTE(sampleRate, frameRate, drop, 0, samples, &code));
    return Text(code);
}

// The first sample of a frame when counting drop-frame at 29.97.
double DropFrameSample(std::int64_t frame) {
    return std::ceil(frame * (48000.0 / ntsc));
}

TEST(SamplesToFrames, CountsWholeFrames) {
    EXPECT_EQ(50, SamplesToFrames(48000, 25, 0, 96000.0));
    EXPECT_EQ(49, SamplesToFrames(48000, 25, 0, 95999.0));
    EXPECT_EQ(-1, SamplesToFrames(48000, 25, 0, -3839.0));
    EXPECT_EQ(0, SamplesToFrames(48000, 25, 0, -1919.0));
}

TEST(SamplesToFrames, IgnoresDropFrame) {
    for (double samples : {0.0, 96000.0, 2882880.0, 1e12})
        EXPECT_EQ(SamplesToFrames(48000, 29.97, 0, samples),
                  SamplesToFrames(48000, 29.97, 1, samples));
}

TEST(SamplesToFrames, TakesA128BitPosition) {
    EXPECT_EQ(50, SamplesToFrames(48000, 25, 0, 96000, 0));
    EXPECT_EQ(SamplesToFrames(48000, 25, 0, 18446744073709551616.0),
              SamplesToFrames(48000, 25, 0, 0, 1));
    EXPECT_EQ(SamplesToFrames(48000, 25, 0, 9223372036854775808.0),
              SamplesToFrames(48000, 25, 0, 0x8000000000000000, 0));
    EXPECT_EQ(-9607679205057, SamplesToFrames(48000, 25, 0, 0, -1) / 1000);
}

TEST(SamplesToFrames, GivesTheMostNegativeNumberForWhatDoesNotFit) {
    EXPECT_EQ(mostNegative, SamplesToFrames(0, 25, 0, 1.0));
    EXPECT_EQ(mostNegative, SamplesToFrames(48000, 25, 0, 1e300));
    EXPECT_EQ(mostNegative, SamplesToFrames(48000, 25, 0, -1e300));
    EXPECT_EQ(mostNegative, SamplesToFrames(48000, 25, 0, notANumber));
    EXPECT_EQ(mostNegative, SamplesToFrames(48000, infinity, 0, 1.0));
}

TEST(FramesToSamples, MultipliesTheFramesLength) {
    EXPECT_EQ(96000.0, PTFramesToSamples(48000, 25, 50));
    EXPECT_EQ(-1920.0, PTFramesToSamples(48000, 25, -1));
    EXPECT_EQ(48000 / 29.97 * 3, PTFramesToSamples(48000, 29.97, 3));
    EXPECT_EQ(infinity, PTFramesToSamples(48000, 0, 1));
}

TEST(NonDropTimeCode, SplitsThePosition) {
    EXPECT_EQ("01:01:01:12.00", TimeCode(48000, 25, false, 48000.0 * 3661 + 24000));
    EXPECT_EQ("00:00:00:00.00", TimeCode(48000, 25, false, 0.0));
    EXPECT_EQ("00:00:00:24.00", TimeCode(48000, 25, false, 47999.9));
    EXPECT_EQ("25:00:00:00.00", TimeCode(48000, 24, false, 48000.0 * 3600 * 25));
    EXPECT_EQ("00:00:01:15.00", TimeCode(44100, 30, false, 44100.0 * 1.5));
}

TEST(NonDropTimeCode, CountsTheWholePartOfTheRate) {
    const double oneSecond = 48000.0 * 1001 / 1000;
    EXPECT_EQ("00:00:00:28.00", TimeCode(48000, 29.97, false, oneSecond - 1));
    EXPECT_EQ("00:00:01:00.00", TimeCode(48000, 29.97, false, oneSecond));
    EXPECT_EQ("00:00:00:22.00", TimeCode(48000, 23.976, false, 47999.0));
    EXPECT_EQ("00:00:00:28.00", TimeCode(48000, ntsc, false, oneSecond - 1));
}

TEST(NonDropTimeCode, NeverShowsFrame29At2997) {
    for (int sample = 0; sample < 200000; ++sample) {
        SMPTETimeCode code;
        SampleToSMPTE(48000, 29.97, 0, 0, sample, &code);
        ASSERT_LE(code.nFrames, 28) << sample;
    }
}

TEST(NonDropTimeCode, KnowsTheEndsOfThe2997Family) {
    // 48048 samples are one second inside the family and one second and 48 samples outside.
    EXPECT_EQ("00:00:01:00.00", TimeCode(48000, 29.97, false, 48048));
    EXPECT_EQ("00:00:01:00.00", TimeCode(48000, 29.999, false, 48048));
    EXPECT_EQ("00:00:00:28.00", TimeCode(48000, 29.97, false, 48047));
    EXPECT_EQ("00:00:01:00.00", TimeCode(48000, 29.969, false, 48047));
    EXPECT_EQ("00:00:01:00.00", TimeCode(48000, 30.0, false, 48047));
    // 29.9691 rounds up into the family.
    EXPECT_EQ("00:00:00:28.00", TimeCode(48000, 29.9691, false, 48047));
    EXPECT_EQ("00:00:01:00.00", TimeCode(48000, 29.9991, false, 48047));
}

// The formula, for positions and rates with which nothing leaves the range of 64 bits.
std::string NonDropFormula(double sampleRate, double frameRate, double samples) {
    double position = std::trunc(samples);
    const double rateCode = std::ceil(1000.0 * frameRate);
    if (rateCode >= 29970.0 && rateCode <= 29999.0)
        position = std::trunc(position * 1000.0 / 1001.0);
    const double seconds = std::trunc(position / sampleRate);
    const auto inSecond = static_cast<std::int64_t>(std::trunc(position - seconds * sampleRate));
    const auto scaled =
        static_cast<std::uint64_t>(std::trunc(frameRate)) * static_cast<std::uint64_t>(inSecond);
    const double frames = std::trunc(static_cast<double>(scaled) / sampleRate);
    const auto wholeSeconds = static_cast<std::int64_t>(seconds);
    const auto low16 = [](std::int64_t n) { return static_cast<std::int16_t>(n); };
    return Text({low16(wholeSeconds / 3600), low16(wholeSeconds % 3600 / 60),
                 low16(wholeSeconds % 60), low16(static_cast<std::int64_t>(frames)), 0});
}

TEST(NonDropTimeCode, FollowsTheFormulaOnBothSidesOfEveryLimit) {
    std::vector<double> positions{0,       0.5,     1,          47999.999,       48000,
                                  1e9 + 1, 0x1p31,  0x1p52 - 1, 0x1p52,          0x1p52 + 2,
                                  0x1p53,  86400e3, 123456789,  48000.0 * 86399, 48048.0 * 3600};
    std::mt19937_64 random(1);
    for (int i = 0; i < 500; ++i)
        positions.push_back(static_cast<double>(random() >> (i % 50 + 12)));
    for (const double sampleRate :
         {3.9, 4.0, 8000.0, 44100.0, 47952.047952, 48000.0, 192000.0, 0x1p31 - 1, 0x1p31}) {
        for (const double frameRate : {0.0, 0.5, 23.976, 24.0, 25.0, 29.969, 29.9691, ntsc, 29.999,
                                       29.9991, 30.0, 59.94, 0x1p31 - 1}) {
            for (const double position : positions) {
                ASSERT_EQ(NonDropFormula(sampleRate, frameRate, position),
                          TimeCode(sampleRate, frameRate, false, position))
                    << sampleRate << " " << frameRate << " " << position;
            }
        }
    }
}

TEST(NonDropTimeCode, IgnoresSubFrames) {
    SMPTETimeCode code{9, 9, 9, 9, 9};
    EXPECT_TRUE(SampleToSMPTE(48000, 25, 0, 1, 1000.0, &code));
    EXPECT_EQ("00:00:00:00.00", Text(code));
}

TEST(DropFrameTimeCode, Counts1798FramesInEveryMinute) {
    const auto at = [](std::int64_t frame) {
        return TimeCode(48000, 29.97, true, DropFrameSample(frame));
    };
    EXPECT_EQ("00:00:00:00.00", at(0));
    EXPECT_EQ("00:00:59:27.00", at(1797));
    EXPECT_EQ("00:01:00:00.00", at(1798));
    EXPECT_EQ("00:09:59:27.00", at(17979));
    EXPECT_EQ("00:09:59:28.00", at(17980));
    EXPECT_EQ("00:09:59:29.00", at(17981));
    EXPECT_EQ("00:10:00:00.00", at(17982));
    EXPECT_EQ("00:59:59:29.00", at(107891));
    EXPECT_EQ("01:00:00:00.00", at(107892));
}

TEST(DropFrameTimeCode, RunsAt30FramesOutsideThe2997Family) {
    EXPECT_EQ("00:00:01:00.00", TimeCode(48000, 25, true, 48000));
    EXPECT_EQ("00:01:00:00.00", TimeCode(48000, 25, true, 1798 * 1600.0));
}

TEST(DropFrameTimeCode, CountsBackwardsBelowZero) {
    // One frame before zero: minus one of 1798 in the minute.
    EXPECT_EQ("00:00:00:-1.00", TimeCode(48000, 30, true, -1600));
    EXPECT_EQ("00:-1:00:00.00", TimeCode(48000, 30, true, -1600.0 * 1798));
}

TEST(TimeCode, TakesA128BitPosition) {
    SMPTETimeCode wide;
    EXPECT_TRUE(SampleToSMPTE(48000, 25, 0, 1, std::uint64_t{48000} * 3661 + 24000, std::int64_t{0},
                              &wide));
    EXPECT_EQ("01:01:01:12.00", Text(wide));
    SMPTETimeCode drop;
    EXPECT_TRUE(SampleToSMPTE(48000, 30, 1, 0, std::uint64_t{48000}, std::int64_t{0}, &drop));
    EXPECT_EQ("00:00:01:00.00", Text(drop));
}

TEST(TimeCode, KeepsTheLow16BitsOfEachField) {
    // 70000 hours are 4464 more than 2 to the 16th.
    EXPECT_EQ("4464:00:00:00.00", TimeCode(48000, 25, false, 48000.0 * 3600 * 70000));
}

TEST(TimeCode, IsDefinedForEveryNumber) {
    for (double rate : {0.0, -1.0, 1.0, 48000.0, 1e300, infinity, notANumber})
        for (double frameRate : {0.0, -25.0, 25.0, 29.97, 1e300, -1e300, infinity, notANumber})
            for (double samples : {0.0, -1.0, 1e18, 1e19, 1e20, -1e300, infinity, notANumber})
                for (unsigned char drop : {0, 1}) {
                    SMPTETimeCode code;
                    EXPECT_TRUE(SampleToSMPTE(rate, frameRate, drop, 0, samples, &code));
                    EXPECT_EQ(0, code.nSubFrames);
                    SamplesToFrames(rate, frameRate, drop, samples);
                    SMPTEToSamples(rate, frameRate, drop, 1, &code);
                }
}

TEST(TimeCode, WrapsNegativePositionsWithoutDropFrame) {
    // One sample before zero is 2^64 - 1, which is 2^64 as a double: 384307168202282 seconds of
    // 48000 samples and a fraction.
    SMPTETimeCode code;
    SampleToSMPTE(48000, 25, 0, 0, -1.0, &code);
    const std::uint64_t seconds = 384307168202282;
    EXPECT_EQ(static_cast<std::int16_t>(seconds / 3600), code.nHours);
    EXPECT_EQ(static_cast<std::int16_t>(seconds % 3600 / 60), code.nMinutes);
    EXPECT_EQ(static_cast<std::int16_t>(seconds % 60), code.nSeconds);
}

TEST(TimeCode, TakesPositionsBeyond64BitsAsZero) {
    EXPECT_EQ("00:00:00:00.00", TimeCode(48000, 25, false, 18446744073709551616.0));
    EXPECT_EQ("00:00:00:00.00", TimeCode(48000, 25, true, infinity));
}

TEST(TimeCodeToSamples, RejectsFieldsThatAreTooLarge) {
    const auto samples = [](SMPTETimeCode code) { return SMPTEToSamples(48000, 25, 0, 0, &code); };
    EXPECT_EQ(0.0, samples({25, 0, 0, 1, 0}));
    EXPECT_EQ(0.0, samples({0, 61, 0, 1, 0}));
    EXPECT_EQ(0.0, samples({0, 0, 61, 1, 0}));
    EXPECT_EQ(0.0, samples({0, 0, 0, 1, 100}));
    EXPECT_EQ(48000.0 * (24 * 3600 + 60 * 60), samples({24, 60, 0, 0, 0}));
    EXPECT_EQ(48000.0 * 60, samples({0, 0, 60, 0, 99}));
    EXPECT_EQ(48000.0 * 40, samples({0, 0, 0, 1000, 0}));
}

TEST(TimeCodeToSamples, LeavesSubFramesOut) {
    const SMPTETimeCode without{1, 2, 3, 4, 0};
    const SMPTETimeCode with{1, 2, 3, 4, 99};
    EXPECT_EQ(SMPTEToSamples(48000, 25, 0, 1, &without), SMPTEToSamples(48000, 25, 0, 1, &with));
    EXPECT_EQ(SMPTEToSamples(48000, 25, 0, 0, &without), SMPTEToSamples(48000, 25, 0, 1, &with));
}

TEST(TimeCodeToSamples, DropsTwoFramesInNineOfTenMinutes) {
    const SMPTETimeCode tenMinutes{0, 10, 0, 0, 0};
    EXPECT_EQ((30.0 * 600 - 18) * 48000 / ntsc, SMPTEToSamples(48000, 29.97, 1, 0, &tenMinutes));
    EXPECT_EQ(30.0 * 600 * 48000 / ntsc, SMPTEToSamples(48000, 29.97, 0, 0, &tenMinutes));
    const SMPTETimeCode nineMinutes{0, 9, 0, 0, 0};
    EXPECT_EQ((30.0 * 540 - 18) * 48000 / ntsc, SMPTEToSamples(48000, 29.97, 1, 0, &nineMinutes));
}

TEST(TimeCodeToSamples, DividesByTheRateRoundedUpToThousandths) {
    const SMPTETimeCode second{0, 0, 1, 0, 0};
    EXPECT_EQ(23.9760239 * 48000 / 23.977, SMPTEToSamples(48000, 23.9760239, 0, 0, &second));
    EXPECT_EQ(48000.0, SMPTEToSamples(48000, 25, 0, 0, &second));
}

TEST(TimeCodeToSamples, CountsNegativeFieldsBackwards) {
    const SMPTETimeCode second{0, 0, -1, 0, 0};
    EXPECT_EQ(-48000.0, SMPTEToSamples(48000, 25, 0, 0, &second));
    const SMPTETimeCode frame{0, 0, 0, -1, 0};
    EXPECT_EQ(-1920.0, SMPTEToSamples(48000, 25, 0, 0, &frame));
    const SMPTETimeCode subFrames{0, 0, 0, 0, -100};
    EXPECT_EQ(-1920.0, SMPTEToSamples(48000, 25, 0, 1, &subFrames));
    EXPECT_EQ(0.0, SMPTEToSamples(48000, 25, 0, 0, &subFrames));
}

}  // namespace
