#include "plugin/TimeText.h"

#include <gtest/gtest.h>

namespace {

TEST(TimeText, IsMinutesSecondsAndTenths) {
    EXPECT_EQ(TimeText(0, 48000), "0:00.0");
    EXPECT_EQ(TimeText(24000, 48000), "0:00.5");
    EXPECT_EQ(TimeText(9 * 44100 + 12000, 44100), "0:09.2");
    EXPECT_EQ(TimeText(61 * 96000LL, 96000), "1:01.0");
    EXPECT_EQ(TimeText(6000 * 48000LL, 48000), "100:00.0");
}

TEST(TimeText, NeverSaysMoreThanThereIs) {
    EXPECT_EQ(TimeText(60 * 48000 - 1, 48000), "0:59.9");
}

TEST(TimeText, TellsWhatLiesBeforeTheTimeline) {
    EXPECT_EQ(TimeText(-24000, 48000), "-0:00.5");
}

}  // namespace
