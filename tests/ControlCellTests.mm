// The button and the pop-up that draw themselves: what they hold, what they paint, what they write.

#import <AppKit/DPSOperators.h>

#import "DrawingCalls.h"
#import "DrawingFixture.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#import "controls/QXButtonCell.h"
#import "controls/QXPopUpButtonCell.h"

namespace {

constexpr NSRect kFrame = {{20, 10}, {100, 40}};
constexpr CPixel kBorder = {0, 0, 255};
constexpr CPixel kFace = {0, 255, 0};
constexpr CPixel kBorderActive = {255, 255, 0};
constexpr CPixel kFaceActive = {255, 0, 0};

template <typename Cell>
void ExpectDefaults(Cell* cell) {
    EXPECT_EQ(cell->m_nFaceUp, ccButtonFace);
    EXPECT_EQ(cell->m_nBorderUp, ccButtonBorder);
    EXPECT_EQ(cell->m_nFaceDown, ccButtonFaceActive);
    EXPECT_EQ(cell->m_nBorderDown, ccButtonBorderActive);
}

class ControlCells : public CDrawingTest {
protected:
    void SetUp() override {
        CDrawingTest::SetUp();
        AddPlain(ccButtonBorder, 0, 0, 1);
        AddPlain(ccButtonFace, 0, 1, 0);
        AddPlain(ccButtonBorderActive, 1, 1, 0);
        AddPlain(ccButtonFaceActive, 1, 0, 0);
        AddPlain(ccControlText, 0.1, 0.2, 0.3);
        AddPlain(ccControlTextDisabled, 0.4, 0.5, 0.6);
        m_button = [[[QXButtonCell alloc] init] autorelease];
        [m_button setTitle:@"Title"];
        m_popup = [[[QXPopUpButtonCell alloc] init] autorelease];
        [m_popup addItemWithTitle:@"First"];
        [m_popup addItemWithTitle:@"Second"];
        [m_popup selectItemAtIndex:1];
    }

    CPicture DrawBezel(NSButtonCell* cell, bool fPressed, NSRect frame = kFrame,
                       bool fFlipped = true) {
        [cell setHighlighted:fPressed];
        return Draw(fFlipped, [=, this](CGContextRef) {
            [cell drawBezelWithFrame:frame inView:Canvas(fFlipped)];
        });
    }

    CPicture DrawPopUp(NSRect frame = kFrame) {
        return Draw(true,
                    [=, this](CGContextRef) { [m_popup drawWithFrame:frame inView:Canvas(true)]; });
    }

