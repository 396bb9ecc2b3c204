#import "workstation/Window.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#import "Source/PanelDrawing.h"
#import "Source/SchemeExchange.h"
#include "colours/ComponentCodes.h"
#include "colours/ComponentColour.h"
#include "colours/SchemeFile.h"
#import "workstation/Desk.h"

namespace {

constexpr CGFloat kMargin = 20;
constexpr CGFloat kControlHeight = 20;
constexpr CGFloat kPositionRow = 142;
constexpr CGFloat kCaptureRow = 84;
constexpr CGFloat kHostRow = 26;
constexpr CGFloat kCaptionHeight = 16;
constexpr CGFloat kCaptionSize = 11;
constexpr CGFloat kTitleBarHeight = 30;
constexpr CGFloat kLeft = 40;
constexpr CGFloat kBottom = 60;
constexpr NSTimeInterval kCheckHostsEvery = 0.5;

struct CKindName {
    const char* szKind;
    NSString* title;
};

const CKindName kKindNames[] = {{"link", @"Link"}, {"apt", @"APT"}, {"doubler", @"Doubler"}};

NSString* TitleOf(std::string const& strKind) {
    const auto* found =
        std::find_if(std::begin(kKindNames), std::end(kKindNames),
                     [&strKind](CKindName const& name) { return strKind == name.szKind; });
    return found == std::end(kKindNames) ? @"" : found->title;
}

void PrintLine(std::string const& strLine) {
    std::printf("%s\n", strLine.c_str());
    std::fflush(stdout);
}

double ToPosition(NSTextField* field) {
    return std::max(0.0, [field doubleValue]);
}

}  // namespace

@interface TavarinWorkstation_Window (Private)
- (void)MakeWindow;
- (NSView*)MakeTransport;
- (TavarinWorkstation_Waveform*)AddWaveform:(NSString*)title to:(NSMutableArray*)panels;
- (void)ShowChosen;
@end

@implementation TavarinWorkstation_Window

- (id)initWithArguments:(CArguments const&)arguments {
    self = [super initWithArguments:arguments];
    if (self == nil) return nil;
    TavarinWorkstation_Window* window = self;
    CWorkSession::CDisplay display;
    display.log = [window](std::string const& strLine) { [window Tell:strLine]; };
    display.record = PrintLine;
    display.showTake = [window](CAudioClip const& clip) { [window->m_take Show:clip]; };
    display.showResult = [window](CAudioClip const& clip) { [window->m_result Show:clip]; };
    display.showChosen = [window](CPlugIn const&) { [window ShowChosen]; };
    m_session = std::make_unique<CWorkSession>(arguments, display);
    [self MakeWindow];
    [self ShowChosen];
    [self UseScheme];
    return self;
}

- (void)ShowScheme:(NSData*)image named:(NSString*)name {
    ReplaceScheme(gAppColours,
                  std::string(static_cast<const char*>([image bytes]), [image length]));
    [(id)NSClassFromString(@"TavarinProLink_SchemeExchange") UseImage:image];
    ColourField(m_textPosition);
    [m_log Colour];
    [self ShowChosen];
    [[m_window contentView] setNeedsDisplay:YES];
}

- (void)dealloc {
    [m_window release];
    [m_log release];
    [m_chooseButtons release];
    [super dealloc];
}

- (void)Start {
    [m_window makeKeyAndOrderFront:nil];
    m_session->CheckHosts();
    m_timerHosts = [NSTimer scheduledTimerWithTimeInterval:kCheckHostsEvery
                                                    target:self
                                                  selector:@selector(CheckHosts:)
                                                  userInfo:nil
                                                   repeats:YES];
    [super Start];
}

- (void)Finish {
    [m_timerHosts invalidate];
    m_timerHosts = nil;
    [super Finish];
    if (m_session && !m_session->TellWaiting()) m_fFailed = YES;
    [m_window orderOut:nil];
    [m_window setContentView:[[[NSView alloc] initWithFrame:NSZeroRect] autorelease]];
    m_session.reset();
}

- (void)CheckHosts:(NSTimer*)timer {
    m_session->CheckHosts();
}

- (BOOL)Take:(CStep const&)step {
    const bool fWindow = step.kind == StepKind::Screenshot;
    if (!fWindow && step.kind != StepKind::Picture) return m_session->Take(step);
    m_session->CheckHosts();
    NSView* view = fWindow ? [m_window contentView] : m_session->Chosen().View();
    return [self WritePictureOf:view to:step.strText];
}

- (void)TakeStep:(StepKind)kind text:(std::string const&)strText {
    [self Take:CStep{kind, strText, ToPosition(m_textPosition)}];
}

- (void)OnChoose:(id)sender {
    const auto nChosen = static_cast<std::size_t>([m_chooseButtons indexOfObject:sender]);
    [self TakeStep:StepKind::PlugIn text:m_session->PlugIns().at(nChosen)->Kind()];
}

- (void)OnGuideTake:(id)sender {
    [self TakeStep:StepKind::Capture text:"guide"];
}

- (void)OnDubTake:(id)sender {
    [self TakeStep:StepKind::Capture text:"dub"];
}

- (void)OnFileTake:(id)sender {
    NSOpenPanel* panel = [NSOpenPanel openPanel];
    if ([panel runModal] != NSModalResponseOK) return;
    [self TakeStep:StepKind::Capture text:[[[[panel URLs] objectAtIndex:0] path] UTF8String]];
}

- (void)OnRender:(id)sender {
    [self TakeStep:StepKind::Render text:""];
}

- (void)OnExport:(id)sender {
    [self TakeStep:StepKind::Export text:""];
}

- (void)OnPrint:(id)sender {
    [self TakeStep:StepKind::Print text:"Hello from the workstation"];
}

