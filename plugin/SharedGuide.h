#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "plugin/Take.h"

/// The guide that the APT plug-ins of one process share, since the host has one document for all of
/// them: whichever of them captured it, the dubs of all are aligned with it. Any thread but the
/// audio thread.
class CSharedGuide {
public:
    /// The one that all who hold it have in common. It is forgotten with the last of them, so that
    /// a workstation's next session does not find it.
    static std::shared_ptr<CSharedGuide> Join();

    /// The host has this one now.
    void Put(CTake const& guide);

    /// The host had this one when a session was saved: kept unless a newer one is there. A guide
    /// whose file has gone is the oldest of all.
    void Offer(CTake const& guide);

    std::optional<CGuide> Last() const;

private:
    mutable std::mutex m_Lock;
    std::optional<CTake> m_Guide;
};