    QXButtonCell* m_button = nil;
    QXPopUpButtonCell* m_popup = nil;
};

TEST_F(ControlCells, NewCellsHaveTheDefaultCodes) {
    ExpectDefaults(m_button);
    ExpectDefaults(m_popup);
    EXPECT_FALSE(m_popup->m_fReadOnly);
}

constexpr CComponentCode kCodes[] = {{1, 11}, {1, 12}, {1, 13}, {1, 14}};

TEST_F(ControlCells, CodesAreStoredInTheirOrder) {
    [m_button SetButtonControlsFaceUp:kCodes[0]
                             BorderUp:kCodes[1]
                             FaceDown:kCodes[2]
                           BorderDown:kCodes[3]];
    [m_popup SetButtonControlsFaceUp:kCodes[0]
                            BorderUp:kCodes[1]
                            FaceDown:kCodes[2]
                          BorderDown:kCodes[3]];
    EXPECT_EQ(m_button->m_nFaceUp, kCodes[0]);
    EXPECT_EQ(m_button->m_nBorderUp, kCodes[1]);
    EXPECT_EQ(m_button->m_nFaceDown, kCodes[2]);
    EXPECT_EQ(m_button->m_nBorderDown, kCodes[3]);
    EXPECT_EQ(m_popup->m_nFaceUp, kCodes[0]);
    EXPECT_EQ(m_popup->m_nBorderUp, kCodes[1]);
    EXPECT_EQ(m_popup->m_nFaceDown, kCodes[2]);
    EXPECT_EQ(m_popup->m_nBorderDown, kCodes[3]);
    [m_popup SetReadOnly:YES];
    EXPECT_TRUE(m_popup->m_fReadOnly);
}

TEST_F(ControlCells, SettingCodesAsksForNoRedraw) {
    NSButton* control = [[[NSButton alloc] initWithFrame:kFrame] autorelease];
    [control setCell:m_button];
    [Canvas(true) addSubview:control];
    [control display];
    ASSERT_FALSE([control needsDisplay]);
    [m_button SetButtonControlsFaceUp:kCodes[0]
                             BorderUp:kCodes[1]
                             FaceDown:kCodes[2]
                           BorderDown:kCodes[3]];
    EXPECT_FALSE([control needsDisplay]);
}

TEST_F(ControlCells, CellsFromAnArchiveHaveTheDefaults) {
    [m_button SetButtonControlsFaceUp:kCodes[0]
                             BorderUp:kCodes[1]
                             FaceDown:kCodes[2]
                           BorderDown:kCodes[3]];
    [m_popup SetButtonControlsFaceUp:kCodes[0]
                            BorderUp:kCodes[1]
                            FaceDown:kCodes[2]
                          BorderDown:kCodes[3]];
    [m_popup SetReadOnly:YES];
    QXButtonCell* button = [NSKeyedUnarchiver
        unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:m_button]];
    QXPopUpButtonCell* popup = [NSKeyedUnarchiver
        unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:m_popup]];
    ASSERT_TRUE([button isKindOfClass:[QXButtonCell class]]);
    ASSERT_TRUE([popup isKindOfClass:[QXPopUpButtonCell class]]);
    EXPECT_TRUE([[button title] isEqual:@"Title"]);
    ExpectDefaults(button);
    ExpectDefaults(popup);
    EXPECT_FALSE(popup->m_fReadOnly);
}

/// A border of a radius of 6 and a face 1 inside it, of a radius of 5. On the first row, 2.5 in
/// from the side, the border's circle leaves nearly everything free and one of 5 would cover a
/// third; there the face's circle covers a third of the face's first row.
void ExpectFlatBezel(CPicture const& picture, CPixel background, CPixel border, CPixel face) {
    const int nLeft = NSMinX(kFrame), nRight = NSMaxX(kFrame) - 1;
    const int nTop = NSMinY(kFrame), nBottom = NSMaxY(kFrame) - 1;
    EXPECT_TRUE(picture.IsAll(border, NSMakeRect(nLeft + 7, nTop, 86, 1)));
    EXPECT_TRUE(picture.IsAll(border, NSMakeRect(nLeft + 7, nBottom, 86, 1)));
    EXPECT_TRUE(picture.IsAll(border, NSMakeRect(nLeft, nTop + 7, 1, 26)));
    EXPECT_TRUE(picture.IsAll(border, NSMakeRect(nRight, nTop + 7, 1, 26)));
    EXPECT_TRUE(picture.IsAll(face, NSMakeRect(nLeft + 1, nTop + 7, 98, 26)));
    EXPECT_TRUE(picture.IsAll(face, NSMakeRect(nLeft + 7, nTop + 1, 86, 38)));
    const auto mixed = [](CPixel a, CPixel b, double dPart) {
        const auto mix = [dPart](int nA, int nB) {
            return static_cast<int>(nA + (nB - nA) * dPart);
        };
        return CPixel{mix(a.nRed, b.nRed), mix(a.nGreen, b.nGreen), mix(a.nBlue, b.nBlue)};
    };
    for (const int nColumn : {nLeft + 2, nRight - 2}) {
        for (const int nRow : {nTop, nBottom}) {
            EXPECT_TRUE(IsNear(picture.At(nColumn, nRow), mixed(background, border, 0.04), 24))
                << picture.At(nColumn, nRow);
        }
    }
    for (const int nColumn : {nLeft + 3, nRight - 3}) {
        for (const int nRow : {nTop + 1, nBottom - 1}) {
            EXPECT_TRUE(IsNear(picture.At(nColumn, nRow), mixed(border, face, 0.33), 32))
                << picture.At(nColumn, nRow);
        }
    }
}

