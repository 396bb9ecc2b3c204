#import "window/PlugInWindow.h"

#include <iterator>

#import "Source/PanelDrawing.h"
#import "Source/PanelText.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"
#import "platform/EmbeddedWindow.h"
#import "platform/OwnWindow.h"
#import "platform/WindowIcon.h"
#include "plugin/GuideText.h"
#include "plugin/TimeText.h"
#import "window/PlugInBundle.h"
#import "window/PlugInView.h"
#include "window/Schedule.h"

namespace {

constexpr CGFloat kStripHeight = 76;
constexpr CGFloat kMargin = 20;
constexpr CGFloat kGap = 8;
constexpr CGFloat kButtonHeight = 20;
constexpr CGFloat kButtonTop = 43;
constexpr CGFloat kTextTop = 12;
constexpr CGFloat kTextHeight = 18;
constexpr CGFloat kTextSize = 11;
constexpr CGFloat kFirstPlace = 40;
constexpr CGFloat kPlaceStep = 32;
constexpr std::uint32_t kPlaces = 8;
constexpr NSUInteger kOwnWindow =
    NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable;
// The number is the same wherever there is AppKit; the name is not.
constexpr NSUInteger kShift = 1 << 17;

/// A button of the strip: a control port that is on or off.
struct CStripButton {
    PlugInPort port;
    NSString* title;
    NSString* toolTip;
};

const CStripButton kButtons[] = {
    {portCapture, @"Capture", @"Capture while the transport rolls"},
    {portReturn, @"Return", @"Fetch the host's selected region and hear it in place of the input"},
    {portMode, @"Export only", @"Return does not have the region rendered first"},
};

NSString* CapturingText(CPlugInActivity const& activity, int nSampleRate) {
    const std::string strTime = TimeText(activity.lTakeFrames, nSampleRate);
    return [NSString stringWithFormat:@"Capturing  %s", strTime.c_str()];
}

NSString* ResultText(CPlugInAccess const& plugIn) {
    const CPlugInActivity activity = plugIn.Activity();
    const CPlugInStatus status = plugIn.Status();
    if (!status.strText.empty()) {
        NSString* text = [NSString stringWithUTF8String:status.strText.c_str()];
        if (text != nil) return text;
    }
    if (activity.fCapture) return @"Capture waits for the transport.";
    return [NSString stringWithUTF8String:kResultNames[static_cast<int>(status.result)]];
}

// The guide is named as long as nothing is wrong.
NSString* StatusText(CPlugInAccess const& plugIn) {
    const CPlugInActivity activity = plugIn.Activity();
    if (activity.fCapturing) return CapturingText(activity, plugIn.SampleRate());
    const PlugInResult result = plugIn.Status().result;
    const std::optional<CGuide> guide = plugIn.Guide();
    const bool fNamed = result == PlugInResult::Ready || result == PlugInResult::HandedOver;
    if (!fNamed || !guide) return ResultText(plugIn);
    const std::string strGuide = GuideText(*guide, plugIn.SampleRate());
    return [NSString stringWithFormat:@"%@ %s", ResultText(plugIn), strGuide.c_str()];
}

NSComparisonResult CompareInReading(id first, id second, void* /*context*/) {
    const NSPoint one = [first frame].origin;
    const NSPoint other = [second frame].origin;
    if (one.y != other.y) return one.y > other.y ? NSOrderedAscending : NSOrderedDescending;
    if (one.x == other.x) return NSOrderedSame;
    return one.x < other.x ? NSOrderedAscending : NSOrderedDescending;
}

}  // namespace

/// The strip below the view.
@interface TavarinView_Strip : NSView {
@public
    CPlugInMirror* m_pPlugIn;
    TavarinProLink_PanelText* m_status;
}
- (void)MakeButtons;
- (void)MakeStatus;
- (void)Show:(BOOL)on At:(PlugInPort)port;
- (void)ShowStatus:(NSString*)text;
@end

@implementation TavarinView_Strip

- (void)MakeButtons {
    CPlugInBundle const& bundle = CPlugInBundle::Shared();
    const CGFloat nButtons = std::size(kButtons);
    const CGFloat width =
        ([self bounds].size.width - 2 * kMargin - (nButtons - 1) * kGap) / nButtons;
    CGFloat x = kMargin;
    for (CStripButton const& button : kButtons) {
        const NSRect frame = NSMakeRect(x, kButtonTop, width, kButtonHeight);
        NSButton* control = [[[bundle.ClassNamed(@"TavarinProLink_ToggleButton") alloc]
            initWithFrame:frame] autorelease];
        [control setCell:[[[bundle.ClassNamed(@"QXButtonCell") alloc] init] autorelease]];
        [control setTitle:button.title];
        [control setButtonType:NSToggleButton];
        [control setImagePosition:NSImageLeft];
        [control setAlignment:NSTextAlignmentLeft];
        [control setFont:[NSFont boldSystemFontOfSize:kTextSize]];
        // What a nib would do: the button takes its lamps.
        [control awakeFromNib];
        [control setTarget:self];
        [control setAction:@selector(OnButton:)];
        [control setToolTip:button.toolTip];
        [control setTag:button.port];
        [self addSubview:control];
        x += width + kGap;
    }
}

