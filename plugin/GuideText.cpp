#include "plugin/GuideText.h"

#include <cstdint>
#include <iterator>

#include "plugin/TimeText.h"

namespace {

constexpr std::int32_t kDubTrack = 1;

struct CUnit {
    std::int64_t lSeconds;
    std::int64_t lMost;  ///< of them, before the next unit is taken
    char const* szName;
};

constexpr CUnit kUnits[] = {
    {60, 59, "minute"},
    {3600, 23, "hour"},
    {86400, INT64_MAX, "day"},
};

constexpr char const* kCounts[] = {"one", "two",   "three", "four", "five",
                                   "six", "seven", "eight", "nine"};

std::string AgeText(std::int64_t lAge) {
    if (lAge < kUnits[0].lSeconds) return "just now";
    CUnit const* unit = kUnits;
    while (lAge / unit->lSeconds > unit->lMost) ++unit;
    const std::int64_t lCount = lAge / unit->lSeconds;
    const std::string strCount = lCount <= static_cast<std::int64_t>(std::size(kCounts))
                                     ? kCounts[lCount - 1]
                                     : std::to_string(lCount);
    return strCount + " " + unit->szName + (lCount == 1 ? "" : "s") + " ago";
}

std::int64_t End(CTake const& take) {
    return take.lPosition + take.lFrames;
}

std::string ExtentText(CTake const& take, int nSampleRate) {
    return TimeText(take.lPosition, nSampleRate) + " to " + TimeText(End(take), nSampleRate);
}

}  // namespace

std::string GuideText(CGuide const& guide, int nSampleRate) {
    const std::string strText = "Guide: " + ExtentText(guide.take, nSampleRate);
    return guide.lAge < 0 ? strText : strText + ", " + AgeText(guide.lAge);
}

std::string WhyNotAligned(PlugInKind kind, std::int32_t nTrack, std::optional<CTake> const& guide,
                          CTake const& take, int nSampleRate) {
    if (kind != PlugInKind::APT || nTrack != kDubTrack) return {};
    if (!guide) return "No guide was captured to align the dub with.";
    if (take.lPosition < End(*guide) && guide->lPosition < End(take)) return {};
    return "The dub, " + ExtentText(take, nSampleRate) + ", does not overlap the guide, " +
           ExtentText(*guide, nSampleRate) + ".";
}
