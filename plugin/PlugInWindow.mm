#import "plugin/PlugInWindow.h"

#include <cstdio>
#include <stdexcept>

#import "Source/PanelDrawing.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/DefaultColours.h"
#include "platform/HostedApplication.h"
#import "plugin/PlugInBundle.h"
#import "plugin/PlugInView.h"
#include "plugin/Schedule.h"

namespace {

constexpr CGFloat kStripHeight = 76;
constexpr CGFloat kMargin = 20;
constexpr CGFloat kGap = 8;
constexpr CGFloat kButtonHeight = 20;
constexpr CGFloat kButtonTop = 43;
constexpr CGFloat kTextTop = 12;
constexpr CGFloat kTextHeight = 18;
constexpr CGFloat kTextSize = 11;

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

NSString* TimeText(std::int64_t lFrames, int nSampleRate) {
    const double dSeconds = static_cast<double>(lFrames) / nSampleRate;
    return [NSString stringWithFormat:@"Capturing  %.1f s", dSeconds];
}

NSString* StatusText(CPlugInAccess const& plugIn) {
    const CPlugInActivity activity = plugIn.Activity();
    if (activity.fCapturing) return TimeText(activity.lTakeFrames, plugIn.SampleRate());
    const CPlugInStatus status = plugIn.Status();
    if (!status.strText.empty()) {
        NSString* text = [NSString stringWithUTF8String:status.strText.c_str()];
        if (text != nil) return text;
    }
    if (activity.fCapture) return @"Capture waits for the transport.";
    return [NSString stringWithUTF8String:kResultNames[static_cast<int>(status.result)]];
}

}  // namespace

/// The strip below the view.
@interface TavarinLV2_Strip : NSView {
@public
    void* m_control;  ///< a ControlFunction, of which the Objective-C runtime has no description
    NSMutableArray* m_buttons;
    NSString* m_status;
}
- (void)MakeButtons;
- (void)ShowStatus:(NSString*)text;
@end

@implementation TavarinLV2_Strip

- (void)dealloc {
    [m_buttons release];
    [m_status release];
    [super dealloc];
}

- (void)MakeButtons {
    CPlugInBundle const& bundle = CPlugInBundle::Shared();
    m_buttons = [[NSMutableArray alloc] init];
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
        [m_buttons addObject:control];
        x += width + kGap;
    }
}

- (void)OnButton:(id)sender {
    (*static_cast<ControlFunction*>(m_control))(static_cast<PlugInPort>([sender tag]),
                                                [sender state] != 0 ? 1.0F : 0.0F);
}

- (void)ShowStatus:(NSString*)text {
    if ([text isEqualToString:m_status]) return;
    [m_status release];
    m_status = [text copy];
    [self setToolTip:m_status];
    [self setNeedsDisplay:YES];
}

- (void)drawRect:(NSRect)dirty {
    [PanelColour(ccTrackBackground) set];
    NSRectFill([self bounds]);
    const NSRect line =
        NSMakeRect(kMargin, kTextTop, [self bounds].size.width - 2 * kMargin, kTextHeight);
    DrawPanelText(m_status == nil ? @"" : m_status, kTextSize, ccControlText, line);
}

- (BOOL)isOpaque {
    return YES;
}

@end

/// Notices when the user closes the window.
@interface TavarinLV2_WindowDelegate : NSObject {
@public
    BOOL m_fClosed;
}
@end

@implementation TavarinLV2_WindowDelegate
- (BOOL)windowShouldClose:(id)window {
    m_fClosed = YES;
    [window orderOut:nil];
    // The window is only hidden; the view in it does not notice.
    [[NSUserDefaults standardUserDefaults] synchronize];
    return NO;
}
@end

struct CPlugInWindow::CContents {
    CPlugInAccess& plugIn;
    ControlFunction control;
    CPlugInView view;
    NSWindow* window = nil;
    TavarinLV2_Strip* strip = nil;
    TavarinLV2_WindowDelegate* delegate = nil;
    std::unique_ptr<CSchedule> schedule;

    CContents(CPlugInAccess& access, ControlFunction function)
        : plugIn(access), control(std::move(function)), view(access.Kind()) {}

    ~CContents() {
        schedule.reset();
        [window setDelegate:nil];
        [window orderOut:nil];
        [window setContentView:[[[NSView alloc] initWithFrame:NSZeroRect] autorelease]];
        [window close];
        [window release];
        [delegate release];
    }

    void Make(std::string const& strTitle) {
        NSView* picture = view.View();
        const NSSize size = [picture frame].size;
        window = [[NSWindow alloc]
            initWithContentRect:NSMakeRect(80, 120, size.width, size.height + kStripHeight)
                      styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                NSWindowStyleMaskMiniaturizable
                        backing:NSBackingStoreBuffered
                          defer:NO];
        [window setReleasedWhenClosed:NO];
        [window setTitle:[NSString stringWithUTF8String:strTitle.c_str()]];
        delegate = [[TavarinLV2_WindowDelegate alloc] init];
        [window setDelegate:(id)delegate];
        strip = [[[TavarinLV2_Strip alloc] initWithFrame:NSMakeRect(0, 0, size.width, kStripHeight)]
            autorelease];
        strip->m_control = &control;
        [strip MakeButtons];
        [picture setFrameOrigin:NSMakePoint(0, kStripHeight)];
        [[window contentView] addSubview:strip];
        [[window contentView] addSubview:picture];
        schedule = std::make_unique<CSchedule>(plugIn, view, [this](std::int32_t nTrack) {
            control(portTrack, static_cast<float>(nTrack));
        });
    }
};

CPlugInWindow::CPlugInWindow(CPlugInAccess& plugIn, std::string const& strTitle,
                             ControlFunction control) {
    std::string strReason;
    if (!StartHostedApplication(&strReason)) {
        throw std::runtime_error("No window can be shown: " + strReason);
    }
    CPlugInBundle::Shared();
    // The bundle's scheme is its own; this one is for what this module draws.
    AppCreateDefaultColoursDesigner(&gAppColours);
    m_pContents = std::make_unique<CContents>(plugIn, std::move(control));
    m_pContents->Make(strTitle);
    const CPlugInActivity activity = plugIn.Activity();
    ShowControl(portCapture, activity.fCapture ? 1.0F : 0.0F);
    ShowControl(portReturn, activity.fReturn ? 1.0F : 0.0F);
}

CPlugInWindow::~CPlugInWindow() = default;

void CPlugInWindow::Show() {
    m_pContents->delegate->m_fClosed = NO;
    [m_pContents->window orderFront:nil];
}

void CPlugInWindow::Hide() {
    [m_pContents->window orderOut:nil];
}

bool CPlugInWindow::IsClosed() const {
    return m_pContents->delegate->m_fClosed;
}

void CPlugInWindow::Turn() {
    TurnRunLoop();
    m_pContents->schedule->Turn();
    [m_pContents->strip ShowStatus:StatusText(m_pContents->plugIn)];
}

void CPlugInWindow::ShowControl(PlugInPort port, float value) {
    for (NSUInteger nButton = 0; nButton < [m_pContents->strip->m_buttons count]; ++nButton) {
        NSButton* button = [m_pContents->strip->m_buttons objectAtIndex:nButton];
        if ([button tag] == static_cast<NSInteger>(port)) [button setState:value > 0.5F ? 1 : 0];
    }
}
