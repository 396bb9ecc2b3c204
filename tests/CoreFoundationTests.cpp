#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

struct Release {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

template <typename Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, Release>;

Owned<CFStringRef> String(const char* text) {
    return Owned<CFStringRef>(
        CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8));
}

Owned<CFStringRef> String(const std::string& bytes, bool external) {
    return Owned<CFStringRef>(CFStringCreateWithBytes(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
        static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF8, external));
}

Owned<CFDataRef> Data(const std::vector<UInt8>& bytes) {
    return Owned<CFDataRef>(
        CFDataCreate(kCFAllocatorDefault, bytes.data(), static_cast<CFIndex>(bytes.size())));
}

Owned<CFMutableDataRef> MutableData(CFIndex capacity) {
    return Owned<CFMutableDataRef>(CFDataCreateMutable(kCFAllocatorDefault, capacity));
}

std::vector<UInt8> BytesOf(CFDataRef data) {
    const UInt8* bytes = CFDataGetBytePtr(data);
    return {bytes, bytes + CFDataGetLength(data)};
}

CFIndex LengthOf(const char* text) {
    return CFStringGetLength(String(text).get());
}

SInt32 IntValueOf(const char* text) {
    return CFStringGetIntValue(String(text).get());
}

TEST(CoreFoundationString, CountsLengthInUtf16CodeUnits) {
    EXPECT_EQ(LengthOf(""), 0);
    EXPECT_EQ(LengthOf("take.wav"), 8);
    EXPECT_EQ(LengthOf("\xC3\xA4"), 1);
    EXPECT_EQ(LengthOf("\xE2\x82\xAC"), 1);
    EXPECT_EQ(LengthOf("\xF0\x9F\x8E\xA4"), 2);
}

TEST(CoreFoundationString, RefusesMalformedUtf8) {
    for (const char* text : {"\x80", "a\xC3", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80",
                             "\xF4\x90\x80\x80", "\xFF", "ok\xFEok"}) {
        EXPECT_EQ(String(text), nullptr) << text;
    }
}

TEST(CoreFoundationString, RefusesANullTextAndAnotherEncoding) {
    constexpr CFStringEncoding macRoman = 0;
    const UInt8 letter = 'a';
    EXPECT_EQ(String(nullptr), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "a", macRoman), nullptr);
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, &letter, 1, macRoman, false), nullptr);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(1, macRoman), kCFNotFound);
    char buffer[8];
    EXPECT_FALSE(CFStringGetCString(CFSTR("a"), buffer, sizeof buffer, macRoman));
    EXPECT_EQ(CFStringGetCStringPtr(CFSTR("a"), macRoman), nullptr);
}

TEST(CoreFoundationString, TakesBytesWithZerosInside) {
    const auto string = String(std::string("a\0b", 3), false);
    EXPECT_EQ(CFStringGetLength(string.get()), 3);
    EXPECT_EQ(CFStringGetCStringPtr(string.get(), kCFStringEncodingUTF8), nullptr);
    EXPECT_FALSE(CFEqual(string.get(), CFSTR("a")));
}

TEST(CoreFoundationString, DropsAByteOrderMarkOfAnExternalRepresentationOnly) {
    EXPECT_EQ(CFStringGetLength(String("\xEF\xBB\xBFx", true).get()), 1);
    EXPECT_EQ(CFStringGetLength(String("\xEF\xBB\xBFx", false).get()), 2);
}

TEST(CoreFoundationString, TakesNoBytesAtAll) {
    const Owned<CFStringRef> string(
        CFStringCreateWithBytes(kCFAllocatorDefault, nullptr, 0, kCFStringEncodingUTF8, false));
    ASSERT_NE(string, nullptr);
    EXPECT_EQ(CFStringGetLength(string.get()), 0);
}

TEST(CoreFoundationString, BoundsItsSizeAtThreeBytesACodeUnit) {
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(0, kCFStringEncodingUTF8), 0);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(10, kCFStringEncodingUTF8), 30);
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(LONG_MAX / 3 + 1, kCFStringEncodingUTF8),
              kCFNotFound);
}

