#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/DeadHostWatch.h"
#include "workstation/Arguments.h"
#include "workstation/AudioClip.h"
#import "workstation/PlugIn.h"
#include "workstation/Takes.h"

/// What the workstation does, whether a person presses its buttons or the command line names the
/// steps. One object, on the thread of the user interface.
class CWorkSession {
public:
    /// How a session shows itself.
    struct CDisplay {
        LogFunction log;     ///< what happened, in words
        LogFunction record;  ///< a notification's record before or after
        std::function<void(CAudioClip const&)> showTake;
        std::function<void(CAudioClip const&)> showResult;
        std::function<void(CPlugIn const&)> showChosen;
    };

    /// Throws `std::runtime_error` when the bundle or the directory for captures is not usable.
    CWorkSession(CArguments const& arguments, CDisplay display);

    std::vector<std::unique_ptr<CPlugIn>> const& PlugIns() const { return m_plugIns; }
    CPlugIn& Chosen() const { return *m_pChosen; }

    /// Lets every view look which host is current, and hands over what has waited for one.
    void CheckHosts();

    /// Says which takes still wait for a host. True when none does, and none that has waited went
    /// wrong.
    bool TellWaiting() const;

    /// Takes one step other than waiting, a picture and the end. False, with a line in the log that
    /// says why, when it was not done.
    bool Take(CStep const& step);

    /// The path of what came back last; empty when nothing did.
    std::string const& Result() const { return m_strResult; }

private:
    struct CWaitingTake {
        CPlugIn* pPlugIn;
        bool fGuide;  ///< for an APT view
        std::string strPath;
        double dPosition;
        double dFrames;
    };

    void TellHost();
    void Tell(std::string const& strLine) const;
    TakeOutcome HandOver(CWaitingTake const& take);
    void Choose(std::string const& strKind);
    bool Capture(std::string const& strTake, double dPosition);
    void Render();
    void Export(std::string const& strFile);
    bool Carry(CStep const& step);

    CDisplay m_display;
    bool m_fForce;
    CTANClientInterProcess m_client;
    int m_nSeenHost;
    CDeadHostWatch m_deadHosts;
    int m_nDeadHosts = 0;  ///< of which the log has been told
    bool m_fTakeLost = false;
    CPlugInBundle m_bundle;
    CTakes m_takes;
    std::vector<std::unique_ptr<CPlugIn>> m_plugIns;
    CPlugIn* m_pChosen;
    int m_nSampleRate = 48000;
    std::string m_strResult;
    std::deque<CWaitingTake> m_waiting;  ///< the oldest first
};
