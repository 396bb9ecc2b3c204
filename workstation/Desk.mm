#import "workstation/Desk.h"

#include <algorithm>

#import "Source/PanelDrawing.h"
#include "colours/ComponentCodes.h"
#import "workstation/Widgets.h"

namespace {

constexpr CGFloat kPanelWidth = 420;
constexpr CGFloat kPanelHeight = 232;
constexpr CGFloat kGap = 12;
constexpr CGFloat kLogHeight = 190;
constexpr CGFloat kLeastLogHeight = 60;

NSUInteger RowsOf(NSUInteger nPanels, NSUInteger nColumns) {
    return (nPanels + nColumns - 1) / nColumns;
}

CGFloat Along(NSUInteger nPanels, CGFloat length) {
    return kGap + nPanels * (length + kGap);
}

}  // namespace

NSSize PanelSize() {
    return NSMakeSize(kPanelWidth, kPanelHeight);
}

/// What lies between the panels; counted from the top, where the first one is.
@interface TavarinWorkstation_Grid : NSView
@end

@implementation TavarinWorkstation_Grid
- (BOOL)isFlipped {
    return YES;
}
- (void)drawRect:(NSRect)dirty {
    [PanelColour(ccTrackBackground) set];
    NSRectFill(dirty);
}
- (BOOL)isOpaque {
    return YES;
}
@end

@interface TavarinWorkstation_Desk (Private)
- (void)Arrange;
@end

@implementation TavarinWorkstation_Desk

+ (NSSize)SizeForPanels:(NSUInteger)nPanels columns:(NSUInteger)nColumns {
    return NSMakeSize(Along(nColumns, kPanelWidth),
                      Along(RowsOf(nPanels, nColumns), kPanelHeight) + kLogHeight + kGap);
}

+ (NSSize)LeastSize {
    return NSMakeSize(Along(1, kPanelWidth), Along(1, kPanelHeight) + kLeastLogHeight + kGap);
}

- (id)initWithPanels:(NSArray*)panels log:(NSView*)log size:(NSSize)size {
    self = [super initWithFrame:NSMakeRect(0, 0, size.width, size.height)];
    if (self == nil) return nil;
    m_panels = [panels retain];
    m_log = log;
    m_scroll = MakeScrollView([self bounds]);
    NSView* grid = [[[TavarinWorkstation_Grid alloc] initWithFrame:[self bounds]] autorelease];
    for (NSUInteger nPanel = 0; nPanel < [m_panels count]; ++nPanel) {
        [grid addSubview:[m_panels objectAtIndex:nPanel]];
    }
    [m_scroll setDocumentView:grid];
    [self addSubview:m_scroll];
    [self addSubview:m_log];
    [self Arrange];
    return self;
}

- (void)dealloc {
    [m_panels release];
    [super dealloc];
}

- (void)resizeSubviewsWithOldSize:(NSSize)size {
    [self Arrange];
}

- (void)Arrange {
    const NSSize size = [self bounds].size;
    const NSUInteger nPanels = [m_panels count];
    const auto nFitting = static_cast<NSUInteger>((size.width - kGap) / (kPanelWidth + kGap));
    const NSUInteger nColumns = std::clamp<NSUInteger>(nFitting, 1, nPanels);
    const CGFloat needed = Along(RowsOf(nPanels, nColumns), kPanelHeight);
    const CGFloat height = std::min(needed, size.height - kLeastLogHeight - kGap);
    [m_scroll setFrame:NSMakeRect(0, size.height - height, size.width, height)];
    [[m_scroll documentView] setFrameSize:NSMakeSize([m_scroll contentSize].width, needed)];
    for (NSUInteger nPanel = 0; nPanel < nPanels; ++nPanel) {
        const NSPoint place = NSMakePoint(Along(nPanel % nColumns, kPanelWidth),
                                          Along(nPanel / nColumns, kPanelHeight));
        [[m_panels objectAtIndex:nPanel]
            setFrame:NSMakeRect(place.x, place.y, kPanelWidth, kPanelHeight)];
    }
    [m_scroll reflectScrolledClipView:[m_scroll contentView]];
    // Its bar takes the place of the gap.
    [m_log setFrame:NSMakeRect(kGap, kGap, size.width - kGap, size.height - height - kGap)];
    [self setNeedsDisplay:YES];
}

- (void)drawRect:(NSRect)dirty {
    [PanelColour(ccTrackBackground) set];
    NSRectFill(dirty);
}

- (BOOL)isOpaque {
    return YES;
}

@end