TEST_F(ControlCells, FlatBezelIsABorderAroundAFace) {
    for (const bool fFlipped : {false, true}) {
        NSRect frame = kFrame;
        if (!fFlipped) frame.origin.y = kHeight - NSMaxY(kFrame);
        for (NSButtonCell* cell : {(NSButtonCell*)m_button, (NSButtonCell*)m_popup}) {
            ExpectFlatBezel(DrawBezel(cell, false, frame, fFlipped), kBackground, kBorder, kFace);
            ExpectFlatBezel(DrawBezel(cell, true, frame, fFlipped), kBackground, kBorderActive,
                            kFaceActive);
        }
    }
}

TEST_F(ControlCells, DisabledFlatBezelLooksLikeAnEnabledOne) {
    for (NSButtonCell* cell : {(NSButtonCell*)m_button, (NSButtonCell*)m_popup}) {
        [cell setEnabled:NO];
        ExpectFlatBezel(DrawBezel(cell, false), kBackground, kBorder, kFace);
        ExpectFlatBezel(DrawBezel(cell, true), kBackground, kBorderActive, kFaceActive);
    }
}

TEST_F(ControlCells, AnyStyleButZeroIsFlat) {
    for (const int nStyle : {1, 2, -1, 1000}) {
        gnAppStyle = nStyle;
        ExpectFlatBezel(DrawBezel(m_button, false), kBackground, kBorder, kFace);
    }
}

TEST_F(ControlCells, GradientsRunFromTheTop) {
    AddRamp(ccButtonFace);
    for (const bool fFlipped : {false, true}) {
        const CPicture picture = DrawBezel(m_button, false, NSMakeRect(20, 20, 100, 40), fFlipped);
        EXPECT_TRUE(IsGrey(picture.At(60, 22), 0.04));
        EXPECT_TRUE(IsGrey(picture.At(60, 57), 0.96));
    }
}

TEST_F(ControlCells, CodesThatTheSchemeLacksPaintNothing) {
    gAppColours.Clear();
    const CPicture picture = DrawBezel(m_button, false);
    EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(0, 0, kWidth, kHeight)));
    CDrawingCalls calls;
    DrawPopUp();
    EXPECT_TRUE(calls.m_texts.empty());
}

TEST_F(ControlCells, CellsOfOtherCodesUseThem) {
    AddPlain(kPlain, 1, 1, 1);
    AddPlain(kOther, 0, 0, 0);
    [m_button SetButtonControlsFaceUp:kPlain BorderUp:kOther FaceDown:kOther BorderDown:kPlain];
    ExpectFlatBezel(DrawBezel(m_button, false), kBackground, {0, 0, 0}, {255, 255, 255});
    ExpectFlatBezel(DrawBezel(m_button, true), kBackground, {255, 255, 255}, {0, 0, 0});
}

TEST_F(ControlCells, FramesTooSmallForAFaceDoNoHarm) {
    for (const NSSize size : {NSMakeSize(1, 1), NSMakeSize(0, 0), NSMakeSize(100, 1)}) {
        for (const int nStyle : {0, 1}) {
            gnAppStyle = nStyle;
            const CPicture picture =
                DrawBezel(m_button, false, NSMakeRect(10, 10, size.width, size.height));
            EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(0, 20, kWidth, 60)));
        }
    }
}

struct CShadedState {
    bool fEnabled;
    bool fPressed;
    double dFirst;
    double dLast;
};

const CShadedState kShadedStates[] = {{true, false, 0.6, 0.2},
                                      {true, true, 0.8, 0.4},
                                      {false, false, 0.9, 0.75},
                                      {false, true, 0.9, 0.75}};

