#include "host/Alignment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

#include "tests/AllocationLimit.h"
#include "tests/SoundInMemory.h"
#include "tests/TestAudio.h"

TEST(CAlignmentTest, AKnownShiftIsFoundToTheSampleForTheSameVoice) {
    CAudio const guide = TestAudio::Phrase(60000);
    for (std::int64_t lShift : {0, 1, 7, 100, 333, 4321, 11000, -50, -3210})
        EXPECT_LE(std::abs(FindDubLag(guide, TestAudio::Phrase(60000, lShift)) - lShift), 2)
            << lShift;
}

TEST(CAlignmentTest, AnotherVoiceIsAlignedWithinAFewSamples) {
    CAudio const guide = TestAudio::Phrase(60000, 0, 140.0);
    for (std::int64_t lShift : {0, 500, 4321, -3210}) {
        std::int64_t const lLag = FindDubLag(guide, TestAudio::Phrase(60000, lShift, 210.0));
        EXPECT_LE(std::abs(lLag - lShift), 48) << lShift << " found as " << lLag;
    }
}

TEST(CAlignmentTest, LengthsAndLevelsMayDiffer) {
    CAudio const guide = TestAudio::Phrase(50000);
    CAudio dub = TestAudio::Phrase(120000, 30000);
    for (float& sample : dub.m_Channels[0]) sample *= 0.05f;
    EXPECT_LE(std::abs(FindDubLag(guide, dub) - 30000), 5);
    EXPECT_LE(std::abs(FindDubLag(dub, guide) + 30000), 5);
}

TEST(CAlignmentTest, TheResultLiesOnTheGuideAndIsAsLong) {
    CAudio const guide = TestAudio::Phrase(50000);
    CAudio const dub = TestAudio::Phrase(70000, 9000, 140.0, 2);
    CAudio const aligned = AlignDub(guide, dub);
    ASSERT_EQ(aligned.Frames(), 50000);
    ASSERT_EQ(aligned.m_Channels.size(), 2u);
    EXPECT_EQ(aligned.m_nSampleRate, 48000);
    CAudio const expected = TestAudio::Phrase(50000);
    EXPECT_GT(TestAudio::Correlation(expected.m_Channels[0], aligned.m_Channels[0]), 0.99);
    EXPECT_EQ(aligned.m_Channels[0], aligned.m_Channels[1]);
}

TEST(CAlignmentTest, WhereTheDubHasNothingThereIsSilence) {
    CAudio const guide = TestAudio::Phrase(60000);
    CAudio dub = TestAudio::Phrase(60000, -3000);
    dub.m_Channels[0].resize(40000);
    CAudio const aligned = AlignDub(guide, dub);
    ASSERT_EQ(aligned.Frames(), 60000);
    for (std::size_t i = 44000; i < 60000; ++i) ASSERT_EQ(aligned.m_Channels[0][i], 0.0f);
}

TEST(CAlignmentTest, ADubThatHasEndedBeforeTheLoudestPartOfTheGuideIsListenedToAsSilence) {
    CAudio guide = TestAudio::Silence(60000, 1, 1000);
    TestAudio::AddBurst(guide, 50000, 5000, 50.0, 0.9);
    CAudio dub = TestAudio::Silence(1000, 1, 1000);
    TestAudio::AddBurst(dub, 100, 800, 50.0, 0.9);
    EXPECT_EQ(AlignDub(guide, dub).Frames(), 60000);
    EXPECT_EQ(AlignDub(dub, guide).Frames(), 1000);
}

