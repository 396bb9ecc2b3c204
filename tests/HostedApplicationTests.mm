// AppKit that does not start in somebody else's process.

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>
#import <objc/runtime.h>

#include <string>

#include "platform/HostedApplication.h"

namespace {

void RaiseWithoutAReason(id, SEL) {
    [[NSException exceptionWithName:@"NoReason" reason:nil userInfo:nil] raise];
}

TEST(HostedApplication, FailureWithoutAReasonIsReportedAllTheSame) {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    Method start = class_getInstanceMethod([NSApplication class], @selector(finishLaunching));
    method_setImplementation(start, (IMP)(void (*)())RaiseWithoutAReason);
    std::string strReason;
    EXPECT_FALSE(StartHostedApplication(&strReason));
    EXPECT_NE(strReason, "");
    [pool drain];
}

}  // namespace
