#import "Source/TavarinProLink_ViewController.h"

#include <algorithm>
#include <string>
#include <vector>

#import "Source/ViewHelpers.h"

namespace {

constexpr int kListTracksTimeoutMs = 1000;

NSDictionary* TrackEntry(NSString* name) {
    return [NSDictionary dictionaryWithObject:name forKey:@"Name"];
}

// The platform's "nothing selected" has other high bits on every system.
int SelectedTrack(TavarinProLink_ViewController* view) {
    return static_cast<int32_t>([view->m_TracksArray selectionIndex]);
}

void SelectTrack(TavarinProLink_ViewController* view, int nTrack) {
    // By way of no selection: new content makes a pop-up show its first entry, and setting an index
    // that is set already would not tell it otherwise. No track has no index of its own, because
    // not every AppKit survives one out of range.
    [view->m_TracksArray setSelectionIndexes:[NSIndexSet indexSet]];
    if (nTrack >= 0) [view->m_TracksArray setSelectionIndex:nTrack];
}

// Puts an empty list of the given capacity in place of the present one.
void StartTrackList(TavarinProLink_ViewController* view, std::size_t nCapacity) {
    [view->m_TracksArray setContent:nil];
    [view->m_Tracks release];
    view->m_Tracks = [[NSMutableArray alloc] initWithCapacity:nCapacity];
}

void ShowNoTrack(TavarinProLink_ViewController* view) {
    StartTrackList(view, 1);
    [view->m_Tracks addObject:TrackEntry(@"No Track")];
    [view->m_TracksArray setContent:view->m_Tracks];
    SelectTrack(view, 0);
}

void ShowTracks(TavarinProLink_ViewController* view, std::vector<std::string> const& names) {
    const int nKept = view->m_Tracks == nil ? 0 : SelectedTrack(view);
    StartTrackList(view, names.size());
    for (std::string const& strName : names) {
        [view->m_Tracks addObject:TrackEntry(TextFromHost(strName))];
    }
    [view->m_TracksArray setContent:view->m_Tracks];
    SelectTrack(view, std::min(nKept, static_cast<int>(names.size()) - 1));
}

}  // namespace

@implementation TavarinProLink_ViewController

- (void)awakeFromNib {
    [super awakeFromNib];
    m_nCurrentHost = -1;
    [self FillTrackList:nil];
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(FillTrackList:)
                                                 name:NSPopUpButtonWillPopUpNotification
                                               object:m_popupTracks];
    m_fAudioSuite = false;
}

- (void)dealloc {
    NSNotificationCenter* center = [NSNotificationCenter defaultCenter];
    [center removeObserver:self name:NSPopUpButtonWillPopUpNotification object:self];
    // That form removes nothing. A centre that keeps dead observers would call this one when the
    // pop-up outlives it.
    [center removeObserver:self];
    // The pop-up keeps its entries, and has nobody to tell of a choice.
    LetGo(m_popupTracks);
    [m_popupTracks unbind:@"contentValues"];
    [m_popupTracks unbind:@"selectedIndex"];
    [m_TracksArray setContent:nil];
    [m_Tracks release];
    [super dealloc];
}

- (void)SetParameters:(AAX_IEffectParameters*)parameters {
    mEffectParameters = parameters;
}

- (void)SetController:(AAX_IController*)controller {
    mController = controller;
}

- (void)SetViewContainerOnViews:(AAX_IViewContainer*)container {
}

- (void)SetEffectParametersOnViews:(AAX_IEffectParameters*)parameters {
}

- (IBAction)FillTrackList:(id)sender {
    std::vector<std::string> names;
    if (m_Script.ListTracksWithTimeout(m_fAudioSuite, &names, kListTracksTimeoutMs) != 0) {
        ShowNoTrack(self);
    } else {
        ShowTracks(self, names);
    }
    [self SetTextFields];
}

- (IBAction)OnTrack:(id)sender {
}

- (int32_t)NotificationReceived:(int32_t)iNotificationType
                           Data:(void const*)pNotificationData
                       DataSize:(uint32_t)iNotificationDataSize {
    RequireRecord(iNotificationType, pNotificationData, iNotificationDataSize);
    if (iNotificationType != notifyPostAnalyze) {
        const Answer answer =
            AnswerNotification(m_Script, m_fAudioSuite, iNotificationType, pNotificationData);
        // This view leaves what a command says for the next look at the host, which would wipe out
        // what only the view knows.
        if (answer == Answer::Refused) [self SetTextFields];
        return 0;
    }
    auto const& capture = *static_cast<paramPostAnalyze const*>(pNotificationData);
    if (HasPath(m_Script, capture)) {
        HandOverCapture(m_Script, m_fAudioSuite, SelectedTrack(self), capture);
    } else {
        [self SetTextFields];
    }
    return 0;
}

- (void)CheckHost {
    if (HasHostChanged(m_Script, &m_nCurrentHost)) [self SetTextFields];
}

- (void)SetTextFields {
    ShowTexts(m_Script, m_textLastError, m_textAdvice);
}

@end
