#import "workstation/Widgets.h"

#include <algorithm>

#import "Source/PanelDrawing.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#import "controls/QXButtonCell.h"

namespace {

constexpr CGFloat kMargin = 20;
constexpr CGFloat kHeaderHeight = 40;
constexpr CGFloat kTitleSize = 15;
constexpr CGFloat kTextSize = 12;
constexpr CGFloat kLineHeight = 18;
constexpr CGFloat kTitleHeight = 22;
constexpr CGFloat kGap = 8;
constexpr CGFloat kScrollerWidth = 12;
constexpr CGFloat kKnobInset = 2;

NSString* LengthText(CAudioClip const& clip) {
    return [NSString stringWithFormat:@"%lld samples at %d Hz  (%.2f s)",
                                      static_cast<long long>(clip.lFrames), clip.nSampleRate,
                                      clip.Seconds()];
}

NSString* NameText(CAudioClip const& clip) {
    return [Text(clip.strPath) lastPathComponent];
}

void DrawWaveform(CAudioClip const& clip, NSRect area, NSColor* colour) {
    [colour set];
    const CGFloat middle = NSMidY(area);
    const CGFloat step = area.size.width / CAudioClip::kColumns;
    for (std::size_t nColumn = 0; nColumn < clip.peaks.size(); ++nColumn) {
        const CGFloat half = std::max<CGFloat>(0.5, clip.peaks[nColumn] * area.size.height / 2);
        NSRectFill(NSMakeRect(area.origin.x + nColumn * step, middle - half,
                              std::max<CGFloat>(step, 1), 2 * half));
    }
}

}  // namespace

@implementation TavarinWorkstation_Waveform

- (id)initWithFrame:(NSRect)frame {
    self = [super initWithFrame:frame];
    if (self == nil) return nil;
    NSRect line = NSMakeRect(0, frame.size.height - kLineHeight, frame.size.width, kLineHeight);
    m_name = MakeText(@"TavarinProLink_PanelText", @"Nothing yet", line, kTextSize);
    line.origin.y -= kLineHeight;
    m_length = MakeText(@"TavarinProLink_CaptionText", @"", line, kTextSize);
    [self addSubview:m_name];
    [self addSubview:m_length];
    return self;
}

- (void)Show:(CAudioClip const&)clip {
    m_clip = clip;
    [m_name setStringValue:NameText(m_clip)];
    [m_name setToolTip:Text(m_clip.strPath)];
    [m_length setStringValue:LengthText(m_clip)];
    [[self superview] setNeedsDisplay:YES];
}

- (void)SetBright:(BOOL)fBright {
    m_fBright = fBright;
}

- (void)drawRect:(NSRect)dirty {
    if (m_clip.strPath.empty()) return;
    NSRect area = [self bounds];
    area.size.height -= 2 * kLineHeight + kGap;
    [PanelColour(ccTrackBackground) set];
    NSRectFill(area);
    DrawWaveform(
        m_clip, NSInsetRect(area, 4, 4),
        PanelColour(m_fBright ? ccSelectedRegionSelectedAudio : ccUnselectedRegionSelectedAudio));
}

@end

/// A bar without arrows, in the scheme's colours. Nothing is seen of it where nothing scrolls.
@interface TavarinWorkstation_Scroller : NSScroller
@end

@implementation TavarinWorkstation_Scroller
- (void)drawRect:(NSRect)dirty {
    [PanelColour(ccTrackBackground) set];
    NSRectFill([self bounds]);
    NSScrollView* scroll = (NSScrollView*)[self superview];
    const NSRect whole = [[scroll documentView] bounds];
    const NSRect seen = [scroll documentVisibleRect];
    if (whole.size.height <= seen.size.height) return;
    const CGFloat scale = [self bounds].size.height / whole.size.height;
    [PanelColour(ccScrollerThumbFace) set];
    NSRectFill(NSMakeRect(kKnobInset, (seen.origin.y - whole.origin.y) * scale,
                          kScrollerWidth - 2 * kKnobInset, seen.size.height * scale));
}
@end

/// A scroll view whose bar is on the right, whatever AppKit's own do.
@interface TavarinWorkstation_ScrollView : NSScrollView
@end

