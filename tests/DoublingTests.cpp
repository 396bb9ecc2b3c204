#include "host/Doubling.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tests/SoundInMemory.h"
#include "tests/TestAudio.h"

namespace {

CAudio Tone(double dPitch, std::int64_t lFrames) {
    CAudio audio = TestAudio::Silence(lFrames);
    for (std::int64_t l = 0; l < lFrames; ++l)
        audio.m_Channels[0][static_cast<std::size_t>(l)] = static_cast<float>(
            0.5 * std::sin(2.0 * std::numbers::pi * dPitch * static_cast<double>(l) / 48000.0));
    return audio;
}

/// Periods per second between two places, from rising zero crossings.
double Pitch(std::vector<float> const& channel, std::size_t nFrom, std::size_t nTo) {
    double dFirst = -1.0, dLast = -1.0;
    int nPeriods = -1;
    for (std::size_t i = nFrom + 1; i < nTo; ++i) {
        if (channel[i - 1] >= 0.0f || channel[i] < 0.0f) continue;
        double const dPlace =
            static_cast<double>(i) -
            static_cast<double>(channel[i]) / static_cast<double>(channel[i] - channel[i - 1]);
        if (nPeriods++ < 0) dFirst = dPlace;
        dLast = dPlace;
    }
    return nPeriods < 1 ? 0.0 : nPeriods * 48000.0 / (dLast - dFirst);
}

}  // namespace

TEST(CDoublingTest, TheDoubleIsLikeTheInputButNotACopy) {
    CAudio const input = TestAudio::Phrase(60000);
    CAudio const output = MakeDouble(input);
    EXPECT_GT(TestAudio::Power(output.m_Channels[0]), 0.3 * TestAudio::Power(input.m_Channels[0]));
    std::vector<float> const word(input.m_Channels[0].begin(), input.m_Channels[0].begin() + 12000);
    double dBest = 0.0;
    for (std::int64_t lDelay = 1200; lDelay <= 2160; lDelay += 8)
        dBest = std::max(dBest, TestAudio::Correlation(word, output.m_Channels[0], lDelay));
    EXPECT_GT(dBest, 0.8);
    EXPECT_LT(TestAudio::Correlation(input.m_Channels[0], output.m_Channels[0]), 0.6);
}

TEST(CDoublingTest, TheDoubleComesLaterByTheDelay) {
    CAudio click = TestAudio::Silence(10000);
    click.m_Channels[0][2000] = 1.0f;
    CAudio const output = MakeDouble(click);
    for (std::size_t i = 0; i < 3190; ++i) ASSERT_EQ(output.m_Channels[0][i], 0.0f) << i;
    EXPECT_GT(TestAudio::Power(output.m_Channels[0]), 0.0);
}

TEST(CDoublingTest, ThePitchIsRaisedByTheSetCents) {
    CAudio const output = MakeDouble(Tone(1000.0, 96000));
    EXPECT_NEAR(Pitch(output.m_Channels[0], 6000, 90000), 1000.0 * std::exp2(8.0 / 1200.0), 1.0);
    CAudio const lower = MakeDouble(Tone(1000.0, 96000), {.m_dDetuneCents = -20.0});
    EXPECT_NEAR(Pitch(lower.m_Channels[0], 6000, 40000), 1000.0 * std::exp2(-20.0 / 1200.0), 2.0);
}

TEST(CDoublingTest, WithoutDetuningItIsADelayOfFixedLength) {
    CAudio const input = TestAudio::Phrase(30000);
    CAudio const output = MakeDouble(input, {.m_dDetuneCents = 0.0});
    EXPECT_GT(TestAudio::Correlation(input.m_Channels[0], output.m_Channels[0], 1200 + 480), 0.999);
}

TEST(CDoublingTest, StereoStaysStereo) {
    CAudio input = TestAudio::Phrase(30000, 0, 140.0, 2);
    for (float& sample : input.m_Channels[1]) sample *= 0.25f;
    CAudio const output = MakeDouble(input);
    ASSERT_EQ(output.m_Channels.size(), 2u);
    EXPECT_NEAR(TestAudio::Power(output.m_Channels[1]) / TestAudio::Power(output.m_Channels[0]),
                0.0625, 0.001);
}

TEST(CDoublingTest, AnInputShorterThanTheDelayIsHeard) {
    CAudio const output = MakeDouble(Tone(1000.0, 480));
    EXPECT_EQ(output.Frames(), 480 + 2160);
    EXPECT_GT(TestAudio::Power(output.m_Channels[0]), 0.0);
}

TEST(CDoublingTest, EmptyInputGivesAnEmptyResult) {
    EXPECT_EQ(MakeDouble(TestAudio::Silence(0)).Frames(), 0);
    EXPECT_EQ(MakeDouble(CAudio{}).m_Channels.size(), 0u);
}

TEST(CDoublingTest, TheLevelStaysWithinTheInputs) {
    CAudio const output = MakeDouble(Tone(300.0, 96000));
    for (float sample : output.m_Channels[0]) ASSERT_LT(std::abs(sample), 0.75f);
}

TEST(CDoublingTest, TheCheckpointCanEndTheWork) {
    EXPECT_THROW(MakeDouble(TestAudio::Phrase(1000), {}, [] { throw 1; }), int);
}
