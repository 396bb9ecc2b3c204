#include "host/Journal.h"

#include <algorithm>
#include <ctime>
#include <utility>

void CJournal::NoteOnce(std::string const& strText) {
    if (strText != m_strLast) Note(strText);
}

void CJournal::Note(std::string strText) {
    m_strLast = strText;
    std::replace_if(
        strText.begin(), strText.end(),
        [](char ch) { return static_cast<unsigned char>(ch) < 0x20 || ch == 0x7F; }, ' ');
    std::time_t const now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char time[16];
    std::strftime(time, sizeof time, "%H:%M:%S ", &local);
    m_Events.push_back(time + std::move(strText));
    if (m_Events.size() > kKept) m_Events.pop_front();
    ++m_nCount;
}

std::string CJournal::At(std::size_t nEvent) const {
    std::size_t const nFirst = m_nCount - m_Events.size();
    return nEvent >= nFirst && nEvent < m_nCount ? m_Events[nEvent - nFirst] : std::string();
}