- (void)OnUpdateCount:(id)sender {
    [self TakeStep:StepKind::UpdateCount text:""];
}

- (void)MakeWindow {
    NSMutableArray* panels = [NSMutableArray array];
    for (auto const& plugIn : m_session->PlugIns()) [panels addObject:plugIn->View()];
    [panels addObject:[self MakeTransport]];
    m_take = [self AddWaveform:@"Take" to:panels];
    m_result = [self AddWaveform:@"From the host" to:panels];
    [m_result SetBright:YES];
    m_log = [[TavarinWorkstation_Log alloc] init];

    const NSUInteger nColumns = m_session->PlugIns().size() > 1 ? 3 : 2;
    NSSize size = [TavarinWorkstation_Desk SizeForPanels:[panels count] columns:nColumns];
    const NSSize screen = [[NSScreen mainScreen] visibleFrame].size;
    size.width = std::min(size.width, screen.width);
    size.height = std::min(size.height, screen.height - kTitleBarHeight);
    const NSPoint place =
        NSMakePoint(std::min(kLeft, screen.width - size.width),
                    std::min(kBottom, screen.height - kTitleBarHeight - size.height));
    m_window = [[NSWindow alloc]
        initWithContentRect:NSMakeRect(place.x, place.y, size.width, size.height)
                  styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                            NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable
                    backing:NSBackingStoreBuffered
                      defer:NO];
    [m_window setReleasedWhenClosed:NO];
    [m_window setTitle:@"Tavarin workstation"];
    [m_window setContentMinSize:[TavarinWorkstation_Desk LeastSize]];
    [m_window setContentView:[[[TavarinWorkstation_Desk alloc] initWithPanels:panels
                                                                          log:[m_log View]
                                                                         size:size] autorelease]];
}

- (TavarinWorkstation_Waveform*)AddWaveform:(NSString*)title to:(NSMutableArray*)panels {
    NSView* panel = MakePanel(title, PanelSize());
    TavarinWorkstation_Waveform* waveform =
        [[[TavarinWorkstation_Waveform alloc] initWithFrame:PanelContent(panel)] autorelease];
    [panel addSubview:waveform];
    [panels addObject:panel];
    return waveform;
}

- (NSView*)MakeTransport {
    NSView* panel = MakePanel(@"Workstation", PanelSize());
    const CGFloat panelWidth = PanelSize().width;
    const CGFloat third = (panelWidth - 2 * kMargin - 2 * 8) / 3;
    const auto place = [third](int nColumn, CGFloat y, CGFloat height) {
        return NSMakeRect(kMargin + nColumn * (third + 8), y, third, height);
    };
    m_chooseButtons = [[NSMutableArray alloc] init];
    if (m_session->PlugIns().size() > 1) {
        CGFloat x = panelWidth - kMargin;
        for (std::size_t nPlugIn = m_session->PlugIns().size(); nPlugIn-- > 0;) {
            const CGFloat width = 68;
            x -= width;
            NSButton* button =
                MakeButton(TitleOf(m_session->PlugIns()[nPlugIn]->Kind()),
                           NSMakeRect(x, PanelSize().height - 30, width, kControlHeight), self,
                           @selector(OnChoose:), @"What follows goes to this plug-in");
            x -= 6;
            [m_chooseButtons insertObject:button atIndex:0];
            [panel addSubview:button];
        }
    }
    struct CButton {
        NSString* title;
        SEL action;
        NSString* toolTip;
        int nColumn;
        CGFloat y;
    };
    const CButton buttons[] = {
        {@"Guide", @selector(OnGuideTake:), @"Capture the built-in guide", 0, kCaptureRow},
        {@"Dub", @selector(OnDubTake:), @"Capture the built-in dub", 1, kCaptureRow},
        {@"File...", @selector(OnFileTake:), @"Capture a sound file", 2, kCaptureRow},
        {@"Render", @selector(OnRender:), @"Have the host render its selected region", 0, kHostRow},
        {@"Export", @selector(OnExport:), @"Fetch the host's selected region as a file", 1,
         kHostRow},
        {@"Print", @selector(OnPrint:), @"Have the host print a greeting", 2, kHostRow},
        {@"Update count", @selector(OnUpdateCount:), @"Ask for the host's update count", 2,
         kPositionRow},
    };
    for (CButton const& button : buttons) {
        [panel addSubview:MakeButton(button.title, place(button.nColumn, button.y, kControlHeight),
                                     self, button.action, button.toolTip)];
    }
    struct CCaption {
        NSString* title;
        CGFloat y;
    };
    const CCaption captions[] = {{@"Position, in samples", kPositionRow},
                                 {@"Capture a take there", kCaptureRow},
                                 {@"Ask the host", kHostRow}};
    for (CCaption const& caption : captions) {
        const NSRect frame = NSMakeRect(kMargin, caption.y + kControlHeight + 4,
                                        panelWidth - 2 * kMargin, kCaptionHeight);
        [panel
            addSubview:MakeText(@"TavarinProLink_CaptionText", caption.title, frame, kCaptionSize)];
    }
    m_textPosition = MakeField(@"48000", place(0, kPositionRow, kControlHeight));
    [panel addSubview:m_textPosition];
    return panel;
}

- (void)Tell:(std::string const&)strLine {
    PrintLine(strLine);
    [m_log Add:strLine];
}

- (void)ShowChosen {
    for (NSUInteger nPlugIn = 0; nPlugIn < [m_chooseButtons count]; ++nPlugIn) {
        const bool fChosen = m_session->PlugIns()[nPlugIn].get() == &m_session->Chosen();
        ShowChosen([m_chooseButtons objectAtIndex:nPlugIn], fChosen);
    }
}

@end