TEST(CAlignmentTest, SilenceAndEmptinessGiveNoShift) {
    CAudio const voice = TestAudio::Phrase(20000);
    CAudio const silence = TestAudio::Silence(30000);
    CAudio const nothing = TestAudio::Silence(0);
    EXPECT_EQ(FindDubLag(silence, voice), 0);
    EXPECT_EQ(FindDubLag(voice, silence), 0);
    EXPECT_EQ(FindDubLag(voice, nothing), 0);
    EXPECT_EQ(AlignDub(voice, silence).Frames(), 20000);
    EXPECT_EQ(TestAudio::Power(AlignDub(voice, silence).m_Channels[0]), 0.0);
    EXPECT_EQ(AlignDub(nothing, voice).Frames(), 0);
    EXPECT_EQ(AlignDub(voice, CAudio{}).m_Channels.size(), 0u);
}

TEST(CAlignmentTest, ASilentGuideKeepsTheDubInPlace) {
    CAudio const voice = TestAudio::Phrase(60000);
    CAudio const aligned = AlignDub(TestAudio::Silence(60000), voice);
    EXPECT_EQ(aligned.m_Channels, voice.m_Channels);
}

TEST(CAlignmentTest, SamplesThatAreNoNumbersCountAsSilence) {
    CAudio guide = TestAudio::Phrase(20000);
    guide.m_Channels[0][100] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_LE(std::abs(FindDubLag(guide, TestAudio::Phrase(20000, 1000)) - 1000), 48);
}

TEST(CAlignmentTest, TheCheckpointCanEndTheSearch) {
    CAudio const guide = TestAudio::Phrase(60000);
    EXPECT_THROW(FindDubLag(guide, guide, [] { throw 1; }), int);
}

TEST(CAlignmentTest, VeryShortSoundsAreHandled) {
    for (std::int64_t lFrames : {1, 2, 15, 255, 257}) {
        CAudio audio = TestAudio::Silence(lFrames);
        audio.m_Channels[0][0] = 1.0f;
        EXPECT_EQ(AlignDub(audio, audio).Frames(), lFrames);
    }
}

namespace {

/// A sound of any length that takes no memory: noise that is louder in some seconds than in others.
class CEndlessSound : public CSound {
public:
    explicit CEndlessSound(std::int64_t lShift) : m_lShift(lShift) {}

    int SampleRate() const override { return 8000; }
    std::size_t Channels() const override { return 1; }
    std::int64_t Frames() const override { return kFrames; }

    CAudio Read(std::int64_t lStart, std::int64_t lFrames) override {
        CAudio block = TestAudio::Silence(lFrames, 1, 8000);
        for (std::int64_t l = 0; l < lFrames; ++l) {
            std::int64_t const lAt = lStart + l - m_lShift;
            if (lStart + l < 0 || lStart + l >= kFrames || lAt < 0) continue;
            std::uint64_t const nWord =
                (static_cast<std::uint64_t>(lAt) / 2000 + 1) * 0x9E3779B97F4A7C15u;
            float const level = static_cast<float>(nWord >> 56) / 256.0f;
            block.m_Channels[0][static_cast<std::size_t>(l)] = lAt % 2 == 0 ? level : -level;
        }
        return block;
    }

    static constexpr std::int64_t kFrames = (std::int64_t{1} << 24) + 100'000;

private:
    std::int64_t m_lShift;
};

}  // namespace

TEST(CAlignmentTest, ALongDubIsAlignedBlockByBlockInLittleMemory) {
    CEndlessSound guide(0), dub(1234);
    std::int64_t lFrames = 0;
    {
        CAllocationLimit const limit(std::size_t{8} << 20);
        EXPECT_LE(std::abs(FindDubLag(guide, dub) - 1234), 2);
        AlignDub(guide, dub, [&](CAudio const& block) { lFrames += block.Frames(); });
    }
    EXPECT_EQ(lFrames, CEndlessSound::kFrames);
}

TEST(CAlignmentTest, ALongVoiceIsDoubledBlockByBlockInLittleMemory) {
    CEndlessSound voice(0);
    std::int64_t lFrames = 0;
    CAllocationLimit const limit(std::size_t{8} << 20);
    MakeDouble(voice, {}, [&](CAudio const& block) { lFrames += block.Frames(); });
    EXPECT_GT(lFrames, CEndlessSound::kFrames);
}
