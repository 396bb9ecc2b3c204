#import "Source/TrackList.h"

#include <algorithm>

#import "Source/FloatingWindow.h"
#import "Source/PanelDrawing.h"
#import "Source/TrackPopUp.h"
#include "colours/ComponentCodes.h"

namespace {

constexpr CGFloat kRowHeight = 20;
constexpr CGFloat kArrowHeight = 14;
constexpr CGFloat kCheckWidth = 20;
constexpr CGFloat kMargin = 8;
constexpr CGFloat kTextSize = 12;
constexpr CGFloat kTextTop = 2;
constexpr CGFloat kFromScreenEdge = 8;
constexpr NSInteger kMostRows = 30;
constexpr NSUInteger kLongTitle = 40;
constexpr NSTimeInterval kScrollEvery = 0.05;
constexpr NSTimeInterval kTypedTogether = 1.0;

NSDictionary* Attributes() {
    NSMutableParagraphStyle* style = [[[NSMutableParagraphStyle alloc] init] autorelease];
    [style setLineBreakMode:NSLineBreakByTruncatingMiddle];
    NSColor* colour = PanelColour(ccTextEditorForeground);
    return [NSDictionary dictionaryWithObjectsAndKeys:[NSFont systemFontOfSize:kTextSize],
                                                      NSFontAttributeName, style,
                                                      NSParagraphStyleAttributeName,
                                                      colour == nil ? [NSColor textColor] : colour,
                                                      NSForegroundColorAttributeName, nil];
}

// Only long titles are worth measuring: the others fit below any pop-up.
CGFloat LongestWidth(NSArray* titles) {
    NSDictionary* attributes = Attributes();
    CGFloat width = 0;
    for (NSUInteger nTitle = 0; nTitle < [titles count]; ++nTitle) {
        NSString* title = [titles objectAtIndex:nTitle];
        if ([title length] < kLongTitle) continue;
        width = std::max(width, [title sizeWithAttributes:attributes].width);
    }
    return ceil(width);
}

void FillWith(CComponentCode code, NSRect rect) {
    NSColor* colour = PanelColour(code);
    if (colour == nil) return;
    [colour set];
    NSRectFill(rect);
}

void DrawCheck(NSRect row) {
    NSBezierPath* check = [NSBezierPath bezierPath];
    const CGFloat x = row.origin.x + kMargin;
    const CGFloat y = NSMidY(row);
    [check moveToPoint:NSMakePoint(x, y)];
    [check lineToPoint:NSMakePoint(x + 3, y + 3.5)];
    [check lineToPoint:NSMakePoint(x + 8, y - 4.5)];
    [check setLineWidth:1.6];
    [check stroke];
}

// Pointing up for a negative direction, down otherwise.
void DrawArrow(NSRect strip, NSInteger nDirection) {
    const CGFloat half = nDirection < 0 ? -2.5 : 2.5;
    NSBezierPath* arrow = [NSBezierPath bezierPath];
    [arrow moveToPoint:NSMakePoint(NSMidX(strip) - 5, NSMidY(strip) - half)];
    [arrow lineToPoint:NSMakePoint(NSMidX(strip) + 5, NSMidY(strip) - half)];
    [arrow lineToPoint:NSMakePoint(NSMidX(strip), NSMidY(strip) + half)];
    [arrow closePath];
    [arrow fill];
}

}  // namespace

/// Lies over the pop-up's window while the list is open: a click anywhere else closes the list.
@interface TavarinProLink_TrackShield : NSView {
@public
    TavarinProLink_TrackPopUp* m_popup;
}
@end

@implementation TavarinProLink_TrackShield
- (void)mouseDown:(NSEvent*)event {
    [m_popup Close];
}
- (void)rightMouseDown:(NSEvent*)event {
    [m_popup Close];
}
- (void)otherMouseDown:(NSEvent*)event {
    [m_popup Close];
}
@end

@interface TavarinProLink_TrackList (Private)
- (NSRect)PlaceForRows:(NSInteger)nRows;
- (BOOL)HasArrows;
- (NSRect)RowFrame:(NSInteger)nEntry;
- (NSRect)ArrowFrame:(NSInteger)nDirection;
- (void)Highlight:(NSInteger)nEntry;
- (void)ScrollTo:(NSInteger)nFirst;
- (void)StartScrolling:(NSInteger)nDirection;
- (void)Show:(NSInteger)nEntry;
- (void)Type:(NSString*)text;
- (NSPoint)HereFrom:(NSPoint)place;
@end

@implementation TavarinProLink_TrackList

- (id)initForPopUp:(TavarinProLink_TrackPopUp*)popup {
    NSArray* titles = [popup itemTitles];
    m_popup = popup;
    m_titles = [titles retain];
    m_nChosen = [popup indexOfSelectedItem];
    m_nHighlighted = m_nChosen;
    const NSRect place = [self PlaceForRows:[titles count]];
    self = [super initWithFrame:NSMakeRect(0, 0, place.size.width, place.size.height)];
    if (self == nil) return nil;
    NSView* contents = [[popup window] contentView];
    TavarinProLink_TrackShield* shield =
        [[TavarinProLink_TrackShield alloc] initWithFrame:[contents bounds]];
    shield->m_popup = popup;
    m_shield = shield;
    [contents addSubview:shield];
    [self ScrollTo:m_nChosen - m_nVisible / 2];
    Float(self, place);
    return self;
}

