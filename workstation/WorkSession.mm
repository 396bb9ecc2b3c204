#import "workstation/WorkSession.h"

#include <filesystem>
#include <stdexcept>

#include "workstation/EventText.h"

namespace {

std::vector<std::string> KindsOf(std::string const& strView) {
    if (strView == "all") return {"link", "apt", "doubler"};
    return {strView};
}

constexpr int kNotYetSeen = -2;
constexpr const char* szSilent = "nothing was said of why";
constexpr const char* szNoRegion = "the host gave nothing; it may have no region selected";

// Whether the audio is where it belongs, and what was to become of it there too.
bool IsSafe(TakeOutcome outcome) {
    return outcome == TakeOutcome::HandedOver || outcome == TakeOutcome::Duplicate;
}

}  // namespace

CWorkSession::CWorkSession(CArguments const& arguments, CDisplay display)
    : m_display(std::move(display)),
      m_fForce(arguments.fForce),
      m_nSeenHost(kNotYetSeen),
      m_bundle(arguments.strBundle),
      m_takes(arguments.strCaptures) {
    for (std::string const& strKind : KindsOf(arguments.strView)) {
        m_plugIns.push_back(std::make_unique<CPlugIn>(m_bundle, strKind, m_display.record));
    }
    m_pChosen = m_plugIns.front().get();
}

void CWorkSession::CheckHosts() {
    TellHost();
    for (auto const& plugIn : m_plugIns) plugIn->CheckHost();
    while (!m_waiting.empty()) {
        const CWaitingTake take = m_waiting.front();
        if (take.pPlugIn->Kind() == "apt") take.pPlugIn->ChooseTake(take.fGuide);
        const TakeOutcome outcome = HandOver(take);
        if (outcome == TakeOutcome::Waits) return;
        if (!IsSafe(outcome)) m_fTakeLost = true;
        m_waiting.pop_front();
    }
}

void CWorkSession::TellHost() {
    if (const int nDead = m_deadHosts.Found(); nDead != m_nDeadHosts) {
        m_nDeadHosts = nDead;
        m_display.log("Tavarin Pro has died. Whoever waited for it was sent away.");
    }
    const int nHost = m_client.GetCurrentTANHost();
    if (nHost == m_nSeenHost) return;
    m_nSeenHost = nHost;
    if (nHost > 0) return m_display.log("Tavarin Pro is there, with a session.");
    if (nHost == 0) return m_display.log("Tavarin Pro is there, with no session selected.");
    m_display.log("Tavarin Pro is not running.");
}

void CWorkSession::Tell(std::string const& strLine) const {
    m_display.log(m_pChosen->Kind() + "  " + strLine);
}

bool CWorkSession::TellWaiting() const {
    for (CWaitingTake const& take : m_waiting) {
        m_display.log(take.pPlugIn->Kind() + "  a take still waits for the host: " + take.strPath);
    }
    return m_waiting.empty() && !m_fTakeLost;
}

TakeOutcome CWorkSession::HandOver(CWaitingTake const& take) {
    const TakeOutcome outcome = take.pPlugIn->Capture(take.strPath, take.dPosition, take.dFrames);
    std::string strWhat;
    switch (outcome) {
        case TakeOutcome::HandedOver:
            strWhat = "the host has the take";
            break;
        case TakeOutcome::ProcessFailed:
            strWhat = "the host has the take, but what follows it failed: " +
                      take.pPlugIn->WhyNot(szSilent);
            break;
        case TakeOutcome::Duplicate:
            strWhat = "the host had the take already";
            break;
        case TakeOutcome::Refused:
            strWhat =
                "the host did not take " + take.strPath + ": " + take.pPlugIn->WhyNot(szSilent);
            break;
        case TakeOutcome::Waits:
            return outcome;
    }
    m_display.log(take.pPlugIn->Kind() + "  " + strWhat);
    return outcome;
}

bool CWorkSession::Take(CStep const& step) {
    try {
        return Carry(step);
    } catch (std::runtime_error const& failure) {
        Tell(std::string("the step failed: ") + failure.what());
    }
    return false;
}

