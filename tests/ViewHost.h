#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "PeerHost.h"
#include "ScriptSummary.h"

/// A host for tests of the views: answers each kind of script as told and remembers what it was
/// asked, in order.
class CViewHost {
public:
    explicit CViewHost(std::vector<std::string> tracks = {"Vox", "Gtr"}, int nId = 3)
        : m_tracks(std::move(tracks)), m_peer(nId) {
        m_peer.AnswerWith([this](std::string const& strScript) { return Answer(strScript); });
    }

    void SetTracks(std::vector<std::string> tracks) {
        const std::lock_guard guard(m_mutex);
        m_tracks = std::move(tracks);
    }
    void SetDuplicate(bool fDuplicate) { m_fDuplicate = fDuplicate; }
    void SetExport(std::string strReply) {
        const std::lock_guard guard(m_mutex);
        m_strExport = std::move(strReply);
    }
    void SetRender(std::string strReply) {
        const std::lock_guard guard(m_mutex);
        m_strRender = std::move(strReply);
    }
    void SetUpdateCount(std::string strReply) {
        const std::lock_guard guard(m_mutex);
        m_strUpdateCount = std::move(strReply);
    }
    /// Every later script fails with this error.
    void SetError(std::string strError) {
        const std::lock_guard guard(m_mutex);
        m_strError = std::move(strError);
    }
    void SetCurrentHost(int nId) { m_peer.Directory().SetCurrentHost(nId); }

    /// What was asked since the last call, in order.
    std::vector<std::string> Asked() {
        const std::vector<std::string> scripts = m_peer.Requests();
        std::vector<std::string> summaries;
        for (; m_nSeen < scripts.size(); ++m_nSeen) {
            summaries.push_back(SummarizeScript(scripts[m_nSeen]));
        }
        return summaries;
    }

private:
    CPeerHost::Answer Answer(std::string const& strScript) {
        const std::lock_guard guard(m_mutex);
        return {Reply(SummarizeScript(strScript)), m_strError};
    }

    std::string Reply(std::string const& strSummary) const {
        if (strSummary.ends_with(" list")) return TrackList();
        if (strSummary.find(" duplicate ") != std::string::npos) return m_fDuplicate ? "1" : "0";
        if (strSummary.ends_with(" export")) return m_strExport;
        if (strSummary.ends_with(" render")) return m_strRender;
        if (strSummary.find("GetUpdateCount") != std::string::npos) return m_strUpdateCount;
        return "";
    }

    std::string TrackList() const {
        std::string strReply = std::to_string(m_tracks.size() + 1) + "\n1\n";
        for (std::string const& strName : m_tracks) strReply += strName + "\n";
        return strReply;
    }

    std::mutex m_mutex;
    std::vector<std::string> m_tracks;
    std::atomic<bool> m_fDuplicate = false;
    std::string m_strExport = "1\n1\n";
    std::string m_strRender = "1\n1\n";
    std::string m_strUpdateCount = "0\n";
    std::string m_strError;
    std::size_t m_nSeen = 0;
    CPeerHost m_peer;
};
