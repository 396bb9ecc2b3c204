#pragma once

#include <cstdint>
#include <optional>
#include <set>

#include "host/ReferenceHost.h"

/// Tells on standard error which files have another sample rate than the session, once for each
/// region. Used by one thread.
class CRateNotices {
public:
    /// Looks at the session again if it has changed.
    void KeepUp(CReferenceHost const& host);

private:
    std::optional<std::uint32_t> m_nSeen;
    std::set<CSessionId> m_told;
};
