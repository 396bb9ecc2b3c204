// The bundle and its factory, and what stops the process.

#import <objc/runtime.h>

#import "ViewFixture.h"
#include "colours/ComponentCodes.h"
#import "controls/QXButtonCell.h"
#import "controls/QXPopUpButtonCell.h"
#include "platform/ExceptionGuard.h"

/// A cell of another kind, with fields of its own where a QXButtonCell has its codes.
@interface TavarinTestPlainCell : NSButtonCell {
@public
    unsigned char m_fields[64];
    BOOL m_fTouched;
}
@end

@implementation TavarinTestPlainCell
- (void)drawInteriorWithFrame:(NSRect)frame inView:(NSView*)view {
    for (std::size_t nField = 0; nField < sizeof(m_fields); ++nField) {
        if (m_fields[nField] != nField) m_fTouched = YES;
    }
    [super drawInteriorWithFrame:frame inView:view];
}
@end

namespace {

using Strings = std::vector<std::string>;

class ViewFactory : public CViewTest {};

AAX_IEffectParameters* const kParameters = reinterpret_cast<AAX_IEffectParameters*>(0x1001);
AAX_IController* const kController = reinterpret_cast<AAX_IController*>(0x1002);

Strings Fields(const char* szClass) {
    unsigned int nCount = 0;
    Ivar* fields = class_copyIvarList(objc_getClass(szClass), &nCount);
    Strings names;
    for (unsigned int nField = 0; nField < nCount; ++nField) {
        names.push_back(ivar_getName(fields[nField]));
    }
    free(fields);
    return names;
}

template <typename Controller>
void ExpectPointers(Controller* view) {
    EXPECT_EQ(view->mEffectParameters, kParameters);
    EXPECT_EQ(view->mController, kController);
    [view SetViewContainerOnViews:nullptr];
    [view SetEffectParametersOnViews:nullptr];
    EXPECT_EQ(view->mEffectParameters, kParameters);
    [view release];
}

TEST_F(ViewFactory, BundleHasIdentifierAndPrincipalClass) {
    EXPECT_STREQ([[Bundle() bundleIdentifier] UTF8String], TAVARIN_BUNDLE_IDENTIFIER);
    EXPECT_EQ([Bundle() principalClass], objc_getClass("TavarinProLink_ViewControllerFactory"));
}

TEST_F(ViewFactory, GivesEachControllerThePointersOfThePlugIn) {
    ExpectPointers([Factory() LinkViewControllerFromBundle:Bundle()
                                          effectParameters:kParameters
                                                controller:kController]);
    ExpectPointers([Factory() APTLinkViewControllerFromBundle:Bundle()
                                             effectParameters:kParameters
                                                   controller:kController]);
    ExpectPointers([Factory() DoublerLinkViewControllerFromBundle:Bundle()
                                                 effectParameters:kParameters
                                                       controller:kController]);
}

TEST_F(ViewFactory, ControllerAwakesOnlyWhenItsViewIsLoaded) {
    CViewHost host;
    TavarinProLink_ViewController* view = [Factory() LinkViewControllerFromBundle:Bundle()
                                                                 effectParameters:nullptr
                                                                       controller:nullptr];
    EXPECT_EQ([view retainCount], 1u);
    EXPECT_EQ(view->m_nCurrentHost, 0);
    EXPECT_EQ(view->m_Tracks, nil);
    EXPECT_EQ(host.Asked(), Strings{});
    [view view];
    EXPECT_EQ(view->m_nCurrentHost, -1);
    EXPECT_EQ(host.Asked(), Strings{"S list"});
    [view release];
}

TEST_F(ViewFactory, EachCallMakesAControllerWithItsOwnClient) {
    TavarinProAPTLink_ViewController* one = MakeAPT();
    TavarinProAPTLink_ViewController* two = MakeAPT();
    EXPECT_NE(one, two);
    one->m_Script.m_strLastError = "one";
    EXPECT_EQ(two->m_Script.m_strLastError, "");
    EXPECT_EQ(two->m_Script.m_nUpdateCount, -1) << "the client is constructed";
}

TEST_F(ViewFactory, ControllersHaveTheirFieldsAndNoOthers) {
    EXPECT_EQ(
        Fields("TavarinProLink_ViewController"),
        (Strings{"mEffectParameters", "mController", "m_Script", "m_fAudioSuite", "m_textLastError",
                 "m_textAdvice", "m_popupTracks", "m_TracksArray", "m_Tracks", "m_nCurrentHost"}));
    EXPECT_EQ(
        Fields("TavarinProAPTLink_ViewController"),
        (Strings{"mEffectParameters", "mController", "m_Script", "m_fAudioSuite", "m_textLastError",
                 "m_textAdvice", "m_fGuideSelected", "m_fAutoSwitch", "m_btnGuide", "m_btnDub",
                 "m_btnAutoTrackSwitch", "m_lGuideStart", "m_lGuideEnd", "m_lDubStart", "m_lDubEnd",
                 "m_imageLogo", "m_nCurrentHost"}));
    EXPECT_EQ(
        Fields("TavarinProDoublerLink_ViewController"),
        (Strings{"mEffectParameters", "mController", "m_Script", "m_fAudioSuite", "m_textLastError",
                 "m_textAdvice", "m_lInputStart", "m_lInputEnd", "m_imageLogo", "m_nCurrentHost"}));
    EXPECT_EQ(Fields("TavarinProLink_ViewControllerFactory"), Strings{});
}

TEST_F(ViewFactory, TabGoesThroughTheButtonsInReadingOrder) {
    TavarinProAPTLink_ViewController* view = MakeAPT();
    EXPECT_EQ([view->m_btnGuide nextKeyView], view -> m_btnDub);
    EXPECT_EQ([view->m_btnDub nextKeyView], view -> m_btnAutoTrackSwitch);
    EXPECT_EQ([view->m_btnAutoTrackSwitch nextKeyView], view -> m_btnGuide);
}

TEST_F(ViewFactory, ControlsHaveToolTipsAndActions) {
    TavarinProAPTLink_ViewController* apt = MakeAPT();
    NSButton* buttons[] = {apt->m_btnGuide, apt->m_btnDub, apt->m_btnAutoTrackSwitch};
    const char* actions[] = {"OnGuide:", "OnDub:", "OnAutoTrackSwitch:"};
    for (int nButton = 0; nButton < 3; ++nButton) {
        EXPECT_GT([[buttons[nButton] toolTip] length], 0u);
        EXPECT_EQ([buttons[nButton] target], apt);
        EXPECT_STREQ([NSStringFromSelector([buttons[nButton] action]) UTF8String],
                     actions[nButton]);
    }
    EXPECT_GT([[MakeLink()->m_popupTracks toolTip] length], 0u);
}

// The height that a field's text needs at its width.
CGFloat NeededHeight(NSTextField* field) {
    const NSSize room = NSMakeSize([field frame].size.width, 10000);
    return
        [[field attributedStringValue] boundingRectWithSize:room
                                                    options:NSStringDrawingUsesLineFragmentOrigin]
            .size.height;
}

TEST_F(ViewFactory, LongTextsWrapAndAreNotClipped) {
    TavarinProLink_ViewController* view = MakeLink();
    const NSRect area = NSUnionRect([view->m_textLastError frame], [view->m_textAdvice frame]);
    const CGFloat oneLine = NeededHeight(view->m_textLastError);
    for (const char* szText :
         {"Same audio captured previously.",
          "Warning - Session Sample Rate is: 192000 Tavarin Pro Sample rate is: 44100",
          "The file \"/Users/somebody/Music/Projects/A rather long name/Captures/2024_05_17/"
          "Audio_a1b2c3/TavarinPro.Xyz123\" cannot be opened: No such file or directory"}) {
        view->m_Script.m_strLastError = szText;
        view->m_Script.m_strAdvice = "This capture has been cancelled";
        [view SetTextFields];
        const NSRect error = [view->m_textLastError frame];
        const NSRect advice = [view->m_textAdvice frame];
        EXPECT_GE(error.size.height, NeededHeight(view->m_textLastError)) << szText;
        EXPECT_GE(advice.size.height, NeededHeight(view->m_textAdvice)) << szText;
        EXPECT_FALSE(NSIntersectsRect(error, advice));
        EXPECT_TRUE(NSEqualRects(NSUnionRect(error, advice), area));
    }
    EXPECT_GT(NeededHeight(view->m_textLastError), 1.5 * oneLine) << "the last text wraps";
}

TEST_F(ViewFactory, FieldsKeepTheFramesThatANibGaveThem) {
    TavarinProLink_ViewController* view = MakeLink();
    const NSRect left = NSMakeRect(0, 0, 200, 20), right = NSMakeRect(210, 0, 200, 20);
    NSTextField* error = [[[NSTextField alloc] initWithFrame:left] autorelease];
    NSTextField* advice = [[[NSTextField alloc] initWithFrame:right] autorelease];
    view->m_textLastError = error;
    view->m_textAdvice = advice;
    view->m_Script.m_strLastError = "an error\nof two lines";
    view->m_Script.m_strAdvice = "an advice";
    [view SetTextFields];
    EXPECT_EQ(Text(advice), "an advice");
    EXPECT_TRUE(NSEqualRects([error frame], left)) << [NSStringFromRect([error frame]) UTF8String];
    EXPECT_TRUE(NSEqualRects([advice frame], right))
        << [NSStringFromRect([advice frame]) UTF8String];
}

TEST_F(ViewFactory, ErrorsOfManyLinesLeaveTheAdviceItsRoom) {
    TavarinProAPTLink_ViewController* view = MakeAPT();
    std::string strLines = "[string \"script\"]:1: attempt to call a nil value";
    for (std::string const& strAdvice :
         {std::string("Look at the script."), std::string(4000, 'a')}) {
        for (int nLine = 2; nLine <= 10; ++nLine) {
            strLines += "\n\t[string \"script\"]:" + std::to_string(nLine) + ": in function";
            view->m_Script.m_strLastError = strLines;
            view->m_Script.m_strAdvice = strAdvice;
            [view SetTextFields];
            const NSRect error = [view->m_textLastError frame];
            const NSRect advice = [view->m_textAdvice frame];
            EXPECT_GE(advice.size.height, 15) << nLine;
            EXPECT_GE(error.size.height, 2 * 15) << nLine;
            EXPECT_FALSE(NSIntersectsRect(error, advice)) << nLine;
            EXPECT_TRUE(NSContainsRect([[view->m_textAdvice superview] bounds], error));
            EXPECT_TRUE(NSContainsRect([[view->m_textAdvice superview] bounds], advice));
            EXPECT_EQ(Text(view->m_textAdvice), strAdvice);
            EXPECT_EQ(strLines, [[view->m_textLastError toolTip] UTF8String]);
        }
    }
}

template <typename Cell>
void ExpectDefaultCodes(Cell* cell) {
    EXPECT_EQ(cell->m_nFaceUp, ccButtonFace);
    EXPECT_EQ(cell->m_nBorderUp, ccButtonBorder);
    EXPECT_EQ(cell->m_nFaceDown, ccButtonFaceActive);
    EXPECT_EQ(cell->m_nBorderDown, ccButtonBorderActive);
}

// The classes are the bundle's; this program has none of their names.
TEST_F(ViewFactory, CellsFromTheNibsDrawThemselvesAndHaveTheirDefaults) {
    TavarinProAPTLink_ViewController* apt = MakeAPT();
    for (NSButton* button : {apt->m_btnGuide, apt->m_btnDub, apt->m_btnAutoTrackSwitch}) {
        EXPECT_STREQ([[[button cell] className] UTF8String], "QXButtonCell");
        ExpectDefaultCodes((QXButtonCell*)[button cell]);
        [button display];
        ExpectDefaultCodes((QXButtonCell*)[button cell]);
    }
    NSPopUpButton* tracks = MakeLink()->m_popupTracks;
    EXPECT_STREQ([[[tracks cell] className] UTF8String], "QXPopUpButtonCell");
    ExpectDefaultCodes((QXPopUpButtonCell*)[tracks cell]);
    EXPECT_FALSE(((QXPopUpButtonCell*)[tracks cell])->m_fReadOnly);
}

TEST_F(ViewFactory, ButtonsLeaveTheFieldsOfOtherCellsAlone) {
    NSButton* button = MakeAPT()->m_btnGuide;
    TavarinTestPlainCell* cell = [[[TavarinTestPlainCell alloc] init] autorelease];
    for (std::size_t nField = 0; nField < sizeof(cell->m_fields); ++nField) {
        cell->m_fields[nField] = static_cast<unsigned char>(nField);
    }
    [button setCell:cell];
    [button setState:1];
    [button display];
    EXPECT_FALSE(cell->m_fTouched);
}

void RaiseInsteadOfATitle(id, SEL) {
    [NSException raise:@"NoTitle" format:@"no title can be drawn"];
}

TEST_F(ViewFactory, CellsKeepTheirCodesWhenDrawingThrows) {
    TavarinProAPTLink_ViewController* view = MakeAPT();
    NSButton* button = view->m_btnGuide;
    ASSERT_EQ([button state], 1);
    Show(view);
    Method title = class_getInstanceMethod(objc_getClass("QXButtonCell"),
                                           @selector(drawTitle:withFrame:inView:));
    const IMP drawTitle = method_setImplementation(title, (IMP)(void (*)())RaiseInsteadOfATitle);
    [button lockFocus];
    EXPECT_EQ(ExceptionIn([button] { [button drawRect:[button bounds]]; }),
              "no title can be drawn");
    [button unlockFocus];
    method_setImplementation(title, drawTitle);
    ExpectDefaultCodes((QXButtonCell*)[button cell]);
}

TEST_F(ViewFactory, BundleHasTheArrowInBothResolutions) {
    for (const int nScale : {1, 2}) {
        NSString* path = [Bundle() pathForResource:nScale == 1 ? @"PopupArrow" : @"PopupArrow@2x"
                                            ofType:@"png"];
        NSBitmapImageRep* arrow =
            [NSBitmapImageRep imageRepWithData:[NSData dataWithContentsOfFile:path]];
        ASSERT_NE(arrow, nil);
        EXPECT_EQ([arrow pixelsWide], 7 * nScale);
        EXPECT_EQ([arrow pixelsHigh], 10 * nScale);
    }
}

TEST_F(ViewFactory, ImagesOfTheNibsAreFound) {
    TavarinProDoublerLink_ViewController* view = MakeDoubler();
    ASSERT_NE([view->m_imageLogo image], nil);
    EXPECT_GT([[view->m_imageLogo image] size].width, 100);
}

class ViewAssertions : public CViewTest {
protected:
    void SetUp() override {
        CViewTest::SetUp();
        m_views = {MakeLink(), MakeAPT(), MakeDoubler()};
    }