TEST_F(ControlCells, ShadedBezelLiesAtTheOriginWhateverItsFrame) {
    gnAppStyle = 0;
    for (NSButtonCell* cell : {(NSButtonCell*)m_button, (NSButtonCell*)m_popup}) {
        for (CShadedState const& state : kShadedStates) {
            [cell setEnabled:state.fEnabled];
            const CPicture picture = DrawBezel(cell, state.fPressed, NSMakeRect(30, 20, 100, 40));
            EXPECT_TRUE(
                NSEqualRects(picture.Extent([](CPixel pixel) { return pixel != kBackground; }),
                             NSMakeRect(0, 0, 100, 40)));
            for (const int nColumn : {10, 50, 90}) {
                const auto at = [&](double dPart) {
                    return state.dFirst + (state.dLast - state.dFirst) * dPart;
                };
                EXPECT_TRUE(IsGrey(picture.At(nColumn, 0), at(0.5 / 40), 0.012));
                EXPECT_TRUE(IsGrey(picture.At(nColumn, 20), at(20.5 / 40), 0.012));
                EXPECT_TRUE(IsGrey(picture.At(nColumn, 39), at(39.5 / 40), 0.012));
            }
        }
    }
}

TEST_F(ControlCells, ShadedBezelHasRoundCorners) {
    gnAppStyle = 0;
    const CPicture picture = DrawBezel(m_button, false, NSMakeRect(0, 0, 100, 40));
    for (const int nColumn : {0, 99}) {
        for (const int nRow : {0, 39}) {
            EXPECT_TRUE(IsNear(picture.At(nColumn, nRow), kBackground));
        }
    }
    for (const int nColumn : {2, 97}) {
        EXPECT_TRUE(IsNear(picture.At(nColumn, 0), kBackground, 24)) << picture.At(nColumn, 0);
        EXPECT_TRUE(IsGrey(picture.At(nColumn, 3), 0.56, 0.02));
    }
    EXPECT_TRUE(IsGrey(picture.At(7, 0), 0.6, 0.02));
}

TEST_F(ControlCells, ShadingBeginsWhereYIsZero) {
    gnAppStyle = 0;
    const CPicture picture = DrawBezel(m_button, false, NSMakeRect(0, 0, 100, 40), false);
    EXPECT_TRUE(IsGrey(picture.At(50, kHeight - 1), 0.6, 0.012));
    EXPECT_TRUE(IsGrey(picture.At(50, kHeight - 40), 0.2, 0.012));
}

TEST_F(ControlCells, ShadedBezelStaysTheClip) {
    gnAppStyle = 0;
    const CPicture picture = Draw(true, [this](CGContextRef context) {
        NSRect frame = NSMakeRect(0, 0, 100, 40);
        [m_button DrawButton:context Active:NO Area:&frame Flipped:YES];
        DPSsetrgbcolor(reinterpret_cast<NSGraphicsContext*>(context), 1, 0, 0);
        CGContextFillRect(context, NSMakeRect(0, 0, kWidth, kHeight));
    });
    EXPECT_TRUE(picture.IsAll({255, 0, 0}, NSMakeRect(7, 7, 86, 26)));
    EXPECT_TRUE(IsNear(picture.At(0, 0), kBackground));
    EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(101, 0, 59, 80)));
    EXPECT_TRUE(picture.IsAll(kBackground, NSMakeRect(0, 41, 160, 39)));
}

TEST_F(ControlCells, FlatBezelLeavesNothingBehind) {
    const CPicture picture = Draw(true, [this](CGContextRef context) {
        auto* native = reinterpret_cast<NSGraphicsContext*>(context);
        DPSsetrgbcolor(native, 1, 0, 0);
        NSRect frame = kFrame;
        [m_button DrawButton:context Active:NO Area:&frame Flipped:YES];
        EXPECT_TRUE(NSEqualRects(frame, kFrame));
        CGContextFillRect(context, NSMakeRect(130, 0, 30, kHeight));
    });
    EXPECT_TRUE(picture.IsAll({255, 0, 0}, NSMakeRect(130, 0, 30, kHeight)));
}

TEST_F(ControlCells, PressedIsWhatTheCallSays) {
    [m_button setHighlighted:NO];
    ExpectFlatBezel(Draw(true,
                         [this](CGContextRef context) {
                             NSRect frame = kFrame;
                             [m_button DrawButton:context Active:YES Area:&frame Flipped:YES];
                         }),
                    kBackground, kBorderActive, kFaceActive);
}

