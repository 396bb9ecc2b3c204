#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "plugin/PlugInState.h"

/// What a plug-in knows of its takes: which there are, which have been handed over, and by which
/// track the host has them. Any thread but the audio thread.
///
/// At most one take is in somebody's hands at a time, so that a guide is handed over before the dub
/// that follows it.
class CTakeBook {
public:
    explicit CTakeBook(std::int32_t nKind);

    void Add(CTake const& take);

    /// The oldest take that nobody handed over yet; from now on it is in the caller's hands.
    /// Nothing when there is none, or when one is in somebody's hands already.
    std::optional<CTake> Pick();

    /// Whether a take waits or is in somebody's hands.
    bool IsWaiting() const;

    /// The take that is in somebody's hands.
    std::optional<CTake> Picked() const;

    /// Puts the picked take back, to be picked again.
    void PutBack();

    /// The same, under another name: the host may have it by the one that it had.
    void PutBackAs(std::string const& strFile);

    /// The picked take is done: the host has it on this track, or -1 when it refused it.
    void Handled(std::int32_t nTrack);

    /// The last take that the host has on a track, if there is one.
    std::optional<CTake> LastOn(std::int32_t nTrack) const;

    /// The last take of all, whoever has it.
    std::optional<CTake> Last() const;

    void SetTrack(std::int32_t nTrack);
    std::int32_t Track() const;
    void SetReturned(std::string const& strFile, std::int64_t lPosition);

    /// \name All of it at once
    /// @{
    CPlugInState State() const;
    void SetState(CPlugInState const& state);
    /// @}

private:
    std::vector<CTake>::iterator Waiting();
    void Trim();

    mutable std::mutex m_Lock;
    CPlugInState m_State;
    bool m_fPicked = false;
};

/// How many takes a plug-in remembers. A take that waits is never forgotten.
inline constexpr std::size_t kRememberedTakes = 32;
