#include "plugin/CaptureRing.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

namespace {

// Appends frames that count from a number on, the second channel negative.
std::uint32_t AppendCounting(CCaptureRing& ring, int nFirst, std::uint32_t nFrames) {
    std::vector<float> left(nFrames);
    std::vector<float> right(nFrames);
    for (std::uint32_t nFrame = 0; nFrame < nFrames; ++nFrame) {
        left[nFrame] = static_cast<float>(nFirst + static_cast<int>(nFrame));
        right[nFrame] = -left[nFrame];
    }
    const std::array<float const*, 2> channels{left.data(), right.data()};
    return ring.Append(channels.data(), 0, nFrames);
}

TEST(CaptureRing, GivesFramesInTheirOrderBetweenTheirMarks) {
    CCaptureRing ring(2, 16);
    ASSERT_TRUE(ring.Begin(1000));
    EXPECT_EQ(AppendCounting(ring, 1, 5), 5U);
    ring.End(TakeEnd::Stopped);
    ASSERT_TRUE(ring.Begin(2000));
    EXPECT_EQ(AppendCounting(ring, 6, 2), 2U);

    std::vector<float> frames(32);
    auto mark = ring.NextMark();
    ASSERT_TRUE(mark);
    EXPECT_EQ(mark->change, TakeChange::Begin);
    EXPECT_EQ(mark->lPosition, 1000);
    EXPECT_EQ(mark->nTake, 1U);
    EXPECT_FALSE(ring.NextMark());
    ASSERT_EQ(ring.Read(frames), 5U);
    EXPECT_EQ(frames[0], 1);
    EXPECT_EQ(frames[1], -1);
    EXPECT_EQ(frames[9], -5);
    EXPECT_EQ(ring.Read(frames), 0U);
    mark = ring.NextMark();
    ASSERT_TRUE(mark);
    EXPECT_EQ(mark->change, TakeChange::End);
    mark = ring.NextMark();
    ASSERT_TRUE(mark);
    EXPECT_EQ(mark->lPosition, 2000);
    EXPECT_EQ(mark->nTake, 2U);
    EXPECT_EQ(ring.Read(frames), 2U);
    EXPECT_EQ(frames[0], 6);
}

TEST(CaptureRing, TakesWhatFitsAndStillTheEnd) {
    CCaptureRing ring(2, 8);
    ASSERT_TRUE(ring.Begin(0));
    EXPECT_EQ(AppendCounting(ring, 1, 12), 8U);
    EXPECT_EQ(AppendCounting(ring, 9, 1), 0U);
    ring.End(TakeEnd::Overflow);
    std::vector<float> frames(32);
    ASSERT_TRUE(ring.NextMark());
    EXPECT_EQ(ring.Read(frames), 8U);
    const auto mark = ring.NextMark();
    ASSERT_TRUE(mark);
    EXPECT_EQ(mark->end, TakeEnd::Overflow);
}

TEST(CaptureRing, RefusesABeginningWhoseEndWouldNotFit) {
    CCaptureRing ring(1, 8);
    int nTakes = 0;
    while (ring.Begin(nTakes)) {
        ring.End(TakeEnd::Stopped);
        ++nTakes;
    }
    EXPECT_EQ(nTakes, 32);
    ASSERT_TRUE(ring.NextMark());
    ASSERT_TRUE(ring.NextMark());
    EXPECT_TRUE(ring.Begin(0));
}

TEST(CaptureRing, LosesNothingBetweenTwoThreads) {
    constexpr int kFrames = 300000;
    CCaptureRing ring(2, 1024);
    std::thread audio([&ring] {
        int nNext = 0;
        while (nNext < kFrames) {
            // A take of a new number every 1000 frames.
            if (nNext % 1000 == 0 && !ring.Begin(nNext)) continue;
            int nDone = 0;
            while (nDone < 1000) {
                nDone += static_cast<int>(AppendCounting(
                    ring, nNext + nDone, static_cast<std::uint32_t>(std::min(64, 1000 - nDone))));
                if (nDone < 1000 && ring.Room() == 0) std::this_thread::yield();
            }
            nNext += 1000;
            ring.End(TakeEnd::Stopped);
        }
    });
    std::vector<float> frames(2 * 100);
    int nSeen = 0;
    int nEnds = 0;
    bool fRight = true;
    while (nEnds < kFrames / 1000) {
        if (const auto mark = ring.NextMark()) {
            if (mark->change == TakeChange::End) {
                ++nEnds;
            } else {
                fRight = fRight && mark->lPosition == nSeen;
            }
            continue;
        }
        const std::size_t nRead = ring.Read(frames);
        for (std::size_t nFrame = 0; nFrame < nRead; ++nFrame, ++nSeen) {
            fRight = fRight && frames[2 * nFrame] == static_cast<float>(nSeen) &&
                     frames[2 * nFrame + 1] == -frames[2 * nFrame];
        }
        if (nRead == 0) std::this_thread::yield();
    }
    audio.join();
    EXPECT_TRUE(fRight);
    EXPECT_EQ(nSeen, kFrames);
}

}  // namespace
