#include "tools/WaitNotice.h"

#include <chrono>
#include <cstdio>

CWaitNotice::CWaitNotice(std::string strWhat, int nTerminal)
    : m_nTerminal(nTerminal), m_strWhat(std::move(strWhat)) {
    if (!isatty(m_nTerminal)) return;
    m_thread = std::jthread([this](std::stop_token const& stop) { CountSeconds(stop); });
}

CWaitNotice::~CWaitNotice() {
    End();
}

void CWaitNotice::Say(std::string strWhat) {
    const std::lock_guard lock(m_mutex);
    m_strWhat = std::move(strWhat);
    Draw();
}

void CWaitNotice::Hide() {
    const std::lock_guard lock(m_mutex);
    m_strWhat.clear();
    Erase();
}

void CWaitNotice::End() {
    if (!m_thread.joinable()) return;
    m_thread = std::jthread();
    Erase();
    m_nSeconds = 0;
}

void CWaitNotice::CountSeconds(std::stop_token const& stop) {
    std::unique_lock lock(m_mutex);
    while (!m_wake.wait_for(lock, stop, std::chrono::seconds(1),
                            [&] { return stop.stop_requested(); })) {
        ++m_nSeconds;
        Draw();
    }
}

void CWaitNotice::Draw() const {
    if (m_nSeconds == 0 || m_strWhat.empty()) return;
    dprintf(m_nTerminal, "\r%s, %d s\x1b[K", m_strWhat.c_str(), m_nSeconds);
}

void CWaitNotice::Erase() const {
    if (m_nSeconds > 0) dprintf(m_nTerminal, "\r\x1b[K");
}
