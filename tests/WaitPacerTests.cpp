#include "link/WaitPacer.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t kExpected = 0;

int WaitsWithoutSpin(CSpinHabit& habit) {
    int nWaits = 0;
    while (!habit.ShouldSpin()) ++nWaits;
    return nWaits;
}

TEST(SpinHabit, SpinsWhileItPays) {
    CSpinHabit habit;
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(habit.ShouldSpin());
        habit.HasPaid();
    }
}

TEST(SpinHabit, GoesWithoutForLongerEachTimeItWasInVainUpToALimit) {
    CSpinHabit habit;
    for (int nExpected : {1, 2, 4, 8, 16, 16, 16}) {
        ASSERT_TRUE(habit.ShouldSpin());
        habit.WasInVain();
        EXPECT_EQ(WaitsWithoutSpin(habit), nExpected);
    }
}

TEST(SpinHabit, StartsAfreshWhenItPaysAgain) {
    CSpinHabit habit;
    for (int i = 0; i < 5; ++i) {
        habit.WasInVain();
        WaitsWithoutSpin(habit);
    }
    habit.HasPaid();
    habit.WasInVain();
    EXPECT_EQ(WaitsWithoutSpin(habit), 1);
}

// A word that never changes: the pacer comes back however often it is asked.
TEST(WaitPacer, ComesBackFromEveryPause) {
    const std::uint32_t nWord = kExpected;
    CSpinHabit habit;
    {
        CWaitPacer pacer(&nWord, 1, 1, 1, habit);
        for (int i = 0; i < 200; ++i) pacer.Pause(kExpected, 1);
    }
    EXPECT_FALSE(habit.ShouldSpin());
}

TEST(WaitPacer, TellsTheHabitThatAShortWaitHasPaid) {
    const std::uint32_t nWord = kExpected;
    CSpinHabit habit;
    { const CWaitPacer pacer(&nWord, 1'000'000, 1, 1, habit); }
    EXPECT_TRUE(habit.ShouldSpin());
}

TEST(WaitPacer, LeavesTheHabitAloneWhereItShallNotSpin) {
    const std::uint32_t nWord = kExpected;
    CSpinHabit habit;
    habit.WasInVain();
    {
        CWaitPacer pacer(&nWord, 0, 1, 1, habit);
        pacer.Pause(kExpected, 1);
    }
    EXPECT_EQ(WaitsWithoutSpin(habit), 1);
}

TEST(WaitPacer, DoesNotSleepOnAWordThatHasChanged) {
    const std::uint32_t nWord = kExpected + 1;
    CSpinHabit habit;
    habit.WasInVain();
    CWaitPacer pacer(&nWord, 1, 1, 1'000'000'000, habit);
    pacer.Pause(kExpected, 1'000'000'000);
}

}  // namespace
