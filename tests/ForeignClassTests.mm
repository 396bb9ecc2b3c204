// The bundle in a process that had a class of one of its names before.

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <string>

/// Not the bundle's, and loaded first.
@interface GraphicUtils : NSObject
@end

@implementation GraphicUtils
@end

namespace {

TEST(ForeignClasses, AreReportedInTheLog) {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    [NSApplication sharedApplication];
    NSBundle* bundle = [NSBundle bundleWithPath:@TAVARIN_BUNDLE];
    ASSERT_TRUE([bundle load]);
    testing::internal::CaptureStderr();
    [[[[bundle principalClass] alloc] init] release];
    [[[[bundle principalClass] alloc] init] release];
    const std::string strLog = testing::internal::GetCapturedStderr();
    const auto nFirst = strLog.find("GraphicUtils");
    EXPECT_NE(nFirst, std::string::npos) << strLog;
    EXPECT_EQ(strLog.find("GraphicUtils", nFirst + 1), std::string::npos) << "said once";
    EXPECT_EQ(strLog.find("QXButtonCell"), std::string::npos) << "that one is the bundle's";
    [pool drain];
}

}  // namespace
