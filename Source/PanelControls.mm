#import "Source/PanelControls.h"

#include <set>

#import "Source/PanelDrawing.h"
#include "Source/Preferences.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#import "controls/GraphicUtils.h"
#import "controls/QXButtonCell.h"

namespace {

constexpr CGFloat kHeaderHeight = 40;
constexpr CGFloat kLampSize = 7;
constexpr CGFloat kLampMiddle = 14;
constexpr NSSize kLampRoom = {20, 10};
constexpr CGFloat kDisabledVeil = 0.6;
constexpr std::int32_t kTopToBottom = 1;

void Fill(NSRect rect, CComponentCode code) {
    const auto context =
        static_cast<CGContextRef>([[NSGraphicsContext currentContext] graphicsPort]);
    [GraphicUtils FillRect:context
                     Color:code
                Background:CComponentCode()
                      Rect:rect
             FillDirection:kTopToBottom
                   Flipped:NO];
}

// Keeps the title away from the lamp, which is drawn anew each time, in the scheme's colours.
NSImage* RoomForTheLamp() {
    static NSImage* const room = [[NSImage alloc] initWithSize:kLampRoom];
    return room;
}

void DrawLamp(NSRect bounds, bool fLit) {
    NSColor* colour = PanelColour(fLit ? ccControlOnText : ccControlTextDisabled);
    if (colour == nil) return;
    [colour set];
    const NSRect lamp = NSMakeRect(bounds.origin.x + kLampMiddle - kLampSize / 2,
                                   NSMidY(bounds) - kLampSize / 2, kLampSize, kLampSize);
    NSBezierPath* circle = [NSBezierPath bezierPathWithOvalInRect:lamp];
    if (fLit) [circle fill];
    [circle stroke];
}

// Lets the window shine through what cannot be pressed.
void DrawVeil(NSRect bounds) {
    NSColor* colour = PanelColour(ccWindowBackground);
    if (colour == nil) return;
    [[colour colorWithAlphaComponent:kDisabledVeil] set];
    NSRectFillUsingOperation(bounds, NSCompositeSourceOver);
}

/// The codes that a button is drawn with: those of the pressed look also when it is on, and others
/// for what the scheme lacks. The cell's own come back at the end of the scope.
class CButtonLook {
public:
    CButtonLook(QXButtonCell* cell, bool fOn)
        : m_cell(cell),
          m_faceUp(cell->m_nFaceUp),
          m_borderUp(cell->m_nBorderUp),
          m_faceDown(cell->m_nFaceDown) {
        if (gAppColours.Find(m_faceDown) == nullptr) {
            cell->m_nFaceDown = ccMorlandProjectButtonHighlighted;
        }
        if (!fOn) return;
        cell->m_nFaceUp = cell->m_nFaceDown;
        cell->m_nBorderUp = cell->m_nBorderDown;
    }
    ~CButtonLook() {
        m_cell->m_nFaceUp = m_faceUp;
        m_cell->m_nBorderUp = m_borderUp;
        m_cell->m_nFaceDown = m_faceDown;
    }
    CButtonLook(CButtonLook const&) = delete;
    CButtonLook& operator=(CButtonLook const&) = delete;

private:
    QXButtonCell* m_cell;
    CComponentCode m_faceUp;
    CComponentCode m_borderUp;
    CComponentCode m_faceDown;
};

/// All panels that are in a window.
std::set<NSView*>& Panels() {
    // Never destroyed: a panel may be freed when the process ends.
    static auto* const pPanels = new std::set<NSView*>;
    return *pPanels;
}

void RepaintPanels() {
    for (NSView* panel : Panels()) [panel setNeedsDisplay:YES];
}

/// The cell of a button if it is one that draws itself; otherwise nil.
QXButtonCell* OwnCell(NSButton* button) {
    id cell = [button cell];
    return [cell isKindOfClass:[QXButtonCell class]] ? cell : nil;
}

}  // namespace

@implementation TavarinProLink_PanelView

- (void)drawRect:(NSRect)dirty {
    const NSRect bounds = [self bounds];
    Fill(bounds, ccWindowBackground);
    const NSRect header = NSMakeRect(bounds.origin.x, NSMaxY(bounds) - kHeaderHeight,
                                     bounds.size.width, kHeaderHeight);
    Fill(header, ccTrackInfoBackground);
    Fill(NSMakeRect(header.origin.x, header.origin.y, header.size.width, 1), ccTrackBackground);
}

- (BOOL)isOpaque {
    return YES;
}

// A user who closes the window may end the workstation next, or the workstation itself.
- (void)viewWillMoveToWindow:(NSWindow*)window {
    NSNotificationCenter* center = [NSNotificationCenter defaultCenter];
    [center removeObserver:self name:NSWindowWillCloseNotification object:nil];
    if (window == nil) {
        Panels().erase(self);
        WritePreferences();
    } else {
        Panels().insert(self);
        gAppColours.WhenChanged(RepaintPanels);
        [center addObserver:self
                   selector:@selector(WindowWillClose:)
                       name:NSWindowWillCloseNotification
                     object:window];
    }
    [super viewWillMoveToWindow:window];
}

- (void)WindowWillClose:(NSNotification*)notification {
    WritePreferences();
}

- (void)dealloc {
    Panels().erase(self);
    [[NSNotificationCenter defaultCenter] removeObserver:self];
    [super dealloc];
}

@end

@implementation TavarinProLink_ToggleButton

- (void)awakeFromNib {
    [super awakeFromNib];
    [self setImage:RoomForTheLamp()];
    [self setAlternateImage:RoomForTheLamp()];
    // What belongs to the state that is on includes a title.
    [self setAlternateTitle:[self title]];
}

- (void)drawRect:(NSRect)dirty {
    QXButtonCell* cell = OwnCell(self);
    // The focus is shown here, for the cell does not know how.
    [cell setShowsFirstResponder:NO];
    if (cell == nil) return [super drawRect:dirty];
    const bool fOn = [self state] != 0;
    const CButtonLook look(cell, fOn);
    [super drawRect:dirty];
    DrawLamp([self bounds], fOn);
    DrawFocus(self);
    if (![self isEnabled]) DrawVeil([self bounds]);
}

@end
