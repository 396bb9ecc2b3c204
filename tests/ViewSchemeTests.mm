// Open views while the process-wide scheme changes. Linked with the views, whose scheme this is; of
// the bundle only the nibs are used.

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#import "DrawingCalls.h"
#import "Source/PanelDrawing.h"
#import "Source/TavarinProAPTLink_ViewController.h"
#import "Source/TavarinProLink_ViewControllerFactory.h"
#import "Source/TextTip.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"

namespace {

class ViewScheme : public testing::Test {
protected:
    static void SetUpTestSuite() {
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        [NSApplication sharedApplication];
        [pool drain];
    }
    void SetUp() override {
        m_pool = [[NSAutoreleasePool alloc] init];
        m_factory = [[[TavarinProLink_ViewControllerFactory alloc] init] autorelease];
    }
    void TearDown() override { [m_pool drain]; }

    // In a window that is on the screen.
    TavarinProAPTLink_ViewController* Make() {
        TavarinProAPTLink_ViewController* view =
            [[m_factory APTLinkViewControllerFromBundle:[NSBundle bundleWithPath:@TAVARIN_BUNDLE]
                                       effectParameters:nullptr
                                             controller:nullptr] autorelease];
        NSWindow* window = [[[NSWindow alloc] initWithContentRect:[[view view] frame]
                                                        styleMask:NSBorderlessWindowMask
                                                          backing:NSBackingStoreBuffered
                                                            defer:NO] autorelease];
        [window setReleasedWhenClosed:NO];
        [window setContentView:[view view]];
        [window orderFront:nil];
        [window display];
        return view;
    }

    static NSBitmapImageRep* Image(NSView* view) {
        [[view window] displayIfNeeded];
        [view lockFocus];
        NSBitmapImageRep* image =
            [[[NSBitmapImageRep alloc] initWithFocusedViewRect:[view bounds]] autorelease];
        [view unlockFocus];
        return image;
    }

    static std::string Picture(NSView* view) {
        NSBitmapImageRep* image = Image(view);
        const auto* pixels = reinterpret_cast<const char*>([image bitmapData]);
        return {pixels, static_cast<std::size_t>([image bytesPerRow] * [image pixelsHigh])};
    }

    static void Say(TavarinProAPTLink_ViewController* view) {
        view->m_Script.m_strLastError = "An error";
        view->m_Script.m_strAdvice = "and what to do about it";
        [view SetTextFields];
    }

