#import "workstation/Window.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#import "Source/PanelDrawing.h"
#import "Source/SchemeExchange.h"
#include "colours/ComponentCodes.h"
#include "colours/SchemeFile.h"

namespace {

// Every panel is as large as a plug-in's view; together they fill a grid, with the log below.
constexpr CGFloat kPanelWidth = 420;
constexpr CGFloat kPanelHeight = 232;
constexpr CGFloat kGap = 12;
constexpr CGFloat kLogHeight = 190;
constexpr CGFloat kMargin = 20;
constexpr CGFloat kControlHeight = 20;
constexpr CGFloat kPositionRow = 142;
constexpr CGFloat kCaptureRow = 84;
constexpr CGFloat kHostRow = 26;
constexpr CGFloat kCaptionHeight = 16;
constexpr CGFloat kCaptionSize = 11;
constexpr CGFloat kLogSize = 11;
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

// The frame of a panel in a grid that is filled row by row from the top.
NSRect PanelFrame(std::size_t nPanel, std::size_t nColumns, std::size_t nRows) {
    const std::size_t nRow = nPanel / nColumns;
    const std::size_t nColumn = nPanel % nColumns;
    return NSMakeRect(kGap + nColumn * (kPanelWidth + kGap),
                      kGap + kLogHeight + kGap + (nRows - 1 - nRow) * (kPanelHeight + kGap),
                      kPanelWidth, kPanelHeight);
}

void PrintLine(std::string const& strLine) {
    std::printf("%s\n", strLine.c_str());
    std::fflush(stdout);
}

double ToPosition(NSTextField* field) {
    return std::max(0.0, [field doubleValue]);
}

}  // namespace

/// What lies between the panels.
@interface TavarinWorkstation_Desk : NSView
@end

@implementation TavarinWorkstation_Desk
- (void)drawRect:(NSRect)dirty {
    [PanelColour(ccTrackBackground) set];
    NSRectFill(dirty);
}
- (BOOL)isOpaque {
    return YES;
}
@end

@interface TavarinWorkstation_Window (Private)
- (void)MakeWindow;
- (NSView*)MakeTransport;
- (TavarinWorkstation_Waveform*)AddWaveform:(NSString*)title to:(NSMutableArray*)panels;
- (NSView*)MakeLog:(NSRect)frame;
- (void)Log:(std::string const&)strLine;
- (void)ShowChosen;
@end

@implementation TavarinWorkstation_Window

- (id)initWithArguments:(CArguments const&)arguments {
    self = [super initWithArguments:arguments];
    if (self == nil) return nil;
    TavarinWorkstation_Window* window = self;
    CWorkSession::CDisplay display;
    display.log = [window](std::string const& strLine) { [window Log:strLine]; };
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
    [m_textLog setTextColor:PanelColour(ccTextEditorForeground)];
    [m_textLog setBackgroundColor:PanelColour(ccTextEditorBackground)];
    [self ShowChosen];
    [[m_window contentView] setNeedsDisplay:YES];
}

- (void)Tell:(std::string const&)strLine {
    [self Log:strLine];
}

- (void)dealloc {
    [m_window release];
    [m_chooseButtons release];
    [super dealloc];
}

- (void)Start {
    [m_window makeKeyAndOrderFront:nil];
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
    const std::size_t nPlugIns = m_session->PlugIns().size();
    const std::size_t nColumns = nPlugIns > 1 ? 3 : 2;
    const std::size_t nRows = 2;
    const CGFloat width = kGap + nColumns * (kPanelWidth + kGap);
    const CGFloat height = kGap + kLogHeight + kGap + nRows * (kPanelHeight + kGap);
    m_window =
        [[NSWindow alloc] initWithContentRect:NSMakeRect(40, 60, width, height)
                                    styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                              NSWindowStyleMaskMiniaturizable
                                      backing:NSBackingStoreBuffered
                                        defer:NO];
    [m_window setReleasedWhenClosed:NO];
    [m_window setTitle:@"Tavarin workstation"];
    NSView* desk = [[[TavarinWorkstation_Desk alloc] initWithFrame:NSZeroRect] autorelease];
    [m_window setContentView:desk];

    NSMutableArray* panels = [NSMutableArray array];
    for (auto const& plugIn : m_session->PlugIns()) [panels addObject:plugIn->View()];
    [panels addObject:[self MakeTransport]];
    m_take = [self AddWaveform:@"Take" to:panels];
    m_result = [self AddWaveform:@"From the host" to:panels];
    [m_result SetBright:YES];
    for (NSUInteger nPanel = 0; nPanel < [panels count]; ++nPanel) {
        NSView* panel = [panels objectAtIndex:nPanel];
        [panel setFrame:PanelFrame(nPanel, nColumns, nRows)];
        [desk addSubview:panel];
    }
    [desk addSubview:[self MakeLog:NSMakeRect(kGap, kGap, width - 2 * kGap, kLogHeight)]];
}

