#pragma once

#include <cstdint>
#include <optional>

#include "plugin/WindowRecords.h"

/// \name The types of the messages that carry them
/// @{
inline constexpr char szWindowOrderUri[] = "urn:tavarin:pro:window-order";
inline constexpr char szWindowNoteUri[] = "urn:tavarin:pro:window-note";
/// @}

/// What a workstation's window module asks of the plug-in. Travels in a message as it is, where the
/// module cannot reach the plug-in.
struct CWindowOrder {
    std::uint32_t nVersion = kWindowVersion;
    std::uint32_t fShow = 0;  ///< or close
    float scale = 0;          ///< as in COpenRecord
    std::uint32_t nUnused = 0;
    std::uint64_t nParent = 0;  ///< as in COpenRecord
    CRecordText<256> title{};   ///< empty: the plug-in's own name
};

/// What the window module is told.
struct CWindowNote {
    std::uint32_t fClosed = 0;  ///< the window has gone, or a control port is wanted to be set
    std::uint32_t nPort = 0;
    float value = 0;
};

static_assert(sizeof(CWindowOrder) == 24 + 256);
static_assert(sizeof(CWindowNote) == 12);

/// The counter at which a window module orders a plug-in's window. Any thread; nobody waits.
class CWindowDesk {
public:
    virtual void Order(CWindowOrder const& order) = 0;
    /// The oldest note that was not taken yet.
    virtual std::optional<CWindowNote> TakeNote() = 0;

protected:
    ~CWindowDesk() = default;
};
