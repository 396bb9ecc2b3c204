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

- (void)Show:(CAudioClip const&)clip {
    m_clip = clip;
    [[self superview] setNeedsDisplay:YES];
}

- (void)SetBright:(BOOL)fBright {
    m_fBright = fBright;
}

- (void)drawRect:(NSRect)dirty {
    NSRect area = [self bounds];
    const bool fEmpty = m_clip.strPath.empty();
    NSRect line = area;
    line.size.height = kLineHeight;
    line.origin.y = NSMaxY(area) - line.size.height;
    DrawPanelText(fEmpty ? @"Nothing yet" : NameText(m_clip), kTextSize, ccControlText, line);
    if (fEmpty) return;
    line.origin.y -= line.size.height;
    DrawPanelText(LengthText(m_clip), kTextSize, ccAudioLabel, line);
    area.size.height = line.origin.y - area.origin.y - kGap;
    [PanelColour(ccTrackBackground) set];
    NSRectFill(area);
    DrawWaveform(
        m_clip, NSInsetRect(area, 4, 4),
        PanelColour(m_fBright ? ccSelectedRegionSelectedAudio : ccUnselectedRegionSelectedAudio));
}

@end

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
