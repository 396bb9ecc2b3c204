#import "workstation/WorkSession.h"

#include <filesystem>
#include <stdexcept>

namespace {

std::vector<std::string> KindsOf(std::string const& strView) {
    if (strView == "all") return {"link", "apt", "doubler"};
    return {strView};
}

}  // namespace

CWorkSession::CWorkSession(CArguments const& arguments, CDisplay display)
    : m_display(std::move(display)), m_bundle(arguments.strBundle), m_takes(arguments.strCaptures) {
    for (std::string const& strKind : KindsOf(arguments.strView)) {
        m_plugIns.push_back(std::make_unique<CPlugIn>(m_bundle, strKind, m_display.log));
    }
    m_pChosen = m_plugIns.front().get();
}

void CWorkSession::CheckHosts() {
    for (auto const& plugIn : m_plugIns) plugIn->CheckHost();
    while (!m_waiting.empty()) {
        const CWaitingTake take = m_waiting.front();
        if (take.pPlugIn->Kind() == "apt") take.pPlugIn->ChooseTake(take.fGuide);
        if (HandOver(take) == TakeOutcome::Waits) return;
        m_waiting.pop_front();
    }
}

bool CWorkSession::TellWaiting() const {
    for (CWaitingTake const& take : m_waiting) {
        m_display.log(take.pPlugIn->Kind() + "  a take still waits for the host: " + take.strPath);
    }
    return m_waiting.empty();
}

TakeOutcome CWorkSession::HandOver(CWaitingTake const& take) {
    const TakeOutcome outcome = take.pPlugIn->Capture(take.strPath, take.dPosition, take.dFrames);
    const std::string strKind = take.pPlugIn->Kind();
    if (outcome == TakeOutcome::HandedOver) m_display.log(strKind + "  the host has the take");
    if (outcome == TakeOutcome::Duplicate)
        m_display.log(strKind + "  the host had the take already");
    if (outcome == TakeOutcome::Refused)
        m_display.log(strKind + "  the host did not take " + take.strPath);
    return outcome;
}

bool CWorkSession::Take(CStep const& step) {
    try {
        if (Carry(step)) return true;
        const std::string strWhy = m_pChosen->ErrorText();
        m_display.log(m_pChosen->Kind() + "  the step failed" +
                      (strWhy.empty() ? "" : ": " + strWhy));
    } catch (std::runtime_error const& failure) {
        m_display.log(std::string("failed: ") + failure.what());
    }
    return false;
}

bool CWorkSession::Carry(CStep const& step) {
    switch (step.kind) {
        case StepKind::PlugIn:
            return Choose(step.strText);
        case StepKind::Capture:
            return Capture(step.strText, step.dNumber);
        case StepKind::Guide:
            return m_pChosen->ChooseTake(true);
        case StepKind::Dub:
            return m_pChosen->ChooseTake(false);
        case StepKind::AutoSwitch:
            return m_pChosen->SetAutoSwitch(step.strText == "on");
        case StepKind::Track:
            return m_pChosen->ChooseTrack(static_cast<int>(step.dNumber));
        case StepKind::Render:
            return m_pChosen->Render(m_nSampleRate);
        case StepKind::Export:
            return Export(step.strText);
        case StepKind::Print:
            m_pChosen->Print(step.strText);
            return true;
        case StepKind::UpdateCount:
            m_pChosen->AskUpdateCount();
            return true;
        case StepKind::Wait:
        case StepKind::Screenshot:
        case StepKind::Picture:
        case StepKind::Quit:
            break;
    }
    return true;
}

bool CWorkSession::Choose(std::string const& strKind) {
    for (auto const& plugIn : m_plugIns) {
        if (plugIn->Kind() != strKind) continue;
        m_pChosen = plugIn.get();
        m_display.showChosen(*m_pChosen);
        return true;
    }
    throw std::runtime_error("no plug-in \"" + strKind + "\" is shown");
}

bool CWorkSession::Capture(std::string const& strTake, double dPosition) {
    const CAudioClip clip = ReadAudioClip(m_takes.Record(strTake));
    m_nSampleRate = clip.nSampleRate;
    m_display.showTake(clip);
    const CWaitingTake take{m_pChosen, m_pChosen->TakesGuide(), clip.strPath, dPosition,
                            static_cast<double>(clip.lFrames)};
    // Behind those that wait already: a guide comes before its dub.
    const TakeOutcome outcome = m_waiting.empty() ? HandOver(take) : TakeOutcome::Waits;
    if (outcome == TakeOutcome::Waits) {
        m_waiting.push_back(take);
        m_display.log(m_pChosen->Kind() + "  the take waits for a host: " + clip.strPath);
    }
    return outcome != TakeOutcome::Refused;
}

bool CWorkSession::Export(std::string const& strFile) {
    const std::optional<std::string> exported = m_pChosen->Export(m_nSampleRate);
    if (!exported) return false;
    m_strResult = *exported;
    if (!strFile.empty()) {
        std::error_code error;
        if (!std::filesystem::copy_file(*exported, strFile, error)) {
            throw std::runtime_error(strFile + ": " + error.message());
        }
        m_strResult = strFile;
    }
    m_display.showResult(ReadAudioClip(m_strResult));
    return true;
}