- (void)OnButton:(id)sender {
    m_pPlugIn->SetControl(static_cast<PlugInPort>([sender tag]), [sender state] != 0 ? 1.0F : 0.0F);
}

- (void)Show:(BOOL)on At:(PlugInPort)port {
    [[self viewWithTag:port] setState:on ? 1 : 0];
}

- (void)MakeStatus {
    const NSRect line =
        NSMakeRect(kMargin, kTextTop, [self bounds].size.width - 2 * kMargin, kTextHeight);
    m_status = [[[CPlugInBundle::Shared().ClassNamed(@"TavarinProLink_PanelText") alloc]
        initWithFrame:line] autorelease];
    [m_status setFont:[NSFont systemFontOfSize:kTextSize]];
    [m_status setBezeled:NO];
    [m_status setDrawsBackground:NO];
    [m_status setEditable:NO];
    [m_status setSelectable:NO];
    [self addSubview:m_status];
}

- (void)ShowStatus:(NSString*)text {
    if ([text isEqualToString:[m_status stringValue]]) return;
    [m_status setStringValue:text];
    [m_status setToolTip:text];
}

- (void)drawRect:(NSRect)dirty {
    [PanelColour(ccTrackBackground) set];
    NSRectFill([self bounds]);
}

- (BOOL)isOpaque {
    return YES;
}

@end

/// Leaves the keyboard where it was when the mouse is pressed: the keys are the workstation's until
/// the user walks to a control.
@interface TavarinView_Window : NSWindow {
@public
    BOOL m_fEmbedded;
    BOOL m_fWalking;
    NSArray* m_controls;  ///< in the order in which Tab walks
}
- (void)WalkBy:(NSInteger)step;
@end

@implementation TavarinView_Window

- (BOOL)canBecomeKeyWindow {
    return !m_fEmbedded;
}

- (BOOL)makeFirstResponder:(NSResponder*)responder {
    if (!m_fWalking && responder != nil && responder != self) return NO;
    return [super makeFirstResponder:responder];
}

- (void)keyDown:(NSEvent*)event {
    if (![[event characters] isEqualToString:@"\t"]) return;
    [self WalkBy:([event modifierFlags] & kShift) != 0 ? -1 : 1];
}

- (void)WalkBy:(NSInteger)step {
    const auto nControls = static_cast<NSInteger>([m_controls count]);
    if (nControls == 0) return;
    const NSUInteger nFound = [m_controls indexOfObject:[self firstResponder]];
    const NSInteger nFrom = nFound != NSNotFound ? static_cast<NSInteger>(nFound)
                            : step > 0           ? nControls - 1
                                                 : nControls;
    const NSInteger nTo = (nFrom + step + nControls) % nControls;
    m_fWalking = YES;
    [self makeFirstResponder:[m_controls objectAtIndex:static_cast<NSUInteger>(nTo)]];
    m_fWalking = NO;
}

- (void)dealloc {
    [m_controls release];
    [super dealloc];
}

@end

/// Notices when the user closes the window.
@interface TavarinView_WindowDelegate : NSObject {
@public
    BOOL m_fClosed;
}
@end

@implementation TavarinView_WindowDelegate
- (BOOL)windowShouldClose:(id)window {
    m_fClosed = YES;
    return NO;
}
@end

struct CPlugInWindow::CContents {
    CPlugInMirror& plugIn;
    CPlugInView view;
    TavarinView_Window* window = nil;
    TavarinView_Strip* strip = nil;
    TavarinView_WindowDelegate* delegate = nil;
    std::unique_ptr<CSchedule> schedule;
    CPlugInActivity shown;

    explicit CContents(CPlugInMirror& mirror) : plugIn(mirror), view(mirror.Kind()) {}

    ~CContents() {
        schedule.reset();
        [window setDelegate:nil];
        [window orderOut:nil];
        [window setContentView:[[[NSView alloc] initWithFrame:NSZeroRect] autorelease]];
        [window close];
        [window release];
        [delegate release];
    }

