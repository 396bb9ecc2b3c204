#include "plugin/SharedGuide.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "plugin/GuideText.h"
#include "tests/TemporaryDirectory.h"

namespace {

constexpr int kRate = 48000;

CTake TakeAt(std::int64_t lPosition, std::int64_t lFrames) {
    CTake take;
    take.lPosition = lPosition;
    take.lFrames = lFrames;
    return take;
}

struct SharedGuide : testing::Test {
    CTemporaryDirectory place;
    std::shared_ptr<CSharedGuide> shared = CSharedGuide::Join();

    CTake TakeOfAge(std::int64_t lPosition, std::chrono::minutes age) {
        CTake take = TakeAt(lPosition, 100);
        take.strFile = place.File(std::to_string(lPosition));
        place.Write(std::to_string(lPosition), "audio");
        std::filesystem::last_write_time(take.strFile,
                                         std::filesystem::file_time_type::clock::now() - age);
        return take;
    }
};

TEST_F(SharedGuide, IsOneForAllAndForgottenWithTheLast) {
    std::shared_ptr<CSharedGuide> other = CSharedGuide::Join();
    EXPECT_FALSE(other->Last().has_value());
    shared->Put(TakeAt(700, 100));
    shared.reset();
    ASSERT_TRUE(other->Last().has_value());
    EXPECT_EQ(other->Last()->take.lPosition, 700);
    other.reset();
    EXPECT_FALSE(CSharedGuide::Join()->Last().has_value());
}

TEST_F(SharedGuide, IsTheNewestOfThoseThatSessionsKept) {
    using std::chrono::minutes;
    shared->Offer(TakeOfAge(1, minutes(50)));
    shared->Offer(TakeOfAge(2, minutes(20)));
    shared->Offer(TakeOfAge(3, minutes(30)));
    // Its file has gone.
    shared->Offer(TakeAt(4, 100));
    ASSERT_TRUE(shared->Last().has_value());
    EXPECT_EQ(shared->Last()->take.lPosition, 2);
    EXPECT_GE(shared->Last()->lAge, 20 * 60);
}

TEST_F(SharedGuide, IsTheLastThatTheHostGotWhateverItsAge) {
    using std::chrono::minutes;
    shared->Put(TakeOfAge(1, minutes(1)));
    shared->Put(TakeOfAge(2, minutes(9)));
    EXPECT_EQ(shared->Last()->take.lPosition, 2);
}

TEST_F(SharedGuide, HasNoAgeWithoutItsFile) {
    shared->Put(TakeAt(700, 100));
    EXPECT_EQ(shared->Last()->lAge, -1);
}

TEST(GuideText, TellsWhereTheGuideIsAndHowOld) {
    CGuide guide{TakeAt(9 * kRate + 9600, 5 * kRate + 24000)};
    EXPECT_EQ(GuideText(guide, kRate), "Guide: 0:09.2 to 0:14.7");
    const struct {
        std::int64_t lAge;
        char const* szAge;
    } ages[] = {
        {0, "just now"},
        {59, "just now"},
        {60, "one minute ago"},
        {179, "two minutes ago"},
        {9 * 60, "nine minutes ago"},
        {10 * 60, "10 minutes ago"},
        {3599, "59 minutes ago"},
        {3600, "one hour ago"},
        {86399, "23 hours ago"},
        {3 * 86400, "three days ago"},
    };
    for (auto const& age : ages) {
        guide.lAge = age.lAge;
        EXPECT_EQ(GuideText(guide, kRate), std::string("Guide: 0:09.2 to 0:14.7, ") + age.szAge);
    }
}

TEST(GuideText, TellsWhyADubCannotBeAligned) {
    const auto why = [](std::optional<CTake> const& guide, CTake const& dub) {
        return WhyNotAligned(PlugInKind::APT, 1, guide, dub, kRate);
    };
    const CTake guide = TakeAt(kRate, kRate);
    EXPECT_EQ(why(std::nullopt, guide), "No guide was captured to align the dub with.");
    EXPECT_EQ(why(guide, TakeAt(2 * kRate, kRate)),
              "The dub, 0:02.0 to 0:03.0, does not overlap the guide, 0:01.0 to 0:02.0.");
    EXPECT_NE(why(guide, TakeAt(0, kRate)), "");
    EXPECT_EQ(why(guide, TakeAt(2 * kRate - 1, kRate)), "");
    EXPECT_EQ(why(guide, TakeAt(0, kRate + 1)), "");
    EXPECT_EQ(why(guide, TakeAt(0, 5 * kRate)), "");
}

TEST(GuideText, SaysNothingOfWhatIsNoDub) {
    const CTake take = TakeAt(0, 10);
    EXPECT_EQ(WhyNotAligned(PlugInKind::APT, 0, std::nullopt, take, kRate), "");
    EXPECT_EQ(WhyNotAligned(PlugInKind::Link, 1, std::nullopt, take, kRate), "");
    EXPECT_EQ(WhyNotAligned(PlugInKind::Doubler, 1, std::nullopt, take, kRate), "");
}

}  // namespace
