#include "workstation/SchemeWatch.h"

#include "tools/scheme/SchemeSource.h"

CSchemeWatch::CSchemeWatch(std::string strScheme, std::string strBase)
    : m_strScheme(std::move(strScheme)), m_strBase(std::move(strBase)) {}

bool CSchemeWatch::IsDue() {
    std::vector<CFileState> now = LookAtFiles();
    if (m_read == now) return false;
    m_read = std::move(now);
    return true;
}

void CSchemeWatch::Read(CComponentsColors& scheme) const {
    ReadScheme(m_strBase, scheme);
    ReadScheme(m_strScheme, scheme);
}

std::vector<CSchemeWatch::CFileState> CSchemeWatch::LookAtFiles() const {
    std::vector<CFileState> states;
    for (std::string const& strFile : {m_strScheme, m_strBase}) {
        // A palette is no file, and one that is being replaced may be missing for a moment.
        std::error_code failure;
        CFileState state;
        state.time = std::filesystem::last_write_time(strFile, failure);
        if (!failure) state.nSize = std::filesystem::file_size(strFile, failure);
        states.push_back(failure ? CFileState{} : state);
    }
    return states;
}
