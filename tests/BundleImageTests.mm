// The bundle's images in a window: what is drawn is the file of its resolution. Run once for each
// scale, because AppKit asks for its screen's only once.

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#import "platform/BundleImage.h"

namespace {

class BundleImages : public testing::Test {
protected:
    static void SetUpTestSuite() {
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        [NSApplication sharedApplication];
        [pool drain];
    }
    void SetUp() override { m_pool = [[NSAutoreleasePool alloc] init]; }
    void TearDown() override { [m_pool drain]; }

    static int Scale() {
        NSString* factor = [[NSUserDefaults standardUserDefaults] stringForKey:@"GSScaleFactor"];
        return factor == nil ? 1 : [factor intValue];
    }

    static NSBundle* Bundle() { return [NSBundle bundleWithPath:@TAVARIN_BUNDLE]; }

    static NSBitmapImageRep* File(NSString* name, int nScale) {
        NSString* file = nScale == 1 ? name : [name stringByAppendingString:@"@2x"];
        NSString* path = [Bundle() pathForResource:file ofType:@"png"];
        return [NSBitmapImageRep imageRepWithData:[NSData dataWithContentsOfFile:path]];
    }

    // What a white window of the present scale shows of an image.
    static NSBitmapImageRep* Drawn(NSImage* image) {
        const NSRect frame = {NSZeroPoint, [image size]};
        NSWindow* window = [[NSWindow alloc] initWithContentRect:frame
                                                       styleMask:NSBorderlessWindowMask
                                                         backing:NSBackingStoreBuffered
                                                           defer:NO];
        [window setReleasedWhenClosed:NO];
        [window orderFront:nil];
        NSView* view = [window contentView];
        [view lockFocus];
        [[NSColor whiteColor] set];
        NSRectFill(frame);
        [image drawInRect:frame fromRect:NSZeroRect operation:NSCompositeSourceOver fraction:1];
        NSBitmapImageRep* drawn = [[NSBitmapImageRep alloc] initWithFocusedViewRect:frame];
        [view unlockFocus];
        [window close];
        [window release];
        return [drawn autorelease];
    }

    // The largest difference of a pixel's green from what the file has there, over white.
    static double Difference(NSBitmapImageRep* drawn, NSBitmapImageRep* file) {
        double dLargest = 0;
        for (NSInteger nRow = 0; nRow < [file pixelsHigh]; ++nRow) {
            for (NSInteger nColumn = 0; nColumn < [file pixelsWide]; ++nColumn) {
                NSColor* wanted = [file colorAtX:nColumn y:nRow];
                const double dAlpha = [wanted alphaComponent];
                const double dGreen = [wanted greenComponent] * dAlpha + (1 - dAlpha);
                NSColor* found = [drawn colorAtX:nColumn y:nRow];
                dLargest = std::max(dLargest, std::fabs([found greenComponent] - dGreen));
            }
        }
        return dLargest;
    }

private:
    NSAutoreleasePool* m_pool = nil;
};

TEST_F(BundleImages, EveryPixelIsThatOfTheFileOfTheWindowsResolution) {
    for (NSString* name : {@"TavarinProLink_Logo", @"TavarinProLink_Mark", @"PopupArrow"}) {
        NSImage* image = [MakeBundleImage(Bundle(), name) autorelease];
        NSBitmapImageRep* file = File(name, Scale());
        ASSERT_NE(image, nil);
        ASSERT_NE(file, nil);
        EXPECT_EQ([image size].width * Scale(), [file pixelsWide]) << [name UTF8String];
        NSBitmapImageRep* drawn = Drawn(image);
        ASSERT_EQ([drawn pixelsWide], [file pixelsWide]) << [name UTF8String];
        ASSERT_EQ([drawn pixelsHigh], [file pixelsHigh]) << [name UTF8String];
        EXPECT_LT(Difference(drawn, file), 0.02) << [name UTF8String];
    }
}

}  // namespace
