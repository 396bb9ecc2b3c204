#import "Source/TavarinProDoublerLink_ViewController.h"

#import "Source/ViewHelpers.h"

namespace {

constexpr int kInputTrack = 0;
constexpr int kDoubledTrack = 1;
constexpr int64_t kNotYet = -1;

void TakeCapture(TavarinProDoublerLink_ViewController* view, paramPostAnalyze const& capture) {
    // Before the duplicate check, so that the track only ever holds the newest take.
    view->m_Script.ClearTrack(view->m_fAudioSuite, kInputTrack);
    if (HandOverCapture(view->m_Script, view->m_fAudioSuite, kInputTrack, capture)) {
        view->m_lInputStart = CaptureStart(capture);
        view->m_lInputEnd = CaptureEnd(capture);
    }
    [view CreateDoubler];
}

}  // namespace

@implementation TavarinProDoublerLink_ViewController

- (void)awakeFromNib {
    [super awakeFromNib];
    m_lInputStart = m_lInputEnd = kNotYet;
    m_fAudioSuite = true;
}

- (void)dealloc {
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

- (void)CreateDoubler {
    m_Script.ClearTrack(m_fAudioSuite, kDoubledTrack);
    if (m_lInputStart == kNotYet) return;
    constexpr int kUnused = 1;
    m_Script.CreateDoubler(m_fAudioSuite, kInputTrack, m_lInputStart, m_lInputEnd, kUnused,
                           kDoubledTrack);
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
