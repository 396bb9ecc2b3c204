#import "workstation/Widgets.h"

#include <algorithm>

#import "Source/PanelDrawing.h"
#include "colours/ComponentCodes.h"

namespace {

constexpr CGFloat kMargin = 20;
constexpr CGFloat kHeaderHeight = 40;
constexpr CGFloat kTitleSize = 15;
constexpr CGFloat kTextSize = 12;

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

@implementation TavarinWorkstation_Panel

- (id)initWithFrame:(NSRect)frame title:(NSString*)title {
    self = [super initWithFrame:frame];
    if (self != nil) m_title = [title copy];
    return self;
}

- (void)dealloc {
    [m_title release];
    [super dealloc];
}

- (void)drawRect:(NSRect)dirty {
    DrawPanel([self bounds]);
    const NSRect bounds = [self bounds];
    const NSRect header = NSMakeRect(kMargin, NSMaxY(bounds) - kHeaderHeight,
                                     bounds.size.width - 2 * kMargin, kHeaderHeight);
    DrawLine(m_title, [NSFont systemFontOfSize:kTitleSize], ccControlOnText, header,
             NSLeftTextAlignment);
}

@end

@implementation TavarinWorkstation_WaveformPanel

- (void)Show:(CAudioClip const&)clip {
    m_clip = clip;
    [self setNeedsDisplay:YES];
}

- (void)SetBright:(BOOL)fBright {
    m_fBright = fBright;
}

- (void)drawRect:(NSRect)dirty {
    [super drawRect:dirty];
    NSRect area = NSInsetRect([self bounds], kMargin, kMargin);
    area.size.height -= kHeaderHeight;
    const bool fEmpty = m_clip.strPath.empty();
    NSFont* font = [NSFont systemFontOfSize:kTextSize];
    NSRect line = area;
    line.size.height = 18;
    line.origin.y = NSMaxY(area) - line.size.height;
    DrawLine(fEmpty ? @"Nothing yet" : NameText(m_clip), font, ccControlText, line,
             NSLeftTextAlignment);
    if (fEmpty) return;
    line.origin.y -= line.size.height;
    DrawLine(LengthText(m_clip), font, ccAudioLabel, line, NSLeftTextAlignment);
    area.size.height = line.origin.y - area.origin.y - 8;
    [PanelColour(ccTrackBackground) set];
    NSRectFill(area);
    DrawWaveform(
        m_clip, NSInsetRect(area, 4, 4),
        PanelColour(m_fBright ? ccSelectedRegionSelectedAudio : ccUnselectedRegionSelectedAudio));
}

@end

@implementation TavarinWorkstation_ButtonCell

- (void)drawWithFrame:(NSRect)frame inView:(NSView*)view {
    const bool fOn = [self state] != 0;
    DrawFace(frame, fOn || [self isHighlighted], HasFocus(view));
    DrawLine([self title], [self font], fOn ? ccControlOnText : ccControlText, frame,
             NSCenterTextAlignment);
}

@end

NSString* Text(std::string const& strText) {
    NSString* text = [NSString stringWithUTF8String:strText.c_str()];
    return text == nil ? @"(not UTF-8)" : text;
}

NSTextField* MakeLabel(NSString* text, NSRect frame, CGFloat size) {
    NSTextField* label = [[[NSTextField alloc] initWithFrame:frame] autorelease];
    [label setStringValue:text];
    [label setFont:[NSFont systemFontOfSize:size]];
    [label setTextColor:PanelColour(ccTimeAxisText)];
    [label setBordered:NO];
    [label setBezeled:NO];
    [label setDrawsBackground:NO];
    [label setEditable:NO];
    [label setSelectable:NO];
    return label;
}

NSTextField* MakeField(NSString* text, NSRect frame) {
    NSTextField* field = MakeLabel(text, frame, kTextSize + 1);
    [field setTextColor:PanelColour(ccTextEditorForeground)];
    [field setBackgroundColor:PanelColour(ccTextEditorBackground)];
    [field setDrawsBackground:YES];
    [field setBordered:YES];
    [field setEditable:YES];
    return field;
}

NSButton* MakeButton(NSString* title, NSRect frame, id target, SEL action, NSString* toolTip) {
    NSButton* button = [[[NSButton alloc] initWithFrame:frame] autorelease];
    TavarinWorkstation_ButtonCell* cell =
        [[[TavarinWorkstation_ButtonCell alloc] initTextCell:title] autorelease];
    [button setCell:cell];
    [button setButtonType:NSMomentaryPushInButton];
    [button setFont:[NSFont systemFontOfSize:kTextSize + 1]];
    [button setTarget:target];
    [button setAction:action];
    [button setToolTip:toolTip];
    return button;
}
