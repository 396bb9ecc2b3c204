#include "tools/UsualTimecode.h"

#include <gtest/gtest.h>

namespace {

TEST(UsualTimecode, RatesAreThoseThatPeopleMean) {
    EXPECT_DOUBLE_EQ(UsualFrameRate(29.97).dPerSecond, 30000.0 / 1001.0);
    EXPECT_DOUBLE_EQ(UsualFrameRate(23.98).dPerSecond, 24000.0 / 1001.0);
    EXPECT_EQ(UsualFrameRate(29.97).nLabels, 30);
    EXPECT_EQ(UsualFrameRate(29.97).nDropped, 2);
    EXPECT_EQ(UsualFrameRate(59.94).nDropped, 4);
    EXPECT_EQ(UsualFrameRate(23.976).nDropped, 0);
    EXPECT_EQ(UsualFrameRate(25).nLabels, 25);
    EXPECT_EQ(UsualFrameRate(25).nDropped, 0);
    EXPECT_EQ(UsualFrameRate(12.5).nLabels, 0);
    EXPECT_EQ(UsualFrameRate(1e300).nLabels, 0);
}

// A clock that shows one label after the other for a day, skipping those that drop-frame leaves
// out.
void ExpectEveryLabelOfADay(double dTyped, bool fDrop) {
    const CFrameRate rate = UsualFrameRate(dTyped);
    CTimeLabel label{};
    std::int64_t nFrame = 0;
    for (; label.nHours < 24; ++nFrame) {
        ASSERT_TRUE(LabelExists(rate, fDrop, label)) << nFrame;
        ASSERT_EQ(FrameOfLabel(rate, fDrop, label), nFrame);
        if (++label.nFrames == rate.nLabels) label.nFrames = 0, ++label.nSeconds;
        if (label.nSeconds == 60) label.nSeconds = 0, ++label.nMinutes;
        if (label.nMinutes == 60) label.nMinutes = 0, ++label.nHours;
        if (LabelExists(rate, fDrop, label)) continue;
        ASSERT_TRUE(fDrop);
        ASSERT_EQ(label.nSeconds, 0);
        label.nFrames += rate.nDropped;
    }
    const std::int64_t nSkipped = fDrop ? rate.nDropped * 54 * 24 : 0;
    EXPECT_EQ(nFrame, std::int64_t{86400} * rate.nLabels - nSkipped) << "54 minutes of an hour";
}

TEST(UsualTimecode, EveryLabelOfADayHasItsFrame) {
    ExpectEveryLabelOfADay(25, false);
    ExpectEveryLabelOfADay(29.97, false);
    ExpectEveryLabelOfADay(29.97, true);
    ExpectEveryLabelOfADay(59.94, true);
}

TEST(UsualTimecode, LabelsOfFramesGoRoundTheDroppedOnes) {
    const CFrameRate rate = UsualFrameRate(29.97);
    EXPECT_EQ(LabelOfFrame(rate, true, 1799), "00:00:59;29");
    EXPECT_EQ(LabelOfFrame(rate, true, 1800), "00:01:00;02");
    EXPECT_EQ(LabelOfFrame(rate, true, 17981), "00:09:59;29");
    EXPECT_EQ(LabelOfFrame(rate, true, 17982), "00:10:00;00");
    EXPECT_EQ(LabelOfFrame(rate, false, 1800), "00:01:00:00");
    EXPECT_EQ(LabelOfFrame(rate, false, -1), "-00:00:00:01");
    EXPECT_EQ(LabelOfFrame(UsualFrameRate(25), true, 25), "00:00:01:00") << "25 has no drop-frame";
}

TEST(UsualTimecode, SamplesAndFramesGoBothWays) {
    for (const double dTyped : {23.976, 24.0, 25.0, 29.97, 30.0, 59.94, 60.0})
        for (const double dSampleRate : {44100.0, 48000.0, 96000.0})
            for (std::int64_t nFrame = -3; nFrame < 6'000'000; nFrame += 997) {
                const CFrameRate rate = UsualFrameRate(dTyped);
                const double dSample = SampleOfFrame(rate, dSampleRate, nFrame);
                ASSERT_EQ(FrameAtSample(rate, dSampleRate, dSample), nFrame);
                ASSERT_EQ(FrameAtSample(rate, dSampleRate, dSample - 1), nFrame - 1);
            }
}

}  // namespace
