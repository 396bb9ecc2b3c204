#include "tools/WaitNotice.h"

#include <chrono>
#include <cstdio>

CWaitNotice::CWaitNotice(std::string strWhat, int nTerminal)
    : m_nTerminal(nTerminal), m_strWhat(std::move(strWhat)) {
    if (!isatty(m_nTerminal)) return;
    m_thread = std::thread([this] { CountSeconds(); });
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
    {
        const std::lock_guard lock(m_mutex);
        m_fEnd = true;
    }
    m_wake.notify_one();
    m_thread.join();
    Erase();
    m_nSeconds = 0;
}

void CWaitNotice::CountSeconds() {
    std::unique_lock lock(m_mutex);
    while (!m_wake.wait_for(lock, std::chrono::seconds(1), [this] { return m_fEnd; })) {
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
