#import "Source/TavarinProAPTLink_ViewController.h"

#include "Source/Preferences.h"
#import "Source/ViewHelpers.h"

namespace {

constexpr int kGuideTrack = 0;
constexpr int kDubTrack = 1;
constexpr int kAlignedTrack = 2;
constexpr int64_t kNotYet = -1;

void SelectGuide(TavarinProAPTLink_ViewController* view, bool fGuide) {
    view->m_fGuideSelected = fGuide;
    [view SetActiveTrack];
}

void RememberExtent(TavarinProAPTLink_ViewController* view, paramPostAnalyze const& capture) {
    int64_t& lStart = view->m_fGuideSelected ? view->m_lGuideStart : view->m_lDubStart;
    int64_t& lEnd = view->m_fGuideSelected ? view->m_lGuideEnd : view->m_lDubEnd;
    lStart = CaptureStart(capture);
    lEnd = CaptureEnd(capture);
}

void TakeCapture(TavarinProAPTLink_ViewController* view, paramPostAnalyze const& capture) {
    const int nTrack = view->m_fGuideSelected ? kGuideTrack : kDubTrack;
    // Before the duplicate check, so that a track only ever holds the newest take.
    view->m_Script.ClearTrack(view->m_fAudioSuite, nTrack);
    if (HandOverCapture(view->m_Script, view->m_fAudioSuite, nTrack, capture)) {
        RememberExtent(view, capture);
    }
    if (!view->m_fGuideSelected) {
        [view CreateAPT];
    } else if (view->m_fAutoSwitch) {
        SelectGuide(view, false);
    }
}

}  // namespace

@implementation TavarinProAPTLink_ViewController

- (void)awakeFromNib {
    [super awakeFromNib];
    m_lGuideStart = m_lGuideEnd = kNotYet;
    m_lDubStart = m_lDubEnd = kNotYet;
    m_fAudioSuite = true;
    m_fGuideSelected = true;
    m_fAutoSwitch = GetInt(strAutoSwitch, 0, 0, 1) != 0;
    [self SetActiveTrack];
}

- (void)dealloc {
    for (NSButton* button : {m_btnGuide, m_btnDub, m_btnAutoTrackSwitch}) LetGo(button);
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

- (IBAction)OnGuide:(id)sender {
    SelectGuide(self, true);
}

- (IBAction)OnDub:(id)sender {
    SelectGuide(self, false);
}

- (IBAction)OnAutoTrackSwitch:(id)sender {
    m_fAutoSwitch = !m_fAutoSwitch;
    SaveInt(strAutoSwitch, m_fAutoSwitch ? 1 : 0);
    [self SetActiveTrack];
}

- (void)SetActiveTrack {
    [m_btnGuide setState:m_fGuideSelected ? 1 : 0];
    [m_btnDub setState:m_fGuideSelected ? 0 : 1];
    [m_btnAutoTrackSwitch setState:m_fAutoSwitch ? 1 : 0];
}

- (void)CreateAPT {
    m_Script.ClearTrack(m_fAudioSuite, kAlignedTrack);
    if (m_lGuideStart == kNotYet || m_lDubStart == kNotYet) return;
    m_Script.CreateAPT(m_fAudioSuite, kGuideTrack, m_lGuideStart, m_lGuideEnd, kDubTrack,
                       m_lDubStart, m_lDubEnd, kAlignedTrack);
}

- (int32_t)NotificationReceived:(int32_t)iNotificationType
                           Data:(void const*)pNotificationData
                       DataSize:(uint32_t)iNotificationDataSize {
    RequireRecord(iNotificationType, pNotificationData, iNotificationDataSize);
    if (iNotificationType == notifyPostAnalyze) {
        auto const& capture = *static_cast<paramPostAnalyze const*>(pNotificationData);
        if (HasPath(m_Script, capture)) TakeCapture(self, capture);
        [self SetTextFields];
        return 0;
    }
    const Answer answer =
        AnswerNotification(m_Script, m_fAudioSuite, iNotificationType, pNotificationData);
    const bool fExported = iNotificationType == notifyExportSelectedRegion;
    if (fExported && !m_fGuideSelected && m_fAutoSwitch) SelectGuide(self, true);
    if (answer != Answer::Silent) [self SetTextFields];
    return 0;
}

- (void)CheckHost {
    if (HasHostChanged(m_Script, &m_nCurrentHost)) [self SetTextFields];
}

- (void)SetTextFields {
    ShowTextsOrLogo(m_Script, m_textLastError, m_textAdvice, m_imageLogo);
}

@end
