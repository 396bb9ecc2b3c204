#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "plugin/Take.h"
#import "window/PlugInBundle.h"

/// The view of one plug-in and the notifications that it is sent. Each notification takes as long
/// as the host takes to answer.
class CPlugInView {
public:
    explicit CPlugInView(PlugInKind kind);
    ~CPlugInView();
    CPlugInView(CPlugInView const&) = delete;
    CPlugInView& operator=(CPlugInView const&) = delete;

    NSView* View() const { return [m_controller view]; }

    /// Looks which host is current. Its id; less than 1 when there is none with a session.
    std::int32_t CheckHost();

    /// Hands a take over, to the track that the view chooses.
    void Capture(CTake const& take);
    /// Has the host render its selected region; where it starts, or nothing.
    std::optional<std::int64_t> Render(int nSampleRate);
    /// The path of the host's selected region as a file, or nothing.
    std::optional<std::string> Export(int nSampleRate);

    /// What the link client said last; empty when all went well.
    std::string ErrorText() const;
    /// Shows a text of the plug-in's own where the view shows those of the link client.
    void Show(std::string const& strText);

    /// \name The chosen track
    /// @{

    /// The track that the next take goes to; nothing while no list is there to choose from.
    std::optional<std::int32_t> Track() const;
    void ChooseTrack(std::int32_t nTrack);
    /// Fetches the list of tracks anew, where the view has one.
    void FetchTracks();
    /// The list that the view has; another value for another list.
    void const* TrackList() const;
    /// @}

    /// Tells the view of a take that the host has on a track from before the view was made.
    void Remember(std::int32_t nTrack, CTake const& take);

private:
    void Notify(std::int32_t nType, void* pRecord, std::uint32_t nSize);

    CPlugInController* m_controller;
};