- (TavarinWorkstation_Waveform*)AddWaveform:(NSString*)title to:(NSMutableArray*)panels {
    NSView* panel = MakePanel(title, NSMakeSize(kPanelWidth, kPanelHeight));
    TavarinWorkstation_Waveform* waveform =
        [[[TavarinWorkstation_Waveform alloc] initWithFrame:PanelContent(panel)] autorelease];
    [panel addSubview:waveform];
    [panels addObject:panel];
    return waveform;
}

- (NSView*)MakeTransport {
    NSView* panel = MakePanel(@"Workstation", NSMakeSize(kPanelWidth, kPanelHeight));
    const CGFloat third = (kPanelWidth - 2 * kMargin - 2 * 8) / 3;
    const auto place = [third](int nColumn, CGFloat y, CGFloat height) {
        return NSMakeRect(kMargin + nColumn * (third + 8), y, third, height);
    };
    m_chooseButtons = [[NSMutableArray alloc] init];
    if (m_session->PlugIns().size() > 1) {
        CGFloat x = kPanelWidth - kMargin;
        for (std::size_t nPlugIn = m_session->PlugIns().size(); nPlugIn-- > 0;) {
            const CGFloat width = 68;
            x -= width;
            NSButton* button =
                MakeButton(TitleOf(m_session->PlugIns()[nPlugIn]->Kind()),
                           NSMakeRect(x, kPanelHeight - 30, width, kControlHeight), self,
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
                                        kPanelWidth - 2 * kMargin, kCaptionHeight);
        [panel
            addSubview:MakeText(@"TavarinProLink_CaptionText", caption.title, frame, kCaptionSize)];
    }
    m_textPosition = MakeField(@"48000", place(0, kPositionRow, kControlHeight));
    [panel addSubview:m_textPosition];
    return panel;
}

- (NSView*)MakeLog:(NSRect)frame {
    NSScrollView* scroll = [[[NSScrollView alloc] initWithFrame:frame] autorelease];
    // A scroller would be the one bright thing here; the wheel works without.
    [scroll setHasVerticalScroller:NO];
    [scroll setHasHorizontalScroller:NO];
    [scroll setBorderType:NSNoBorder];
    const NSSize size = [scroll contentSize];
    m_textLog =
        [[[NSTextView alloc] initWithFrame:NSMakeRect(0, 0, size.width, size.height)] autorelease];
    [m_textLog setEditable:NO];
    [m_textLog setFont:[NSFont userFixedPitchFontOfSize:kLogSize]];
    [m_textLog setTextColor:PanelColour(ccTextEditorForeground)];
    [m_textLog setBackgroundColor:PanelColour(ccTextEditorBackground)];
    [m_textLog setVerticallyResizable:YES];
    [m_textLog setHorizontallyResizable:NO];
    [m_textLog setMaxSize:NSMakeSize(1e6, 1e6)];
    [[m_textLog textContainer] setWidthTracksTextView:YES];
    [m_textLog setTextContainerInset:NSMakeSize(8, 8)];
    [scroll setDocumentView:m_textLog];
    return scroll;
}

- (void)Log:(std::string const&)strLine {
    PrintLine(strLine);
    NSDictionary* attributes = [NSDictionary
        dictionaryWithObjectsAndKeys:[NSFont userFixedPitchFontOfSize:kLogSize],
                                     NSFontAttributeName, PanelColour(ccTextEditorForeground),
                                     NSForegroundColorAttributeName, nil];
    NSAttributedString* line =
        [[[NSAttributedString alloc] initWithString:[Text(strLine) stringByAppendingString:@"\n"]
                                         attributes:attributes] autorelease];
    [[m_textLog textStorage] appendAttributedString:line];
    [m_textLog scrollRangeToVisible:NSMakeRange([[m_textLog string] length], 0)];
}

- (void)ShowChosen {
    for (NSUInteger nPlugIn = 0; nPlugIn < [m_chooseButtons count]; ++nPlugIn) {
        const bool fChosen = m_session->PlugIns()[nPlugIn].get() == &m_session->Chosen();
        ShowChosen([m_chooseButtons objectAtIndex:nPlugIn], fChosen);
    }
}

@end