void ExpectText(CTextCall const& call, const char* szText, NSRect rect, double dSize,
                NSTextAlignment alignment, CComponentCode colour) {
    EXPECT_EQ(call.strText, szText);
    EXPECT_TRUE(NSEqualRects(call.rect, rect)) << [NSStringFromRect(call.rect) UTF8String];
    EXPECT_EQ([call.font pointSize], dSize);
    EXPECT_TRUE([[call.font fontName] isEqual:[[NSFont boldSystemFontOfSize:dSize] fontName]]);
    EXPECT_EQ(call.alignment, alignment);
    EXPECT_EQ(call.lineBreakMode, NSLineBreakByTruncatingMiddle);
    EXPECT_EQ(call.colour, gAppColours.FindNSColor(colour));
}

struct CSize {
    NSControlSize size;
    double dFont;
    double dLower;
    double dShorter;
};

const CSize kSizes[] = {
    {NSControlSizeRegular, 12, 1, 2}, {NSControlSizeSmall, 10, 3, 3}, {NSControlSizeMini, 8, 1, 2}};

TEST_F(ControlCells, ButtonWritesItsPlainTitle) {
    NSAttributedString* title = [[[NSAttributedString alloc]
        initWithString:@"Other"
            attributes:[NSDictionary dictionaryWithObject:[NSColor redColor]
                                                   forKey:NSForegroundColorAttributeName]]
        autorelease];
    for (CSize const& size : kSizes) {
        for (const bool fEnabled : {true, false}) {
            for (const bool fImageLeft : {false, true}) {
                [m_button setControlSize:size.size];
                [m_button setEnabled:fEnabled];
                [m_button setImagePosition:fImageLeft ? NSImageLeft : NSImageRight];
                CDrawingCalls calls;
                Draw(true, [&](CGContextRef) {
                    const NSRect answer = [m_button drawTitle:title
                                                    withFrame:kFrame
                                                       inView:Canvas(true)];
                    EXPECT_TRUE(NSEqualRects(answer, kFrame));
                });
                ASSERT_EQ(calls.m_texts.size(), 1u);
                ExpectText(calls.m_texts[0], "Other", kFrame, size.dFont,
                           fImageLeft ? NSTextAlignmentLeft : NSTextAlignmentCenter, ccControlText);
            }
        }
    }
}

TEST_F(ControlCells, WholeButtonWritesItsTitleInsideItsBezel) {
    CDrawingCalls calls;
    const CPicture picture =
        Draw(true, [this](CGContextRef) { [m_button drawWithFrame:kFrame inView:Canvas(true)]; });
    ASSERT_EQ(calls.m_texts.size(), 1u);
    EXPECT_EQ(calls.m_texts[0].strText, "Title");
    EXPECT_TRUE(NSContainsRect(kFrame, calls.m_texts[0].rect));
    const NSRect text =
        picture.Extent([](CPixel pixel) { return IsNear(pixel, Colour(0.1, 0.2, 0.3), 10); });
    EXPECT_FALSE(NSIsEmptyRect(text));
    EXPECT_NEAR(NSMidX(text), NSMidX(kFrame), 3);
}

TEST_F(ControlCells, TitleWithItsImageOnTheLeftBeginsAtTheLeft) {
    const auto textOf = [this](NSCellImagePosition position) {
        [m_button setImagePosition:position];
        const CPicture picture = Draw(true, [this](CGContextRef) {
            NSAttributedString* title =
                [[[NSAttributedString alloc] initWithString:@"Abc"] autorelease];
            [m_button drawTitle:title withFrame:kFrame inView:Canvas(true)];
        });
        return picture.Extent([](CPixel pixel) { return pixel != kBackground; });
    };
    EXPECT_LT(NSMinX(textOf(NSImageLeft)), NSMinX(kFrame) + 4);
    EXPECT_NEAR(NSMidX(textOf(NSNoImage)), NSMidX(kFrame), 2);
}

