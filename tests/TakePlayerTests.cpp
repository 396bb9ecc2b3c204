#include "plugin/TakePlayer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

constexpr int kRate = 48000;
constexpr std::int64_t kFade = 240;
constexpr float kInput = 0.25F;

std::unique_ptr<CReturnedAudio> Audio(std::int64_t lPosition, std::int64_t lFrames) {
    auto audio = std::make_unique<CReturnedAudio>();
    audio->lPosition = lPosition;
    audio->lFrames = lFrames;
    audio->channels.resize(1);
    for (std::int64_t lFrame = 0; lFrame < lFrames; ++lFrame) {
        audio->channels[0].push_back(1 + static_cast<float>(lFrame) / 65536);
    }
    return audio;
}

struct TakePlayer : testing::Test {
    CTakePlayer player{kRate};

    // What is heard from a position on, in blocks of that length.
    std::vector<float> Hear(std::int64_t lPosition, std::uint32_t nFrames,
                            std::uint32_t nBlock = 64, bool fOn = true) {
        std::vector<float> heard(nFrames, kInput);
        float* channel = heard.data();
        for (std::uint32_t nDone = 0; nDone < nFrames; nDone += nBlock) {
            player.TakeOver();
            player.Play(fOn, lPosition + nDone, &channel, 1, nDone,
                        std::min(nBlock, nFrames - nDone));
        }
        return heard;
    }
};

TEST_F(TakePlayer, PlaysEachSampleAtItsPlace) {
    for (const std::uint32_t nBlock : {1U, 7U, 64U, 1024U}) {
        player.Give(Audio(5000, 2000));
        const std::vector<float> heard = Hear(4000, 4000, nBlock);
        player.Collect();
        for (std::int64_t lAt = 0; lAt < 4000; ++lAt) {
            const std::int64_t lFrame = 4000 + lAt - 5000;
            if (lFrame < 0 || lFrame >= 2000) {
                ASSERT_EQ(heard[lAt], kInput) << lAt;
            } else if (lFrame >= kFade && lFrame < 2000 - kFade) {
                ASSERT_EQ(heard[lAt], 1 + static_cast<float>(lFrame) / 65536) << lAt;
            }
        }
    }
}

TEST_F(TakePlayer, FadesEvenlyAtBothEnds) {
    player.Give(Audio(1000, 2000));
    const std::vector<float> heard = Hear(0, 4000);
    for (std::int64_t lFrame = 0; lFrame < kFade; ++lFrame) {
        const float level = static_cast<float>(lFrame + 1) / kFade;
        const float first = 1 + static_cast<float>(lFrame) / 65536;
        ASSERT_NEAR(heard[1000 + lFrame], kInput + level * (first - kInput), 1e-6) << lFrame;
        const float last = 1 + static_cast<float>(1999 - lFrame) / 65536;
        ASSERT_NEAR(heard[2999 - lFrame], kInput + level * (last - kInput), 1e-6) << lFrame;
    }
}

TEST_F(TakePlayer, FadesInWhereTheTimelineJumpsTo) {
    player.Give(Audio(0, 10000));
    Hear(0, 1000);
    player.Jump();
    const std::vector<float> heard = Hear(5000, 1000);
    EXPECT_NEAR(heard[0], kInput + (1 + 5000 / 65536.0 - kInput) / kFade, 1e-6);
    EXPECT_EQ(heard[kFade], 1 + static_cast<float>(5000 + kFade) / 65536);
}

TEST_F(TakePlayer, FadesWhenItIsSwitchedOff) {
    player.Give(Audio(0, 10000));
    Hear(0, 1000);
    const std::vector<float> heard = Hear(1000, 1000, 64, false);
    for (std::int64_t lAt = 1; lAt < kFade; ++lAt) ASSERT_LT(heard[lAt], heard[lAt - 1]) << lAt;
    EXPECT_EQ(heard[kFade], kInput);
    EXPECT_EQ(heard[999], kInput);
}

TEST_F(TakePlayer, HalvesAFileThatIsTooShortForItsFades) {
    player.Give(Audio(500, 9));
    const std::vector<float> heard = Hear(0, 1000);
    EXPECT_EQ(heard[499], kInput);
    EXPECT_NEAR(heard[500], kInput + 0.25 * (1 - kInput), 1e-6);
    EXPECT_EQ(heard[504], 1 + 4.0F / 65536);
    EXPECT_NEAR(heard[508], kInput + 0.25 * (1 + 8 / 65536.0 - kInput), 1e-6);
    EXPECT_EQ(heard[509], kInput);
}

TEST_F(TakePlayer, PlaysTheFileThatWasGivenLast) {
    player.Give(Audio(0, 1000));
    player.Give(Audio(100000, 1000));
    EXPECT_EQ(Hear(0, 1000)[500], kInput);
    player.Give(nullptr);
    player.Collect();
    EXPECT_EQ(Hear(100000, 1000)[500], kInput);
}

TEST_F(TakePlayer, PassesTheInputOnAsLongAsThereIsNothing) {
    for (const float sample : Hear(0, 1000)) ASSERT_EQ(sample, kInput);
}

}  // namespace