@implementation TavarinWorkstation_ScrollView
- (void)tile {
    const NSRect bounds = [self bounds];
    const CGFloat width = bounds.size.width - kScrollerWidth;
    [[self contentView] setFrame:NSMakeRect(0, 0, width, bounds.size.height)];
    [[self verticalScroller] setFrame:NSMakeRect(width, 0, kScrollerWidth, bounds.size.height)];
}
@end

NSScrollView* MakeScrollView(NSRect frame) {
    NSScrollView* scroll =
        [[[TavarinWorkstation_ScrollView alloc] initWithFrame:frame] autorelease];
    [scroll setBorderType:NSNoBorder];
    [scroll setDrawsBackground:NO];
    [scroll setHasHorizontalScroller:NO];
    TavarinWorkstation_Scroller* bar = [[[TavarinWorkstation_Scroller alloc]
        initWithFrame:NSMakeRect(0, 0, kScrollerWidth, 100)] autorelease];
    [bar setArrowsPosition:NSScrollerArrowsNone];
    [scroll setVerticalScroller:bar];
    [scroll setHasVerticalScroller:YES];
    [scroll tile];
    return scroll;
}

NSString* Text(std::string const& strText) {
    NSString* text = [NSString stringWithUTF8String:strText.c_str()];
    return text == nil ? @"(not UTF-8)" : text;
}

NSView* MakePanel(NSString* title, NSSize size) {
    const NSRect frame = NSMakeRect(0, 0, size.width, size.height);
    NSView* panel =
        [[[NSClassFromString(@"TavarinProLink_PanelView") alloc] initWithFrame:frame] autorelease];
    const NSRect strip = NSMakeRect(kMargin, size.height - (kHeaderHeight + kTitleHeight) / 2 - 2,
                                    size.width - 2 * kMargin, kTitleHeight);
    [panel addSubview:MakeText(@"TavarinProLink_TitleText", title, strip, kTitleSize)];
    return panel;
}

NSRect PanelContent(NSView* panel) {
    NSRect area = NSInsetRect([panel bounds], kMargin, kMargin);
    area.size.height -= kHeaderHeight;
    return area;
}

NSTextField* MakeText(NSString* className, NSString* text, NSRect frame, CGFloat size) {
    NSTextField* field = [[[NSClassFromString(className) alloc] initWithFrame:frame] autorelease];
    [field setStringValue:text];
    [field setFont:[NSFont systemFontOfSize:size]];
    [field setBordered:NO];
    [field setBezeled:NO];
    [field setDrawsBackground:NO];
    [field setEditable:NO];
    [field setSelectable:NO];
    return field;
}

NSTextField* MakeField(NSString* text, NSRect frame) {
    NSTextField* field = [[[NSTextField alloc] initWithFrame:frame] autorelease];
    [field setStringValue:text];
    [field setFont:[NSFont systemFontOfSize:kTextSize + 1]];
    [field setBezeled:NO];
    [field setDrawsBackground:YES];
    [field setBordered:YES];
    ColourField(field);
    return field;
}

void ColourField(NSTextField* field) {
    [field setTextColor:PanelColour(ccTextEditorForeground)];
    [field setBackgroundColor:PanelColour(ccTextEditorBackground)];
}

NSButton* MakeButton(NSString* title, NSRect frame, id target, SEL action, NSString* toolTip) {
    NSButton* button = [[[NSButton alloc] initWithFrame:frame] autorelease];
    [button setCell:[[[NSClassFromString(@"QXButtonCell") alloc] init] autorelease]];
    [button setTitle:title];
    [button setButtonType:NSMomentaryPushInButton];
    [button setTarget:target];
    [button setAction:action];
    [button setToolTip:toolTip];
    return button;
}

void ShowChosen(NSButton* button, bool fChosen) {
    // Not every scheme has a face for what is pressed.
    const CComponentCode pressed = gAppColours.Find(ccButtonFaceActive)
                                       ? ccButtonFaceActive
                                       : ccMorlandProjectButtonHighlighted;
    [(QXButtonCell*)[button cell]
        SetButtonControlsFaceUp:fChosen ? pressed : ccButtonFace
                       BorderUp:fChosen ? ccButtonBorderActive : ccButtonBorder
                       FaceDown:pressed
                     BorderDown:ccButtonBorderActive];
    [button setNeedsDisplay:YES];
}