TEST_F(ControlCells, PopUpWritesTheSelectedTitleBesideItsArrow) {
    for (CSize const& size : kSizes) {
        for (const bool fEnabled : {true, false}) {
            for (const bool fReadOnly : {true, false}) {
                [m_popup setControlSize:size.size];
                [m_popup setEnabled:fEnabled];
                [m_popup SetReadOnly:fReadOnly];
                CDrawingCalls calls;
                DrawPopUp();
                ASSERT_EQ(calls.m_texts.size(), 1u);
                ASSERT_EQ(calls.m_images.size(), 1u);
                const NSSize arrow = [calls.m_images[0].image size];
                const double dSpace = fReadOnly ? 0 : arrow.width + 4;
                ExpectText(calls.m_texts[0], "Second",
                           NSMakeRect(20, 10 + size.dLower, 100 - dSpace, 40 - size.dShorter),
                           size.dFont, NSTextAlignmentCenter,
                           fEnabled || fReadOnly ? ccControlText : ccControlTextDisabled);
                EXPECT_TRUE(NSEqualRects(calls.m_images[0].rect,
                                         NSMakeRect(120 - dSpace, 10 + (40 - arrow.height) * 0.5,
                                                    arrow.width, arrow.height)));
                EXPECT_TRUE(NSIsEmptyRect(calls.m_images[0].source)) << "the whole of it";
                EXPECT_EQ(calls.m_images[0].operation, NSCompositeSourceOver);
                EXPECT_DOUBLE_EQ(calls.m_images[0].dOpacity, fEnabled ? 0.9 : 0.3);
                EXPECT_TRUE([calls.m_images[0].image isFlipped]);
            }
        }
    }
}

TEST_F(ControlCells, AllPopUpsShareOneArrow) {
    CDrawingCalls calls;
    DrawPopUp();
    QXPopUpButtonCell* other = [[[QXPopUpButtonCell alloc] init] autorelease];
    Draw(true, [&](CGContextRef) { [other drawWithFrame:kFrame inView:Canvas(true)]; });
    ASSERT_EQ(calls.m_images.size(), 2u);
    EXPECT_EQ(calls.m_images[0].image, calls.m_images[1].image);
}

TEST_F(ControlCells, ArrowIsSeenInsideUnlessReadOnly) {
    gAppColours.Clear();
    const auto arrow = [this] {
        return DrawPopUp().Extent([](CPixel pixel) { return pixel != kBackground; });
    };
    EXPECT_TRUE(NSEqualRects(arrow(), NSMakeRect(109, 25, 7, 10)))
        << [NSStringFromRect(arrow()) UTF8String];
    [m_popup setEnabled:NO];
    [m_popup SetReadOnly:YES];
    EXPECT_GE(NSMinX(arrow()), 120) << "beyond the frame";
}

TEST_F(ControlCells, DisabledArrowIsFainter) {
    gAppColours.Clear();
    const CPixel enabled = DrawPopUp().At(112, 27);
    [m_popup setEnabled:NO];
    const CPixel disabled = DrawPopUp().At(112, 27);
    // The arrow is of a grey of 192 over a background without green.
    EXPECT_NEAR(enabled.nGreen, 192 * 0.9, 6);
    EXPECT_NEAR(disabled.nGreen, 192 * 0.3, 6);
}

TEST_F(ControlCells, PopUpWithoutASelectionDrawsItsBezelAndArrow) {
    [m_popup removeAllItems];
    CDrawingCalls calls;
    const CPicture picture = DrawPopUp();
    EXPECT_TRUE(picture.IsAll(kFace, NSMakeRect(30, 20, 60, 20)));
    EXPECT_EQ(calls.m_images.size(), 1u);
    EXPECT_TRUE(calls.m_texts.empty());
}

TEST_F(ControlCells, PopUpDrawsItsBezelToo) {
    [m_popup setHighlighted:YES];
    const CPicture picture = DrawPopUp();
    EXPECT_TRUE(IsNear(picture.At(20, 30), kBorderActive));
    EXPECT_TRUE(IsNear(picture.At(22, 30), kFaceActive));
}

}  // namespace