TEST(CoreFoundationString, GivesItsBytesBackWhenTheTerminatorFitsToo) {
    const auto string = String(
        "\xC3\xA4"
        "b");
    char buffer[4] = {'#', '#', '#', '#'};
    EXPECT_FALSE(CFStringGetCString(string.get(), buffer, 3, kCFStringEncodingUTF8));
    EXPECT_EQ(buffer[0], '#');
    ASSERT_TRUE(CFStringGetCString(string.get(), buffer, 4, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer,
                 "\xC3\xA4"
                 "b");
    EXPECT_FALSE(CFStringGetCString(string.get(), buffer, -1, kCFStringEncodingUTF8));
    EXPECT_STREQ(CFStringGetCStringPtr(string.get(), kCFStringEncodingUTF8),
                 "\xC3\xA4"
                 "b");
}

TEST(CoreFoundationString, ReadsTheNumberThatItBeginsWith) {
    EXPECT_EQ(IntValueOf("42"), 42);
    EXPECT_EQ(IntValueOf(" \t-7 tracks"), -7);
    EXPECT_EQ(IntValueOf("+3.9"), 3);
    EXPECT_EQ(IntValueOf(""), 0);
    EXPECT_EQ(IntValueOf("   "), 0);
    EXPECT_EQ(IntValueOf("-"), 0);
    EXPECT_EQ(IntValueOf("+-3"), 0);
    EXPECT_EQ(IntValueOf("--3"), 0);
    EXPECT_EQ(IntValueOf("x1"), 0);
}

TEST(CoreFoundationString, StopsAtTheEndsOfThe32BitRange) {
    EXPECT_EQ(IntValueOf("2147483647"), INT_MAX);
    EXPECT_EQ(IntValueOf("2147483648"), INT_MAX);
    EXPECT_EQ(IntValueOf("-2147483648"), INT_MIN);
    EXPECT_EQ(IntValueOf("-2147483649"), INT_MIN);
    EXPECT_EQ(IntValueOf("99999999999999999999999999"), INT_MAX);
    EXPECT_EQ(IntValueOf("-99999999999999999999999999"), INT_MIN);
}

TEST(CoreFoundationString, KeepsOneConstantPerText) {
    const CFStringRef constant = CFSTR("AutoSwitch");
    EXPECT_EQ(constant, CFSTR("AutoSwitch"));
    EXPECT_NE(constant, CFSTR("Other"));
    CFRelease(constant);
    CFRelease(constant);
    EXPECT_EQ(CFGetRetainCount(constant), std::numeric_limits<CFIndex>::max());
    EXPECT_EQ(CFStringGetLength(constant), 10);
}

TEST(CoreFoundationObject, CountsItsOwners) {
    const auto string = String("x");
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
    EXPECT_EQ(CFRetain(string.get()), string.get());
    EXPECT_EQ(CFGetRetainCount(string.get()), 2);
    CFRelease(string.get());
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
}

TEST(CoreFoundationObject, CountsItsOwnersFromSeveralThreads) {
    const auto string = String("x");
    const auto retainAndRelease = [&string] {
        for (int round = 0; round < 10000; ++round) CFRelease(CFRetain(string.get()));
    };
    std::thread other(retainAndRelease);
    retainAndRelease();
    other.join();
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
}

TEST(CoreFoundationObject, ComparesByKindAndContents) {
    EXPECT_TRUE(CFEqual(String("x").get(), CFSTR("x")));
    EXPECT_FALSE(CFEqual(String("x").get(), CFSTR("X")));
    EXPECT_TRUE(CFEqual(Data({1, 2}).get(), Data({1, 2}).get()));
    EXPECT_FALSE(CFEqual(Data({1, 2}).get(), Data({1, 3}).get()));
    EXPECT_FALSE(CFEqual(Data({'x'}).get(), CFSTR("x")));
}

TEST(CoreFoundationObject, StopsTheProcessForANullObject) {
    EXPECT_DEATH(CFRelease(nullptr), "object != nullptr");
    EXPECT_DEATH(CFStringGetLength(nullptr), "string != nullptr");
}

TEST(CoreFoundationData, CopiesTheBytesThatItIsMadeFrom) {
    std::vector<UInt8> bytes{1, 2, 3};
    const auto data = Data(bytes);
    bytes[0] = 9;
    EXPECT_EQ(BytesOf(data.get()), (std::vector<UInt8>{1, 2, 3}));
    EXPECT_EQ(CFDataGetLength(Data({}).get()), 0);
}

TEST(CoreFoundationData, GrowsWithZerosAndCuts) {
    const auto data = MutableData(0);
    EXPECT_EQ(CFDataGetLength(data.get()), 0);
    CFDataSetLength(data.get(), 2);
    CFDataGetMutableBytePtr(data.get())[1] = 7;
    CFDataSetLength(data.get(), 4);
    EXPECT_EQ(BytesOf(data.get()), (std::vector<UInt8>{0, 7, 0, 0}));
    CFDataSetLength(data.get(), 1);
    CFDataSetLength(data.get(), 2);
    EXPECT_EQ(BytesOf(data.get()), (std::vector<UInt8>{0, 0}));
}

TEST(CoreFoundationData, AppendsBytes) {
    const auto data = MutableData(0);
    const UInt8 bytes[] = {5, 6};
    CFDataAppendBytes(data.get(), bytes, 2);
    CFDataAppendBytes(data.get(), bytes, 0);
    CFDataAppendBytes(data.get(), bytes, 1);
    EXPECT_EQ(BytesOf(data.get()), (std::vector<UInt8>{5, 6, 5}));
}

TEST(CoreFoundationData, DoesNotGrowBeyondItsCapacity) {
    const auto data = MutableData(2);
    CFDataSetLength(data.get(), 2);
    const UInt8 byte = 1;
    EXPECT_DEATH(CFDataSetLength(data.get(), 3), "added <= capacity - present");
    EXPECT_DEATH(CFDataAppendBytes(data.get(), &byte, 1), "added <= capacity - present");
    EXPECT_DEATH(CFDataSetLength(data.get(), -1), "added >= 0");
}

TEST(CoreFoundationArray, OwnsItsValuesWithTheTypeCallBacks) {
    const auto string = String("x");
    {
        const Owned<CFMutableArrayRef> array(
            CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
        CFArrayAppendValue(array.get(), string.get());
        EXPECT_EQ(CFGetRetainCount(string.get()), 2);
        EXPECT_EQ(CFArrayGetCount(array.get()), 1);
        EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 0), string.get());
    }
    EXPECT_EQ(CFGetRetainCount(string.get()), 1);
}