- (void)dealloc {
    [m_titles release];
    [m_typed release];
    [super dealloc];
}

- (void)Close {
    [self StartScrolling:0];
    [m_shield removeFromSuperview];
    [m_shield release];
    m_shield = nil;
    CloseFloating(self);
}

// Below the pop-up, or above it where more of the list fits; on the screen in any case.
- (NSRect)PlaceForRows:(NSInteger)nRows {
    const NSRect popup = PlaceOnScreen(m_popup);
    const NSRect screen =
        NSInsetRect(ScreenArea([m_popup window]), kFromScreenEdge, kFromScreenEdge);
    const CGFloat below = NSMinY(popup) - NSMinY(screen);
    const CGFloat above = NSMaxY(screen) - NSMaxY(popup);
    const bool fBelow = below >= std::min(nRows, kMostRows) * kRowHeight || below >= above;
    const CGFloat room = std::max(fBelow ? below : above, 3 * kRowHeight + 2 * kArrowHeight);
    const auto nFitting = static_cast<NSInteger>(room / kRowHeight);
    m_nVisible = std::min(nRows, std::min(nFitting, kMostRows));
    if (m_nVisible < nRows) {
        const auto nBetweenArrows = static_cast<NSInteger>((room - 2 * kArrowHeight) / kRowHeight);
        m_nVisible = std::min(nBetweenArrows, kMostRows);
    }
    const CGFloat height = m_nVisible * kRowHeight + (m_nVisible < nRows ? 2 * kArrowHeight : 0);
    const CGFloat wanted = kCheckWidth + LongestWidth(m_titles) + kMargin;
    const CGFloat width = std::min(std::max(popup.size.width, wanted), screen.size.width);
    const CGFloat x = std::max(std::min(NSMinX(popup), NSMaxX(screen) - width), NSMinX(screen));
    return NSMakeRect(x, fBelow ? NSMinY(popup) - height : NSMaxY(popup), width, height);
}

- (BOOL)isFlipped {
    return YES;
}

- (BOOL)isOpaque {
    return YES;
}

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
    return YES;
}

- (BOOL)HasArrows {
    return m_nVisible < static_cast<NSInteger>([m_titles count]);
}

- (NSRect)RowFrame:(NSInteger)nEntry {
    const CGFloat top = [self HasArrows] ? kArrowHeight : 0;
    return NSMakeRect(0, top + (nEntry - m_nFirst) * kRowHeight, [self bounds].size.width,
                      kRowHeight);
}

- (NSRect)ArrowFrame:(NSInteger)nDirection {
    if (![self HasArrows]) return NSZeroRect;
    const NSRect bounds = [self bounds];
    const CGFloat y = nDirection < 0 ? 0 : NSMaxY(bounds) - kArrowHeight;
    return NSMakeRect(0, y, bounds.size.width, kArrowHeight);
}

- (void)drawRect:(NSRect)dirty {
    const NSRect bounds = [self bounds];
    FillWith(ccTextEditorBackground, bounds);
    NSDictionary* attributes = Attributes();
    const NSInteger nEnd =
        std::min(m_nFirst + m_nVisible, static_cast<NSInteger>([m_titles count]));
    for (NSInteger nEntry = m_nFirst; nEntry < nEnd; ++nEntry) {
        const NSRect row = [self RowFrame:nEntry];
        if (nEntry == m_nHighlighted) FillWith(ccSelectedTextBackground, row);
        [PanelColour(ccTextEditorForeground) set];
        if (nEntry == m_nChosen) DrawCheck(row);
        const NSRect text =
            NSMakeRect(kCheckWidth, row.origin.y + kTextTop, row.size.width - kCheckWidth - kMargin,
                       kRowHeight - kTextTop);
        [[m_titles objectAtIndex:nEntry] drawInRect:text withAttributes:attributes];
    }
    [PanelColour(ccTextEditorForeground) set];
    if (m_nFirst > 0) DrawArrow([self ArrowFrame:-1], -1);
    if (nEnd < static_cast<NSInteger>([m_titles count])) DrawArrow([self ArrowFrame:1], 1);
    [PanelColour(ccTextEditorBackgroundBorder) set];
    NSFrameRect(bounds);
}

- (NSInteger)Highlighted {
    return m_nHighlighted;
}

- (NSInteger)First {
    return m_nFirst;
}

- (void)Highlight:(NSInteger)nEntry {
    if (nEntry == m_nHighlighted) return;
    m_nHighlighted = nEntry;
    [self setNeedsDisplay:YES];
}