    void Make() {
        NSView* picture = view.View();
        const NSSize size = [picture frame].size;
        window = [[TavarinView_Window alloc]
            initWithContentRect:NSMakeRect(0, 0, size.width, size.height + kStripHeight)
                      styleMask:IsEmbedded() ? NSUInteger{NSWindowStyleMaskBorderless} : kOwnWindow
                        backing:NSBackingStoreBuffered
                          defer:NO];
        window->m_fEmbedded = IsEmbedded();
        [window setReleasedWhenClosed:NO];
        NSString* title = [NSString stringWithUTF8String:plugIn.Opened().title.Get().c_str()];
        [window setTitle:title == nil ? @"Tavarin" : title];
        delegate = [[TavarinView_WindowDelegate alloc] init];
        [window setDelegate:(id)delegate];
        strip = [[[TavarinView_Strip alloc]
            initWithFrame:NSMakeRect(0, 0, size.width, kStripHeight)] autorelease];
        strip->m_pPlugIn = &plugIn;
        [strip MakeButtons];
        [strip MakeStatus];
        [picture setFrameOrigin:NSMakePoint(0, kStripHeight)];
        [[window contentView] addSubview:strip];
        [[window contentView] addSubview:picture];
        if (!IsEmbedded()) Place(plugIn.Opened().nPlace);
        NSBitmapImageRep* icon = CPlugInBundle::Shared().ImageNamed(@"TavarinProLink_Mark@2x");
        if (icon != nil && !IsEmbedded()) SetWindowIcon(window, icon);
        FindControls();
        schedule = std::make_unique<CSchedule>(plugIn, view);
    }

    // Tab walks in the order of reading.
    void FindControls() {
        NSMutableArray* controls = [NSMutableArray array];
        for (NSView* part : {view.View(), static_cast<NSView*>(strip)}) {
            NSArray* views = [[part subviews] sortedArrayUsingFunction:CompareInReading
                                                               context:nil];
            for (NSUInteger nView = 0; nView < [views count]; ++nView) {
                NSView* candidate = [views objectAtIndex:nView];
                const bool fControl = [candidate isKindOfClass:[NSControl class]] &&
                                      ![candidate isKindOfClass:[NSTextField class]] &&
                                      [candidate acceptsFirstResponder];
                if (fControl) [controls addObject:candidate];
            }
        }
        window->m_controls = [controls retain];
    }

    bool IsEmbedded() const { return plugIn.Opened().nParent != 0; }

    // Beside the one before, and in the first place again when the row is full.
    void Place(std::uint32_t nPlace) {
        const NSRect room = [[window screen] visibleFrame];
        const CGFloat step = kFirstPlace + kPlaceStep * TakePlace(window, nPlace, kPlaces);
        [window setFrameTopLeftPoint:NSMakePoint(NSMinX(room) + step, NSMaxY(room) - step)];
    }

    void ShowControls(bool fAll) {
        const CPlugInActivity now = plugIn.Activity();
        const struct {
            PlugInPort port;
            bool fNow;
            bool fShown;
        } controls[] = {
            {portCapture, now.fCapture, shown.fCapture},
            {portReturn, now.fReturn, shown.fReturn},
            {portMode, now.mode == ReturnMode::Export, shown.mode == ReturnMode::Export},
        };
        // What the user has just set is not undone by what was so before.
        for (auto const& control : controls) {
            if (fAll || control.fNow != control.fShown) [strip Show:control.fNow At:control.port];
        }
        shown = now;
    }
};

CPlugInWindow::CPlugInWindow(CPlugInMirror& plugIn) {
    CPlugInBundle::Shared();
    // The bundle's scheme is its own; this one is for what this program draws.
    AppCreateDefaultColoursDesigner(&gAppColours);
    m_pContents = std::make_unique<CContents>(plugIn);
    m_pContents->Make();
    m_pContents->ShowControls(true);
    [m_pContents->strip ShowStatus:StatusText(plugIn)];
}

CPlugInWindow::~CPlugInWindow() = default;

void CPlugInWindow::Show() {
    if (m_pContents->IsEmbedded()) {
        EmbedWindow(m_pContents->window, m_pContents->plugIn.Opened().nParent);
    } else {
        Raise();
    }
}

void CPlugInWindow::Raise() {
    if (m_pContents->IsEmbedded()) return;
    [NSApp activateIgnoringOtherApps:YES];
    [m_pContents->window makeKeyAndOrderFront:nil];
}

bool CPlugInWindow::IsClosed() const {
    return m_pContents->delegate->m_fClosed;
}

std::function<bool()> CPlugInWindow::CloseWatch() const {
    return ::CloseWatch(m_pContents->window);
}

void CPlugInWindow::Turn() {
    if (m_pContents->plugIn.PickRaise()) Raise();
    if (m_pContents->IsEmbedded()) FollowParent(m_pContents->window);
    m_pContents->schedule->Turn();
    m_pContents->ShowControls(false);
    [m_pContents->strip ShowStatus:StatusText(m_pContents->plugIn)];
}
