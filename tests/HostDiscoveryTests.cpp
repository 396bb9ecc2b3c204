#include <gtest/gtest.h>

#include "PeerHost.h"
#include "link/LinkClock.h"
#include "link/TANClientInterProcess.h"

namespace {

constexpr char szDirectory[] = "__KEL_TAN_INTERPROCESS_DIR6__";
constexpr char strNotRunning[] = "Error - Tavarin Pro is not running.";
constexpr char strLaunch[] = "Locate and launch Tavarin Pro.";

void ExpectNotRunning(CTANClientInterProcess& client) {
    EXPECT_EQ(client.GetCurrentIdFromMainDirectory(), -1);
    EXPECT_EQ(client.GetCurrentTANHost(), -1);
    EXPECT_EQ(client.m_strLastError, strNotRunning);
    EXPECT_EQ(client.m_strAdvice, strLaunch);
}

TEST(HostDiscovery, NewClientKnowsNothing) {
    const CTANClientInterProcess client;
    EXPECT_FALSE(client.m_fKeepMessages);
    EXPECT_EQ(client.m_nUpdateCount, -1);
    EXPECT_EQ(client.m_strLastError + client.m_strAdvice, "");
    EXPECT_EQ(client.m_strRegionInfo + client.m_strFileInfo, "");
}

TEST(HostDiscovery, WithoutADirectoryNoHostRuns) {
    CTANClientInterProcess client;
    ExpectNotRunning(client);
}

TEST(HostDiscovery, FreshDirectoryGivesItsHost) {
    const CTestDirectory directory(7);
    CTANClientInterProcess client;
    client.m_strLastError = client.m_strAdvice = "old";
    EXPECT_EQ(client.GetCurrentIdFromMainDirectory(), 7);
    EXPECT_EQ(client.m_strLastError, "old");
    EXPECT_EQ(client.GetCurrentTANHost(), 7);
    EXPECT_EQ(client.m_strLastError, "");
    EXPECT_EQ(client.m_strAdvice, "");
    EXPECT_EQ(directory.Get<std::uint32_t>(0), 0u);
}

TEST(HostDiscovery, HostWithoutSessionIsToldApart) {
    const CTestDirectory directory(0);
    CTANClientInterProcess client;
    client.m_strAdvice = "old";
    EXPECT_EQ(client.GetCurrentTANHost(), 0);
    EXPECT_EQ(client.m_strLastError, "No Tavarin Pro session has been selected.");
    EXPECT_EQ(client.m_strAdvice, "");
}

TEST(HostDiscovery, NegativeIdIsNoHost) {
    const CTestDirectory directory(-5);
    CTANClientInterProcess client;
    EXPECT_EQ(client.GetCurrentIdFromMainDirectory(), -5);
    EXPECT_EQ(client.GetCurrentTANHost(), -5);
    EXPECT_EQ(client.m_strLastError, strNotRunning);
}

TEST(HostDiscovery, SilentHostCountsAsNotRunning) {
    CTestDirectory directory(7);
    directory.SetHeartbeat(LinkTimeNow() - 1'000'000);
    CTANClientInterProcess client;
    ExpectNotRunning(client);
    EXPECT_EQ(directory.Get<std::uint32_t>(0), 0u);
}

TEST(HostDiscovery, HeldDirectoryLockCountsAsNotRunningAfterOneSecond) {
    CTestDirectory directory(7);
    directory.Put<std::uint32_t>(0, 1);
    CTANClientInterProcess client;
    const std::int64_t lStart = LinkTimeNow();
    EXPECT_EQ(client.GetCurrentIdFromMainDirectory(), -1);
    EXPECT_GE(LinkTimeNow() - lStart, 1'000'000);
    EXPECT_EQ(directory.Get<std::uint32_t>(0), 1u);
}

TEST(HostDiscovery, DirectoryShorterThanItsRecordIsNoHost) {
    for (std::size_t nSize = 0; nSize < 20; ++nSize) {
        const CTestSegment directory(szDirectory, nSize);
        CTANClientInterProcess client;
        EXPECT_EQ(client.GetCurrentIdFromMainDirectory(), -1) << nSize;
        client.m_nUpdateCount = 5;
        EXPECT_TRUE(client.NeedsUpdate()) << nSize;
        EXPECT_EQ(client.m_nUpdateCount, -1) << nSize;
    }
}

TEST(HostDiscovery, DirectoryOfExactlyItsRecordIsEnough) {
    CTestSegment directory(szDirectory, 20);
    directory.Put<std::int32_t>(8, 7);
    directory.Put<std::int64_t>(12, LinkTimeNow() + kMicrosecondsPerSecond);
    CTANClientInterProcess client;
    EXPECT_EQ(client.GetCurrentIdFromMainDirectory(), 7);
}

TEST(HostDiscovery, UpdateIsNeededWhenTheCounterChanged) {
    CTANClientInterProcess client;
    EXPECT_TRUE(client.NeedsUpdate());
    EXPECT_EQ(client.m_nUpdateCount, -1);

    CTestDirectory directory(7);
    directory.Put<std::uint32_t>(4, 12);
    EXPECT_TRUE(client.NeedsUpdate());
    EXPECT_EQ(client.m_nUpdateCount, 12);
    EXPECT_FALSE(client.NeedsUpdate());
    directory.Put<std::uint32_t>(4, 0xFFFFFFF0);
    EXPECT_TRUE(client.NeedsUpdate());
    EXPECT_EQ(client.m_nUpdateCount, -16);
}

TEST(HostDiscovery, CounterIsReadWithoutTheLock) {
    CTestDirectory directory(7);
    directory.Put<std::uint32_t>(0, 1);
    directory.Put<std::uint32_t>(4, 3);
    CTANClientInterProcess client;
    EXPECT_TRUE(client.NeedsUpdate());
    EXPECT_FALSE(client.NeedsUpdate());
}

TEST(HostDiscovery, HostsAreNamedByTheirId) {
    CTANClientInterProcess client;
    EXPECT_EQ(client.GetNameOfHost(3), "TAN_Host_3");
    EXPECT_EQ(client.GetNameOfHost(0), "TAN_Host_0");
    EXPECT_EQ(client.GetNameOfHost(-12), "TAN_Host_-12");
}

}  // namespace