    std::vector<AnyView> m_views;
};

struct CWrongSize {
    std::int32_t nType;
    std::uint32_t nSize;
    const char* szCondition;
};

const CWrongSize kWrongSizes[] = {
    {notifyPostAnalyze, 2088, "iNotificationDataSize == sizeof\\(paramPostAnalyze\\)"},
    {notifyExportSelectedRegion, 2064,
     "iNotificationDataSize == sizeof\\(paramExportSelectedRegion\\)"},
    {notifyRenderSelectedRegion, 32,
     "iNotificationDataSize == sizeof\\(paramRenderSelectedRegion\\)"},
    {notifyUpdateCount, 8, "iNotificationDataSize == sizeof\\(long \\*\\)"},
};

TEST_F(ViewAssertions, RecordOfTheWrongSizeStopsTheProcess) {
    static char record[4096];
    for (AnyView view : m_views) {
        for (CWrongSize const& wrong : kWrongSizes) {
            const std::string strExpected = std::string(": ") + wrong.szCondition + ",";
            for (const std::uint32_t nSize : {wrong.nSize - 1, wrong.nSize + 1, 0u}) {
                EXPECT_EXIT([view NotificationReceived:wrong.nType Data:record DataSize:nSize],
                            testing::KilledBySignal(SIGABRT), strExpected);
            }
        }
    }
}

TEST_F(ViewAssertions, MissingRecordStopsTheProcess) {
    for (AnyView view : m_views) {
        EXPECT_EXIT([view NotificationReceived:notifyPostAnalyze Data:nullptr DataSize:2088],
                    testing::KilledBySignal(SIGABRT), "pNotificationData != nullptr");
    }
}

TEST_F(ViewAssertions, MissingPrintStopsTheProcess) {
    for (AnyView view : m_views) {
        EXPECT_EXIT([view NotificationReceived:notifyPrint Data:nullptr DataSize:0],
                    testing::KilledBySignal(SIGABRT), "pNotificationData != nullptr");
    }
}

TEST_F(ViewFactory, NoBundleIsLeftToTheInitialiser) {
    TavarinProLink_ViewController* view = [Factory() LinkViewControllerFromBundle:nil
                                                                 effectParameters:kParameters
                                                                       controller:kController];
    ASSERT_NE(view, nil);
    EXPECT_EQ([view nibBundle], nil);
    EXPECT_STREQ([[view nibName] UTF8String], "TavarinProLink_View");
    ExpectPointers(view);
}

TEST_F(ViewAssertions, MissingNibStopsTheProcess) {
    NSString* path =
        [NSString stringWithUTF8String:m_directory.MakeDirectory("Empty.bundle").c_str()];
    NSBundle* empty = [NSBundle bundleWithPath:path];
    ASSERT_NE(empty, nil);
    EXPECT_EXIT([Factory() LinkViewControllerFromBundle:empty
                                       effectParameters:nullptr
                                             controller:nullptr],
                testing::KilledBySignal(SIGABRT), ": viewController != nil,");
    EXPECT_EXIT([Factory() APTLinkViewControllerFromBundle:empty
                                          effectParameters:nullptr
                                                controller:nullptr],
                testing::KilledBySignal(SIGABRT), ": viewController != nil,");
    EXPECT_EXIT([Factory() DoublerLinkViewControllerFromBundle:empty
                                              effectParameters:nullptr
                                                    controller:nullptr],
                testing::KilledBySignal(SIGABRT), ": viewController != nil,");
}

}  // namespace
