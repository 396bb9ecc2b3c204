#pragma once

#include <cstdint>

#include "platform/RecordSocket.h"
#include "plugin/PlugInAccess.h"
#include "plugin/WindowRecords.h"

/// The plug-in as the window's own process sees it: what it said last, and a socket to answer it
/// by. What the window asks for arrives a turn later.
class CPlugInMirror final : public CPlugInAccess {
public:
    explicit CPlugInMirror(CRecordSocket& socket) : m_Socket(socket) {}

    /// Waits for what the plug-in says at first. False when it does not come.
    bool Begin();
    COpenRecord const& Opened() const { return m_Opened; }

    /// Takes in what came since. False when the plug-in has gone.
    bool Hear();
    /// True once for each time that the window is to come to the front.
    bool PickRaise();

    /// The user set a control port.
    void SetControl(PlugInPort port, float value);
    void SayClosed();

    PlugInKind Kind() const override { return static_cast<PlugInKind>(m_Opened.nKind); }
    int SampleRate() const override { return m_Opened.nSampleRate; }
    void ViewTurned() override;
    std::optional<CTake> PickTake() override;
    bool IsTakeWaiting() const override { return m_State.fTakeWaits != 0; }
    void TakeHandled(std::int32_t nTrack) override;
    void TakePutBack(TakeFate fate) override;
    std::optional<CTake> LastTakeOn(std::int32_t nTrack) const override;
    std::optional<CGuide> Guide() const override;
    std::optional<CTake> LastTake() const override;
    std::int32_t Track() const override { return m_nTrack; }
    void SetTrack(std::int32_t nTrack) override;
    bool PickReturnRequest(ReturnMode* mode) override;
    void SetReturned(std::string const& strFile, std::int64_t lPosition) override;
    CPlugInStatus Status() const override;
    void Report(PlugInResult result, std::string const& strText) override;
    CPlugInActivity Activity() const override;

private:
    template <typename Record>
    void Send(Record const& record) {
        m_Socket.Send(&record, sizeof(record));
    }
    void Take(CStateRecord const& state);

    CRecordSocket& m_Socket;
    COpenRecord m_Opened{};
    CStateRecord m_State{};
    std::int32_t m_nTrack = 0;
    std::int32_t m_nReturn = -1;
    std::uint64_t m_nPicked = 0;
    bool m_fAsked = false;  ///< a turn was not answered yet
    bool m_fWantsTake = false;
    bool m_fWantsReturn = false;
    bool m_fRaise = false;
};