TEST(CoreFoundationArray, KeepsPlainPointersWithoutCallBacks) {
    const int numbers[] = {1, 2};
    const void* values[] = {&numbers[0], &numbers[1]};
    const Owned<CFArrayRef> array(CFArrayCreate(kCFAllocatorDefault, values, 2, nullptr));
    ASSERT_EQ(CFArrayGetCount(array.get()), 2);
    EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 1), &numbers[1]);
}

TEST(CoreFoundationArray, ComparesByItsCallBacks) {
    const auto x1 = String("x");
    const auto x2 = String("x");
    const void* value1[] = {x1.get()};
    const void* value2[] = {x2.get()};
    const auto array = [](const void** values, const CFArrayCallBacks* callBacks) {
        return Owned<CFArrayRef>(CFArrayCreate(kCFAllocatorDefault, values, 1, callBacks));
    };
    EXPECT_TRUE(CFEqual(array(value1, &kCFTypeArrayCallBacks).get(),
                        array(value2, &kCFTypeArrayCallBacks).get()));
    EXPECT_FALSE(CFEqual(array(value1, nullptr).get(), array(value2, nullptr).get()));
    EXPECT_TRUE(CFEqual(array(value1, nullptr).get(), array(value1, nullptr).get()));
}

TEST(CoreFoundationArray, StopsTheProcessOutsideItsRange) {
    const Owned<CFMutableArrayRef> array(CFArrayCreateMutable(kCFAllocatorDefault, 1, nullptr));
    EXPECT_DEATH(CFArrayGetValueAtIndex(array.get(), 0), "index >= 0");
    CFArrayAppendValue(array.get(), nullptr);
    EXPECT_DEATH(CFArrayAppendValue(array.get(), nullptr), "added <= capacity - present");
}

}  // namespace