- (void)ScrollTo:(NSInteger)nFirst {
    const NSInteger nLast = static_cast<NSInteger>([m_titles count]) - m_nVisible;
    m_nFirst = std::max<NSInteger>(0, std::min(nFirst, nLast));
    [self setNeedsDisplay:YES];
}

- (NSPoint)HereFrom:(NSPoint)place {
    return [self convertPoint:[[self window] convertScreenToBase:place] fromView:nil];
}

- (NSInteger)EntryAt:(NSPoint)place {
    const NSPoint here = [self HereFrom:place];
    for (NSInteger nEntry = m_nFirst; nEntry < m_nFirst + m_nVisible; ++nEntry) {
        if (NSMouseInRect(here, [self RowFrame:nEntry], YES)) return nEntry;
    }
    return -1;
}

- (void)PointAt:(NSPoint)place {
    const NSPoint here = [self HereFrom:place];
    const bool fUp = NSMouseInRect(here, [self ArrowFrame:-1], YES);
    const bool fDown = NSMouseInRect(here, [self ArrowFrame:1], YES);
    [self StartScrolling:fUp ? -1 : (fDown ? 1 : 0)];
    const NSInteger nEntry = [self EntryAt:place];
    if (nEntry >= 0) [self Highlight:nEntry];
}

- (void)StartScrolling:(NSInteger)nDirection {
    if (nDirection == m_nScrolling) return;
    m_nScrolling = nDirection;
    [m_timer invalidate];
    m_timer = nil;
    if (nDirection == 0) return;
    m_timer = [NSTimer scheduledTimerWithTimeInterval:kScrollEvery
                                               target:self
                                             selector:@selector(OnScroll:)
                                             userInfo:nil
                                              repeats:YES];
}

- (void)OnScroll:(NSTimer*)timer {
    [self ScrollTo:m_nFirst + m_nScrolling];
}

- (void)mouseMoved:(NSEvent*)event {
    [self PointAt:[[self window] convertBaseToScreen:[event locationInWindow]]];
}

- (void)mouseDown:(NSEvent*)event {
    [self mouseMoved:event];
}

- (void)mouseDragged:(NSEvent*)event {
    [self mouseMoved:event];
}

- (void)mouseUp:(NSEvent*)event {
    const NSInteger nEntry =
        [self EntryAt:[[self window] convertBaseToScreen:[event locationInWindow]]];
    if (nEntry >= 0) [m_popup Choose:nEntry];
}

- (void)scrollWheel:(NSEvent*)event {
    const CGFloat rows = [event deltaY];
    if (rows == 0) return;
    [self ScrollTo:m_nFirst - static_cast<NSInteger>(rows > 0 ? ceil(rows) : floor(rows))];
    [self mouseMoved:event];
}

- (void)TakeKey:(NSEvent*)event {
    NSString* keys = [event characters];
    if ([keys length] == 0) return;
    const auto nLast = static_cast<NSInteger>([m_titles count]) - 1;
    const unichar key = [keys characterAtIndex:0];
    const bool fTyping = m_typed != nil && [event timestamp] - m_lastTyped < kTypedTogether;
    NSInteger nTo = m_nHighlighted;
    switch (key) {
        case 0x1B:
            return [m_popup Close];
        case NSNewlineCharacter:
        case NSEnterCharacter:
        case NSCarriageReturnCharacter:
            return [m_popup Choose:m_nHighlighted];
        case ' ':
            if (!fTyping) return [m_popup Choose:m_nHighlighted];
            break;
        case NSUpArrowFunctionKey:
            nTo -= 1;
            break;
        case NSDownArrowFunctionKey:
            nTo += 1;
            break;
        case NSPageUpFunctionKey:
            nTo -= m_nVisible;
            break;
        case NSPageDownFunctionKey:
            nTo += m_nVisible;
            break;
        case NSHomeFunctionKey:
            nTo = 0;
            break;
        case NSEndFunctionKey:
            nTo = nLast;
            break;
        default:
            break;
    }
    const bool fFunctionKey = key >= 0xF700 && key <= 0xF8FF;
    if (!fFunctionKey) {
        NSString* before = fTyping ? m_typed : @"";
        m_lastTyped = [event timestamp];
        return [self Type:[before stringByAppendingString:keys]];
    }
    [self Show:std::max<NSInteger>(0, std::min(nTo, nLast))];
}

- (void)Show:(NSInteger)nEntry {
    if (nEntry < m_nFirst) [self ScrollTo:nEntry];
    if (nEntry >= m_nFirst + m_nVisible) [self ScrollTo:nEntry - m_nVisible + 1];
    [self Highlight:nEntry];
}

- (void)Type:(NSString*)text {
    [m_typed autorelease];
    m_typed = [text copy];
    for (NSUInteger nEntry = 0; nEntry < [m_titles count]; ++nEntry) {
        const NSRange found = [[m_titles objectAtIndex:nEntry]
            rangeOfString:text
                  options:NSCaseInsensitiveSearch | NSAnchoredSearch];
        if (found.location == 0 && found.length > 0) return [self Show:nEntry];
    }
}

@end
