#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/exchange/BenchProcess.h"

inline constexpr std::size_t kRequestSize = 200;
inline constexpr std::size_t kReplySize = 100;

/// How a benchmark's servers behave.
struct CServerManner {
    EPlacement placement = EPlacement::Apart;
    int nWorkUs = 0;   ///< how long the answer takes, asleep
    int nClients = 1;  ///< how many clients come at once
};

/// One way to send 200 bytes to another process and to get 100 back, with a server of its own.
class CExchangePeer {
public:
    virtual ~CExchangePeer() = default;

    /// One whole exchange; a wrong answer ends the benchmark.
    virtual void Call() = 0;

    /// Makes this process a client of its own, after a fork.
    virtual void Reconnect() {}
};

/// A peer's name, and how to start its server; may be null where a platform has no such thing.
struct CPeerKind {
    const char* szName;
    std::function<std::unique_ptr<CExchangePeer>(CServerManner const&)> make;
};

std::unique_ptr<CExchangePeer> MakeLinkPeer(CServerManner const& manner);
std::unique_ptr<CExchangePeer> MakeFloorPeer(CServerManner const& manner);
std::unique_ptr<CExchangePeer> MakePacedFloorPeer(CServerManner const& manner);
std::unique_ptr<CExchangePeer> MakeSocketPeer(CServerManner const& manner);
std::unique_ptr<CExchangePeer> MakeSocketPerCallPeer(CServerManner const& manner);
/// Its server makes a Lua interpreter with all libraries for each script that comes.
std::unique_ptr<CExchangePeer> MakeLuaSocketPeer(CServerManner const& manner);
std::unique_ptr<CExchangePeer> MakePosixQueuePeer(CServerManner const& manner);
std::unique_ptr<CExchangePeer> MakeBoostQueuePeer(CServerManner const& manner);
std::unique_ptr<CExchangePeer> MakeZeroMqPeer(CServerManner const& manner);
std::unique_ptr<CExchangePeer> MakeNngPeer(CServerManner const& manner);
std::unique_ptr<CExchangePeer> MakeDBusPeer(CServerManner const& manner);

inline void Work(CServerManner const& manner) {
    if (manner.nWorkUs > 0) SleepUs(manner.nWorkUs);
}

/// A path for a socket, gone with this object.
class CSocketPath {
public:
    explicit CSocketPath(const char* szName)
        : m_strPath("/tmp/tavarin-bench-" + std::to_string(getpid()) + "-" + szName) {
        unlink(m_strPath.c_str());
    }
    ~CSocketPath() { unlink(m_strPath.c_str()); }
    CSocketPath(CSocketPath const&) = delete;
    CSocketPath& operator=(CSocketPath const&) = delete;

    std::string const& Path() const { return m_strPath; }

private:
    std::string m_strPath;
};
