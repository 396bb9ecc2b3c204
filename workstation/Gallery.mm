// Every control in every state: a panel for each palette and each look of the bezels.

#import <AppKit/AppKit.h>

#include <iterator>
#include <string>

#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"
#include "colours/SchemeFile.h"
#import "controls/GraphicUtils.h"
#import "controls/QXButtonCell.h"
#import "controls/QXPopUpButtonCell.h"

namespace {

constexpr CGFloat kGap = 12;
constexpr CGFloat kMargin = 16;
constexpr CGFloat kHeaderHeight = 34;
constexpr CGFloat kCaptionHeight = 22;
constexpr CGFloat kRowHeight = 28;
constexpr CGFloat kRowLabelWidth = 60;
constexpr CGFloat kSampleWidth = 116;
constexpr CGFloat kSampleGap = 8;
constexpr CGFloat kCaptionSize = 11;
constexpr CGFloat kTitleSize = 14;
constexpr CGFloat kLampSize = 10;
constexpr int kColumns = 5;
constexpr std::int32_t kTopToBottom = 1;

using Palette = void (*)(CComponentsColors*);

/// What the Engineer palette gives way to, once there is one.
struct CShownScheme {
    std::string strName;
    std::string strImage;
};

CShownScheme& ShownScheme() {
    static CShownScheme scheme;
    return scheme;
}

void FillWithScheme(CComponentsColors* colours) {
    ReplaceScheme(*colours, ShownScheme().strImage);
}

/// One panel.
struct CLook {
    NSString* palette;  ///< nil: the scheme that is shown
    NSString* style;
    Palette fill;
    std::int32_t nStyle;
};

const CLook kPaletteLooks[] = {
    {@"Designer", @"flat", AppCreateDefaultColoursDesigner, 1},
    {@"Engineer", @"flat", AppCreateDefaultColoursEngineer, 1},
    {@"Designer", @"shaded", AppCreateDefaultColoursDesigner, 0},
    {@"Engineer", @"shaded", AppCreateDefaultColoursEngineer, 0},
};

const CLook kSchemeLooks[] = {
    {nil, @"flat", FillWithScheme, 1},
    {@"Designer", @"flat", AppCreateDefaultColoursDesigner, 1},
    {nil, @"shaded", FillWithScheme, 0},
    {@"Designer", @"shaded", AppCreateDefaultColoursDesigner, 0},
};
static_assert(std::size(kPaletteLooks) == std::size(kSchemeLooks));

NSString* TitleOf(CLook const& look) {
    NSString* name =
        look.palette ? look.palette : [NSString stringWithUTF8String:ShownScheme().strName.c_str()];
    return [NSString stringWithFormat:@"%@, %@", name, look.style];
}

/// One row of samples, as high as suits the size.
struct CSize {
    NSString* title;
    NSControlSize size;
    CGFloat buttonHeight;
    CGFloat popUpHeight;
};

const CSize kSizes[] = {
    {@"Regular", NSControlSizeRegular, 20, 18},
    {@"Small", NSControlSizeSmall, 18, 18},
    {@"Mini", NSControlSizeMini, 15, 13},
};

/// One column of samples.
struct CState {
    NSString* title;
    bool fPressed;
    bool fEnabled;
    bool fReadOnly;
    bool fImageLeft;
};

const CState kButtonStates[] = {
    {@"Up", false, true, false, false},        {@"Pressed", true, true, false, false},
    {@"Disabled", false, false, false, false}, {@"Disabled, pressed", true, false, false, false},
    {@"Image left", false, true, false, true},
};

const CState kPopUpStates[] = {
    {@"Up", false, true, false, false},
    {@"Pressed", true, true, false, false},
    {@"Disabled", false, false, false, false},
    {@"Read-only", false, true, true, false},
    {@"Read-only, disabled", false, false, true, false},
};

constexpr CGFloat kPanelWidth =
    2 * kMargin + kRowLabelWidth + kColumns * (kSampleWidth + kSampleGap) - kSampleGap;
constexpr CGFloat kPanelHeight =
    kHeaderHeight + 2 * (kCaptionHeight + std::size(kSizes) * kRowHeight) + kMargin;

/// What fills the colours now; null when they have to be filled again.
Palette gCurrent = nullptr;

/// Sets what the controls read while they are drawn.
void Use(CLook const& look) {
    if (look.fill != gCurrent) look.fill(&gAppColours);
    gCurrent = look.fill;
    gnAppStyle = look.nStyle;
}

void Fill(NSRect rect, CComponentCode code) {
    [GraphicUtils
             FillRect:static_cast<CGContextRef>([[NSGraphicsContext currentContext] graphicsPort])
                Color:code
           Background:CComponentCode()
                 Rect:rect
        FillDirection:kTopToBottom
              Flipped:YES];
}

void Write(NSString* text, CGFloat x, CGFloat y, CGFloat size) {
    NSDictionary* attributes = [NSDictionary
        dictionaryWithObjectsAndKeys:[NSFont systemFontOfSize:size], NSFontAttributeName,
                                     gAppColours.FindNSColor(ccLabelText),
                                     NSForegroundColorAttributeName, nil];
    [text drawAtPoint:NSMakePoint(x, y) withAttributes:attributes];
}

CGFloat ColumnX(int nColumn) {
    return kMargin + kRowLabelWidth + nColumn * (kSampleWidth + kSampleGap);
}

NSImage* MakeLamp() {
    NSImage* lamp = [[[NSImage alloc] initWithSize:NSMakeSize(kLampSize, kLampSize)] autorelease];
    [lamp lockFocus];
    [[NSColor colorWithDeviceRed:0.53 green:0.84 blue:0.97 alpha:1] set];
    [[NSBezierPath bezierPathWithOvalInRect:NSMakeRect(1, 1, kLampSize - 2, kLampSize - 2)] fill];
    [lamp unlockFocus];
    return lamp;
}

NSButtonCell* MakeButton(CState const& state) {
    QXButtonCell* cell = [[[QXButtonCell alloc] init] autorelease];
    [cell setTitle:@"Guide take"];
    if (!state.fImageLeft) return cell;
    [cell setImage:MakeLamp()];
    [cell setImagePosition:NSImageLeft];
    return cell;
}

NSButtonCell* MakePopUp(CState const& state) {
    QXPopUpButtonCell* cell = [[[QXPopUpButtonCell alloc] init] autorelease];
    [cell addItemWithTitle:@"Lead vocal"];
    [cell SetReadOnly:state.fReadOnly];
    return cell;
}

}  // namespace

