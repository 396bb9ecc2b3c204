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
}

bool CWorkSession::Take(CStep const& step) {
    try {
        if (Carry(step)) return true;
        m_display.log(m_pChosen->Kind() + "  the step failed");
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
    m_pChosen->Capture(clip.strPath, dPosition, static_cast<double>(clip.lFrames));
    return true;
}

bool CWorkSession::Export(std::string const& strFile) {
    const std::optional<std::string> exported = m_pChosen->Export(m_nSampleRate);
    if (!exported) return false;
    m_strResult = *exported;
    if (!strFile.empty()) {
        std::error_code error;
        constexpr auto kReplace = std::filesystem::copy_options::overwrite_existing;
        if (!std::filesystem::copy_file(*exported, strFile, kReplace, error)) {
            throw std::runtime_error(strFile + ": " + error.message());
        }
        m_strResult = strFile;
    }
    m_display.showResult(ReadAudioClip(m_strResult));
    return true;
}
