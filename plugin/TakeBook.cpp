#include "plugin/TakeBook.h"

#include <algorithm>

CTakeBook::CTakeBook(std::int32_t nKind) {
    m_State.nKind = nKind;
}

void CTakeBook::Add(CTake const& take) {
    const std::lock_guard lock(m_Lock);
    m_State.takes.push_back(take);
    Trim();
}

std::optional<CTake> CTakeBook::Pick() {
    const std::lock_guard lock(m_Lock);
    const auto waiting = Waiting();
    if (m_fPicked || waiting == m_State.takes.end()) return std::nullopt;
    m_fPicked = true;
    return *waiting;
}

bool CTakeBook::IsWaiting() const {
    const std::lock_guard lock(m_Lock);
    return std::any_of(m_State.takes.begin(), m_State.takes.end(),
                       [](CTake const& take) { return !take.fHandled; });
}

std::optional<CTake> CTakeBook::Picked() const {
    const std::lock_guard lock(m_Lock);
    const auto waiting = std::find_if(m_State.takes.begin(), m_State.takes.end(),
                                      [](CTake const& take) { return !take.fHandled; });
    if (!m_fPicked || waiting == m_State.takes.end()) return std::nullopt;
    return *waiting;
}

void CTakeBook::PutBack() {
    const std::lock_guard lock(m_Lock);
    m_fPicked = false;
}

void CTakeBook::PutBackAs(std::string const& strFile) {
    const std::lock_guard lock(m_Lock);
    const auto waiting = Waiting();
    if (!m_fPicked || waiting == m_State.takes.end()) return;
    waiting->strFile = strFile;
    waiting->fMayBeThere = true;
    m_fPicked = false;
}

void CTakeBook::Handled(std::int32_t nTrack) {
    const std::lock_guard lock(m_Lock);
    const auto waiting = Waiting();
    if (!m_fPicked || waiting == m_State.takes.end()) return;
    waiting->nTrack = nTrack;
    waiting->fHandled = true;
    m_fPicked = false;
    Trim();
}

std::optional<CTake> CTakeBook::LastOn(std::int32_t nTrack) const {
    const std::lock_guard lock(m_Lock);
    const auto found = std::find_if(m_State.takes.rbegin(), m_State.takes.rend(),
                                    [nTrack](CTake const& take) { return take.nTrack == nTrack; });
    if (found == m_State.takes.rend()) return std::nullopt;
    return *found;
}

std::optional<CTake> CTakeBook::Last() const {
    const std::lock_guard lock(m_Lock);
    if (m_State.takes.empty()) return std::nullopt;
    return m_State.takes.back();
}

void CTakeBook::SetTrack(std::int32_t nTrack) {
    const std::lock_guard lock(m_Lock);
    m_State.nTrack = nTrack;
}

std::int32_t CTakeBook::Track() const {
    const std::lock_guard lock(m_Lock);
    return m_State.nTrack;
}

void CTakeBook::SetReturned(std::string const& strFile, std::int64_t lPosition) {
    const std::lock_guard lock(m_Lock);
    m_State.strReturnedFile = strFile;
    m_State.lReturnedPosition = lPosition;
}

CPlugInState CTakeBook::State() const {
    const std::lock_guard lock(m_Lock);
    return m_State;
}

void CTakeBook::SetState(CPlugInState const& state) {
    const std::lock_guard lock(m_Lock);
    m_State = state;
    m_fPicked = false;
}

std::vector<CTake>::iterator CTakeBook::Waiting() {
    return std::find_if(m_State.takes.begin(), m_State.takes.end(),
                        [](CTake const& take) { return !take.fHandled; });
}

void CTakeBook::Trim() {
    while (m_State.takes.size() > kRememberedTakes && m_State.takes.front().fHandled) {
        m_State.takes.erase(m_State.takes.begin());
    }
}
