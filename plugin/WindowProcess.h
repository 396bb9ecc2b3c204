#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/ChildProgram.h"
#include "plugin/PlugInAccess.h"
#include "plugin/WindowDesk.h"
#include "plugin/WindowRecords.h"

/// The window of one plug-in, in a process of its own: starts it when it is ordered, answers its
/// turns, and ends it. Whatever becomes of that process, the plug-in goes on: a take that it had
/// goes back into the book.
class CWindowProcess final : public CWindowDesk {
public:
    /// Silence of this length is a window that hangs.
    static constexpr std::chrono::milliseconds kPatience{3000};

    CWindowProcess(CPlugInAccess& plugIn, std::string strProgram);
    ~CWindowProcess();
    CWindowProcess(CWindowProcess const&) = delete;
    CWindowProcess& operator=(CWindowProcess const&) = delete;

    void Order(CWindowOrder const& order) override;
    std::optional<CWindowNote> TakeNote() override;

    /// Closes the window and waits for that, at most as long as ending in order may take.
    void End();

    /// Has the window module told something, if there is a window.
    void Tell(CWindowNote const& note);

    /// Does what there is to do, without waiting. For one thread, some hundred times a second.
    void Serve();

private:
    using Clock = std::chrono::steady_clock;

    void Carry(CWindowOrder const& order);
    void Open(CWindowOrder const& order);
    void Hear(CAnyRecord const& record, std::size_t nSize);
    void OnTurn(CTurnRecord const& turn);
    void OnTakeDone(CTakeDoneRecord const& done);
    void SendState(ReturnMode const* wanted);
    void WatchSilence();
    void Leave();
    void NoteEnd();
    void PutTakeBack();
    void Fail(std::string const& strText);

    CPlugInAccess& m_PlugIn;
    const std::string m_strProgram;

    std::mutex m_Lock;
    std::optional<CWindowOrder> m_Order;
    std::deque<CWindowNote> m_Notes;

    std::unique_ptr<CChildProgram> m_pProgram;
    bool m_fLeaving = false;   ///< the program is about to end, or will be ended
    bool m_fSaidWhy = false;   ///< why the program ends is known
    bool m_fSentAway = false;  ///< the workstation closed the window
    bool m_fSaidSilent = false;
    Clock::time_point m_Heard;    ///< or when it was started or told to end
    std::optional<CTake> m_Take;  ///< the window has it
    std::uint64_t m_nTake = 0;
};

/// Where the program stands: beside the module that this code is in.
std::string WindowProgramPath();
