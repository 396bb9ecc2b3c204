#include "host/ScriptClock.h"

#include <gtest/gtest.h>

#include <thread>

using namespace std::chrono_literals;

TEST(ScriptClock, WithoutAScriptNothingIsOverOrStuck) {
    CScriptClock clock;
    EXPECT_FALSE(clock.IsOver());
    EXPECT_FALSE(clock.IsStuck());
    clock.Start(0ms);
    clock.Stop();
    EXPECT_FALSE(clock.IsOver());
    EXPECT_FALSE(clock.IsStuck());
}

TEST(ScriptClock, AScriptIsStuckWhenItHasRunForTwiceItsTime) {
    CScriptClock clock;
    clock.Start(1h);
    EXPECT_FALSE(clock.IsOver());
    EXPECT_FALSE(clock.IsStuck());
    clock.Start(1ms);
    while (!clock.IsStuck()) std::this_thread::yield();
    EXPECT_TRUE(clock.IsOver());
}

TEST(ScriptClock, NoScriptIsStuckWhileTheHostWorksForIt) {
    CScriptClock clock;
    clock.Start(0ms);
    {
        const CScriptClock::CPause pause(clock);
        EXPECT_FALSE(clock.IsStuck());
    }
    EXPECT_TRUE(clock.IsOver());
}

TEST(ScriptClock, WorkOfTheHostThatBeginsTooLateIsTold) {
    CScriptClock clock;
    clock.Start(0ms);
    EXPECT_TRUE(CScriptClock::CPause(clock).IsTooLate());
    clock.Start(1h);
    EXPECT_FALSE(CScriptClock::CPause(clock).IsTooLate());
}

TEST(ScriptClock, WorkOfTheHostIsNotCounted) {
    CScriptClock clock;
    clock.Start(2s);
    {
        const CScriptClock::CPause pause(clock);
        std::this_thread::sleep_for(2100ms);
    }
    EXPECT_FALSE(clock.IsOver());
}