/// One cell in one state, drawn in one look. A view of its own, for shaded bezels are drawn at the
/// origin.
@interface TavarinGallery_Sample : NSView {
@public
    CLook const* m_look;
    NSButtonCell* m_cell;
}
@end

@implementation TavarinGallery_Sample

- (void)dealloc {
    [m_cell release];
    [super dealloc];
}

- (BOOL)isFlipped {
    return YES;
}

- (void)drawRect:(NSRect)dirty {
    Use(*m_look);
    [m_cell drawWithFrame:[self bounds] inView:self];
}

@end

@interface TavarinGallery_Panel : NSView {
@public
    CLook const* m_look;
}
- (void)AddSamples;
- (void)Show:(CLook const*)look;
@end

@implementation TavarinGallery_Panel

- (BOOL)isFlipped {
    return YES;
}

- (void)Show:(CLook const*)look {
    m_look = look;
    for (NSUInteger nSample = 0; nSample < [[self subviews] count]; ++nSample) {
        TavarinGallery_Sample* sample = [[self subviews] objectAtIndex:nSample];
        sample->m_look = look;
    }
}

- (void)AddSamples {
    CGFloat y = kHeaderHeight;
    for (const bool fPopUp : {false, true}) {
        y += kCaptionHeight;
        for (CSize const& size : kSizes) {
            for (int nColumn = 0; nColumn < kColumns; ++nColumn) {
                CState const& state = (fPopUp ? kPopUpStates : kButtonStates)[nColumn];
                const CGFloat height = fPopUp ? size.popUpHeight : size.buttonHeight;
                TavarinGallery_Sample* sample = [[[TavarinGallery_Sample alloc]
                    initWithFrame:NSMakeRect(ColumnX(nColumn), y + (kRowHeight - height) / 2,
                                             kSampleWidth, height)] autorelease];
                sample->m_look = m_look;
                sample->m_cell = [(fPopUp ? MakePopUp(state) : MakeButton(state)) retain];
                [sample->m_cell setControlSize:size.size];
                [sample->m_cell setHighlighted:state.fPressed];
                [sample->m_cell setEnabled:state.fEnabled];
                [self addSubview:sample];
            }
            y += kRowHeight;
        }
    }
}

- (void)drawRect:(NSRect)dirty {
    Use(*m_look);
    const NSRect bounds = [self bounds];
    Fill(bounds, ccWindowBackground);
    Write(TitleOf(*m_look), kMargin, 10, kTitleSize);
    CGFloat y = kHeaderHeight;
    for (CState const* states : {kButtonStates, kPopUpStates}) {
        Write(states == kButtonStates ? @"Buttons" : @"Pop-ups", kMargin, y + 5, kCaptionSize);
        for (int nColumn = 0; nColumn < kColumns; ++nColumn) {
            Write(states[nColumn].title, ColumnX(nColumn), y + 5, kCaptionSize);
        }
        y += kCaptionHeight;
        for (CSize const& size : kSizes) {
            Write(size.title, kMargin, y + 8, kCaptionSize);
            y += kRowHeight;
        }
    }
}

@end

/// The whole gallery, in the size that it needs.
@interface TavarinGallery_View : NSView

/// Shows a scheme, given as its image, in place of one of the palettes.
- (void)UseScheme:(NSData*)image named:(NSString*)name;

@end

@implementation TavarinGallery_View

- (id)init {
    self = [super
        initWithFrame:NSMakeRect(0, 0, 3 * kGap + 2 * kPanelWidth, 3 * kGap + 2 * kPanelHeight)];
    if (self == nil) return nil;
    for (std::size_t nLook = 0; nLook < std::size(kPaletteLooks); ++nLook) {
        const NSRect frame =
            NSMakeRect(kGap + (nLook % 2) * (kPanelWidth + kGap),
                       kGap + (nLook / 2) * (kPanelHeight + kGap), kPanelWidth, kPanelHeight);
        TavarinGallery_Panel* panel =
            [[[TavarinGallery_Panel alloc] initWithFrame:frame] autorelease];
        panel->m_look = &kPaletteLooks[nLook];
        [panel AddSamples];
        [self addSubview:panel];
    }
    return self;
}

- (void)UseScheme:(NSData*)image named:(NSString*)name {
    ShownScheme() = {[name UTF8String],
                     std::string(static_cast<const char*>([image bytes]), [image length])};
    gCurrent = nullptr;
    for (NSUInteger nLook = 0; nLook < [[self subviews] count]; ++nLook) {
        [[[self subviews] objectAtIndex:nLook] Show:&kSchemeLooks[nLook]];
    }
    [self setNeedsDisplay:YES];
}

- (BOOL)isFlipped {
    return YES;
}

- (void)drawRect:(NSRect)dirty {
    [[NSColor colorWithDeviceWhite:0.5 alpha:1] set];
    NSRectFill(dirty);
}

@end