bool CWorkSession::Carry(CStep const& step) {
    switch (step.kind) {
        case StepKind::PlugIn:
            Choose(step.strText);
            break;
        case StepKind::Capture:
            return Capture(step.strText, step.dNumber);
        case StepKind::Guide:
        case StepKind::Dub:
            m_pChosen->ChooseTake(step.kind == StepKind::Guide);
            Tell(step.kind == StepKind::Guide ? "the next take is a guide"
                                              : "the next take is a dub");
            break;
        case StepKind::AutoSwitch:
            m_pChosen->SetAutoSwitch(step.strText == "on");
            Tell("the automatic switch is " + step.strText);
            break;
        case StepKind::Track:
            Tell("captures go to the track \"" +
                 m_pChosen->ChooseTrack(static_cast<int>(step.dNumber)) + "\"");
            break;
        case StepKind::Render:
            Render();
            break;
        case StepKind::Export:
            Export(step.strText);
            break;
        case StepKind::Print:
            m_pChosen->Print(step.strText);
            Tell("the host was given a text to print: " + step.strText);
            break;
        case StepKind::UpdateCount:
            Tell("the host's update count is " + std::to_string(m_pChosen->AskUpdateCount()));
            break;
        case StepKind::Wait:
        case StepKind::Screenshot:
        case StepKind::Picture:
        case StepKind::Quit:
            break;
    }
    return true;
}

void CWorkSession::Choose(std::string const& strKind) {
    for (auto const& plugIn : m_plugIns) {
        if (plugIn->Kind() != strKind) continue;
        m_pChosen = plugIn.get();
        m_display.showChosen(*m_pChosen);
        return Tell("what follows goes here");
    }
    throw std::runtime_error("no plug-in \"" + strKind + "\" is shown");
}

bool CWorkSession::Capture(std::string const& strTake, double dPosition) {
    const CAudioClip clip = ReadAudioClip(m_takes.Record(strTake));
    m_nSampleRate = clip.nSampleRate;
    m_display.showTake(clip);
    Tell("captured " + SpanText(dPosition, dPosition + clip.lFrames, clip.nSampleRate) +
         (m_pChosen->TakesGuide() ? " as the guide: " : ": ") + clip.strPath);
    const CWaitingTake take{m_pChosen, m_pChosen->TakesGuide(), clip.strPath, dPosition,
                            static_cast<double>(clip.lFrames)};
    // Behind those that wait already: a guide comes before its dub.
    const TakeOutcome outcome = m_waiting.empty() ? HandOver(take) : TakeOutcome::Waits;
    if (outcome == TakeOutcome::Waits) {
        m_waiting.push_back(take);
        Tell("the take waits for a host: " + clip.strPath);
    }
    return outcome == TakeOutcome::Waits || IsSafe(outcome);
}

void CWorkSession::Render() {
    const auto span = m_pChosen->Render(m_nSampleRate);
    if (!span) throw std::runtime_error(m_pChosen->WhyNot(szNoRegion));
    Tell("the host rendered " + SpanText(span->lStart, span->lEnd, m_nSampleRate));
}

void CWorkSession::Export(std::string const& strFile) {
    if (!strFile.empty()) RequireRoom(strFile, m_fForce);
    const std::optional<std::string> exported = m_pChosen->Export(m_nSampleRate);
    if (!exported) throw std::runtime_error(m_pChosen->WhyNot(szNoRegion));
    m_strResult = *exported;
    if (!strFile.empty()) {
        std::error_code error;
        const auto how = m_fForce ? std::filesystem::copy_options::overwrite_existing
                                  : std::filesystem::copy_options::none;
        if (!std::filesystem::copy_file(*exported, strFile, how, error)) {
            throw std::runtime_error(strFile + ": " + error.message());
        }
        m_strResult = strFile;
    }
    const CAudioClip clip = ReadAudioClip(m_strResult);
    m_display.showResult(clip);
    Tell("the host exported " + LengthText(clip.lFrames, clip.nSampleRate) + ": " + m_strResult);
}
