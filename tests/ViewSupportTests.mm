// What the views stand on, called directly: preferences, texts from the host, and the palette that
// the factory fills in.

#include <CoreFoundation/CFPreferences.h>
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>

#include "ChildProcess.h"
#include "Source/Preferences.h"
#import "Source/TavarinProLink_ViewControllerFactory.h"
#import "Source/ViewHelpers.h"
#include "TemporaryDirectory.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"

namespace {

class CPoolTest : public testing::Test {
protected:
    CPoolTest() : m_pool([[NSAutoreleasePool alloc] init]) {}
    ~CPoolTest() override { [m_pool drain]; }

    NSAutoreleasePool* m_pool;
};

class Preferences : public CPoolTest {
protected:
    static void Store(id value) {
        NSDictionary* values = value == nil
                                   ? [NSDictionary dictionary]
                                   : [NSDictionary dictionaryWithObject:value forKey:@"Key"];
        [[NSUserDefaults standardUserDefaults] setPersistentDomain:values
                                                           forName:@TAVARIN_BUNDLE_IDENTIFIER];
    }
};

TEST_F(Preferences, KeyOfTheSwitchIsKnown) {
    EXPECT_EQ(strAutoSwitch, "AutoSwitch");
}

TEST_F(Preferences, MissingKeyGivesTheDefaultWithinTheLimits) {
    Store(nil);
    EXPECT_EQ(GetInt("Key", 7, 0, 10), 7);
    EXPECT_EQ(GetInt("Key", -7, 0, 10), 0);
    EXPECT_EQ(GetInt("Key", 70, 0, 10), 10);
}

TEST_F(Preferences, UpperLimitWinsOverTheLower) {
    Store(nil);
    EXPECT_EQ(GetInt("Key", 5, 20, 10), 10);
}

TEST_F(Preferences, StoredTextIsReadAsAnInteger) {
    struct CCase {
        NSString* text;
        int nValue;
    };
    const CCase cases[] = {{@"5", 5}, {@"-3", -3}, {@" 12abc", 12},          {@"none", 0},
                           {@"", 0},  {@"1.9", 1}, {@"99999999999", INT_MAX}};
    for (CCase const& one : cases) {
        Store(one.text);
        EXPECT_EQ(GetInt("Key", 42, INT_MIN, INT_MAX), one.nValue) << [one.text UTF8String];
    }
}

TEST_F(Preferences, ValuesOfOtherKindsAreReadToo) {
    Store([NSNumber numberWithInt:-8]);
    EXPECT_EQ(GetInt("Key", 42, INT_MIN, INT_MAX), -8);
    Store([NSNumber numberWithLongLong:LLONG_MAX]);
    EXPECT_EQ(GetInt("Key", 42, INT_MIN, INT_MAX), INT_MAX);
    Store([NSNumber numberWithBool:YES]);
    EXPECT_EQ(GetInt("Key", 42, INT_MIN, INT_MAX), 1);
    Store([NSArray arrayWithObject:@"3"]);
    EXPECT_EQ(GetInt("Key", 42, INT_MIN, INT_MAX), 0);
}

// A platform may keep truth values apart from numbers.
TEST_F(Preferences, TruthValuesAreReadWhateverTheirKind) {
    for (const bool fValue : {true, false}) {
        Store([NSNumber numberWithBool:fValue]);
        CFTypeRef value = CFPreferencesCopyAppValue(CFSTR("Key"), CFSTR(TAVARIN_BUNDLE_IDENTIFIER));
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(CFGetTypeID(value), CFBooleanGetTypeID());
        EXPECT_EQ(CFBooleanGetValue(static_cast<CFBooleanRef>(value)) != 0, fValue);
        CFRelease(value);
        EXPECT_EQ(GetInt("Key", 42, INT_MIN, INT_MAX), fValue ? 1 : 0);
    }
}

TEST_F(Preferences, SavedValueComesBackAndIsText) {
    Store(nil);
    for (const int nValue : {0, 1, -1, INT_MIN, INT_MAX}) {
        SaveInt("Key", nValue);
        EXPECT_EQ(GetInt("Key", 42, INT_MIN, INT_MAX), nValue);
        id stored = [[[NSUserDefaults standardUserDefaults]
            persistentDomainForName:@TAVARIN_BUNDLE_IDENTIFIER] objectForKey:@"Key"];
        ASSERT_TRUE([stored isKindOfClass:[NSString class]]);
        EXPECT_EQ(std::to_string(nValue), [stored UTF8String]);
    }
}

// Run by the next test in a process of its own.
TEST_F(Preferences, DISABLED_SaveAndExit) {
    SaveInt("Exit", 42);
    std::exit(0);
}

TEST_F(Preferences, SavedValueIsOnDiskWhenTheProcessHasEnded) {
    CTemporaryDirectory directory;
    CChildProcess child({"/proc/self/exe", "--gtest_also_run_disabled_tests",
                         "--gtest_filter=*DISABLED_SaveAndExit"},
                        directory.File("out"), directory.File("err"));
    ASSERT_EQ(child.Wait(), 0) << directory.Read("err");
    [[NSUserDefaults standardUserDefaults] synchronize];
    EXPECT_EQ(GetInt("Exit", 0, 0, 100), 42);
}

using HostTexts = CPoolTest;

TEST_F(HostTexts, Utf8IsKept) {
    EXPECT_STREQ([TextFromHost("Größe ♪") UTF8String], "Größe ♪");
    EXPECT_EQ([TextFromHost("") length], 0u);
}

TEST_F(HostTexts, OtherBytesAreTakenAsLatin1) {
    EXPECT_STREQ([TextFromHost("\xE9t\xE9") UTF8String], "été");
}

using FactoryPalette = CPoolTest;

TEST_F(FactoryPalette, FirstFactoryFillsTheScheme) {
    [[[TavarinProLink_ViewControllerFactory alloc] init] release];
    EXPECT_NE(gAppColours.Find(ccControlText), nullptr);
    EXPECT_TRUE(gAppColours.IsGradient(ccButtonFace));
}

TEST_F(FactoryPalette, SecondFactoryDropsWhatWasChangedAndAdded) {
    [[[TavarinProLink_ViewControllerFactory alloc] init] release];
    const double dRed = gAppColours.FindRGBA(ccControlText)[0];
    gAppColours.UpdateColour(ccControlText, 1.0F, 0.0F, 0.0F, 1.0F);
    const CComponentCode foreign(99, 12345);
    gAppColours.Add(new CComponentColour(foreign, 1));
    ASSERT_NE(gAppColours.Find(foreign), nullptr);

    [[[TavarinProLink_ViewControllerFactory alloc] init] release];
    EXPECT_DOUBLE_EQ(gAppColours.FindRGBA(ccControlText)[0], dRed);
    EXPECT_EQ(gAppColours.Find(foreign), nullptr);
}

TEST_F(FactoryPalette, FactoryReplacesAnotherPalette) {
    AppCreateDefaultColoursEngineer(&gAppColours);
    ASSERT_NE(gAppColours.Find(ccMorlandProjectButton), nullptr);
    [[[TavarinProLink_ViewControllerFactory alloc] init] release];
    EXPECT_EQ(gAppColours.Find(ccMorlandProjectButton), nullptr);
}

}  // namespace
