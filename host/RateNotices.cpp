#include "host/RateNotices.h"

#include <cstdio>

void CRateNotices::KeepUp(CReferenceHost const& host) {
    if (m_nSeen == host.UpdateCount()) return;
    const CSession session = host.Snapshot();
    m_nSeen = session.UpdateCount();
    for (DocumentKind kind : kDocumentKinds)
        for (CTrack const& track : session.Document(kind).m_Tracks)
            for (CRegion const& region : track.m_Regions) {
                const bool fSame = region.m_nFileRate == session.SampleRate();
                if (fSame || !m_told.insert(region.m_idRegion).second) continue;
                std::fprintf(stderr,
                             "tavarin-host: \"%s\" has %d Hz, the session has %d Hz; it is "
                             "resampled\n",
                             region.m_strFile.c_str(), region.m_nFileRate, session.SampleRate());
            }
}