    NSAutoreleasePool* m_pool = nil;
    TavarinProLink_ViewControllerFactory* m_factory = nil;
};

TEST_F(ViewScheme, OpenViewLooksLikeANewOneAfterAChange) {
    TavarinProAPTLink_ViewController* open = Make();
    Say(open);
    const std::string strBefore = Picture([open view]);
    AppCreateDefaultColoursEngineer(&gAppColours);
    TavarinProAPTLink_ViewController* fresh = Make();
    Say(fresh);
    const std::string strAfter = Picture([open view]);
    EXPECT_NE(strAfter, strBefore);
    EXPECT_EQ(strAfter, Picture([fresh view]));
}

TEST_F(ViewScheme, EveryTextHasItsColourFromTheScheme) {
    TavarinProAPTLink_ViewController* view = Make();
    Say(view);
    [[view view] displayIfNeeded];
    for (const CComponentCode code : {ccLabelText, ccTimeAxisText, ccAudioEstimatedLabel,
                                      ccControlText, ccControlOnText, ccWindowBackground}) {
        const std::string strBefore = Picture([view view]);
        gAppColours.UpdateColour(code, 0.0F, 1.0F, 0.0F, 1.0F);
        EXPECT_NE(Picture([view view]), strBefore) << code.m_nCompID;
    }
}

// Its title, lamp and edge are all paler, not only what the cell itself draws.
TEST_F(ViewScheme, DisabledButtonLooksDisabled) {
    TavarinProAPTLink_ViewController* view = Make();
    NSBitmapImageRep* before = Image(view->m_btnDub);
    [view->m_btnDub setEnabled:NO];
    NSBitmapImageRep* after = Image(view->m_btnDub);
    const CGFloat window = [PanelColour(ccWindowBackground) greenComponent];
    int nEdge = 0;
    for (NSInteger nColumn = 10; nColumn < [before pixelsWide] - 10; ++nColumn) {
        const CGFloat was = [[before colorAtX:nColumn y:0] greenComponent];
        const CGFloat is = [[after colorAtX:nColumn y:0] greenComponent];
        if (std::abs(was - window) < 0.05) continue;
        ++nEdge;
        EXPECT_LT(std::abs(is - window), 0.6 * std::abs(was - window)) << nColumn;
    }
    EXPECT_GT(nEdge, 50);
}

// The lighter palette has no colours for pressed buttons, and its text is light.
TEST_F(ViewScheme, ButtonThatIsOnHasADarkFaceInEitherPalette) {
    TavarinProAPTLink_ViewController* view = Make();
    for (const bool fEngineer : {false, true}) {
        if (fEngineer) AppCreateDefaultColoursEngineer(&gAppColours);
        NSBitmapImageRep* image = Image(view->m_btnGuide);
        NSColor* face = [image colorAtX:[image pixelsWide] - 12 y:[image pixelsHigh] / 2];
        const CGFloat text = gAppColours.FindRGBA(ccControlText)[1];
        EXPECT_LT([face greenComponent], text / 2) << fEngineer;
        EXPECT_GT([face blueComponent], [face redComponent]) << fEngineer << ": blue is on";
    }
}

// For the documentation, when it asks for pictures.
void SavePicture(NSBitmapImageRep* image, std::string const& strName) {
    const char* szDirectory = std::getenv("TAVARIN_VIEW_PICTURES");
    if (szDirectory == nullptr) return;
    NSString* file = [NSString stringWithFormat:@"%s/%s.png", szDirectory, strName.c_str()];
    [[image representationUsingType:NSPNGFileType
                         properties:[NSDictionary dictionary]] writeToFile:file atomically:NO];
}

std::string Words(std::size_t nSize) {
    std::string strText;
    while (strText.size() < nSize)
        strText += "Save the session, quit Tavarin Pro and start it again. ";
    return strText.substr(0, nSize);
}

std::string ScriptError(int nLines) {
    std::string strText = "[string \"script\"]:1: attempt to index a nil value (local 'track')";
    for (int nLine = 2; nLine <= nLines; ++nLine) {
        strText += "\n    [string \"script\"]:" + std::to_string(nLine) + ": in function 'step'";
    }
    return strText;
}

struct CLongTexts {
    const char* szName;
    std::string strError;
    std::string strAdvice;
    bool fErrorCut;
    bool fAdviceCut;
};

TEST_F(ViewScheme, TextsThatDoNotFitEndInAnEllipsisAndStayWhole) {
    const CLongTexts cases[] = {
        {"apt-short", "An error.", "An advice.", false, false},
        {"apt-ten-lines", ScriptError(10), "Look at the script.", true, false},
        {"apt-long-advice", "An error.", Words(4000), false, true},
        {"apt-both-long", ScriptError(10), Words(4000), true, true},
        {"apt-one-word", std::string(600, 'w'), "An advice.", true, false},
    };
    TavarinProAPTLink_ViewController* view = Make();
    for (CLongTexts const& one : cases) {
        view->m_Script.m_strLastError = one.strError;
        view->m_Script.m_strAdvice = one.strAdvice;
        [view SetTextFields];
        std::vector<CTextCall> texts;
        {
            CDrawingCalls calls;
            SavePicture(Image([view view]), one.szName);
            texts = calls.m_texts;
        }
        const auto drawn = [&texts](std::string const& strText) {
            const auto found = std::find_if(texts.begin(), texts.end(), [&](CTextCall const& call) {
                return call.strText.substr(0, 9) == strText.substr(0, 9);
            });
            return found == texts.end() ? std::string("nothing") : found->strText;
        };
        const auto isCut = [](std::string const& strText) { return strText.ends_with("\u2026"); };
        EXPECT_EQ(isCut(drawn(one.strError)), one.fErrorCut) << one.szName << drawn(one.strError);
        EXPECT_EQ(isCut(drawn(one.strAdvice)), one.fAdviceCut) << one.szName;
        EXPECT_EQ(one.strAdvice, [[view->m_textAdvice toolTip] UTF8String]);
        EXPECT_EQ(one.strError, [[view->m_textLastError toolTip] UTF8String]);
    }
}

// Of the size that a tip has inside its edge.
CGFloat TipTextHeight(NSString* text, CGFloat width) {
    NSDictionary* attributes = [NSDictionary dictionaryWithObject:[NSFont systemFontOfSize:11]
                                                           forKey:NSFontAttributeName];
    return [text boundingRectWithSize:NSMakeSize(width, 100000)
                              options:NSStringDrawingUsesLineFragmentOrigin
                           attributes:attributes]
        .size.height;
}

TEST_F(ViewScheme, TipHasRoomForTheWholeTextWhereverThePointerIs) {
    constexpr CGFloat kEdge = 12;
    for (const NSSize screen : {NSMakeSize(1440, 1000), NSMakeSize(720, 500)}) {
        const NSRect whole = {{100, 50}, screen};
        for (std::string const& strText : {std::string("Short."), ScriptError(10), Words(4000)}) {
            NSString* text = [NSString stringWithUTF8String:strText.c_str()];
            for (const double dPart : {0.0, 0.3, 0.5, 0.9, 1.0}) {
                const NSPoint pointer = NSMakePoint(NSMinX(whole) + dPart * screen.width,
                                                    NSMinY(whole) + dPart * screen.height);
                const NSRect tip = TipFrame(text, pointer, whole);
                EXPECT_TRUE(NSContainsRect(whole, tip)) << [NSStringFromRect(tip) UTF8String];
                EXPECT_LE(TipTextHeight(text, tip.size.width - kEdge), tip.size.height - kEdge)
                    << [NSStringFromRect(tip) UTF8String] << strText.size();
            }
        }
    }
}

TEST_F(ViewScheme, TipStandsBesideThePointerAndIsNoLargerThanItsText) {
    const NSRect screen = NSMakeRect(0, 0, 1440, 1000);
    for (const double dHeight : {10.0, 500.0, 990.0}) {
        const NSPoint pointer = NSMakePoint(700, dHeight);
        const NSRect tip = TipFrame(@"Short.", pointer, screen);
        EXPECT_FALSE(NSPointInRect(pointer, tip)) << dHeight;
        EXPECT_LT(tip.size.width, 100);
        EXPECT_LT(tip.size.height, 40);
        EXPECT_LT(std::abs(NSMidY(tip) - dHeight), 60);
    }
}

TEST_F(ViewScheme, TipOfATextForNoScreenHasTheScreen) {
    const NSRect screen = NSMakeRect(0, 0, 640, 400);
    NSString* text = [NSString stringWithUTF8String:Words(40000).c_str()];
    const NSRect tip = TipFrame(text, NSMakePoint(300, 200), screen);
    EXPECT_TRUE(NSContainsRect(screen, tip));
    EXPECT_GT(tip.size.width, 600);
    EXPECT_GT(tip.size.height, 380);
}

}  // namespace
