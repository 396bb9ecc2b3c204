#include "plugin/TrackClaims.h"

#include <utility>

namespace {

/// Takes that end together reach the host within this time, unless there is none.
constexpr std::chrono::seconds kTogether{10};

}  // namespace

CTrackClaims& CTrackClaims::Shared() {
    static CTrackClaims shared;
    return shared;
}

CTrackClaims::Claim CTrackClaims::Make(void const* plugIn, PlugInKind kind, std::int32_t nTrack,
                                       CTake const& take) {
    const auto now = std::chrono::steady_clock::now();
    const std::lock_guard lock(m_Lock);
    const CHolder claim{plugIn, take.lPosition, now};
    const auto [found, fNew] = m_Holders.try_emplace({kind, nTrack}, claim);
    const CHolder former = std::exchange(found->second, claim);
    if (fNew || former.plugIn == plugIn) return Claim::Free;
    if (former.lPosition != take.lPosition || now - former.when > kTogether) return Claim::Replaces;
    found->second = former;
    return Claim::Twin;
}

void CTrackClaims::Drop(void const* plugIn) {
    const std::lock_guard lock(m_Lock);
    std::erase_if(m_Holders, [plugIn](auto const& entry) { return entry.second.plugIn == plugIn; });
}
