#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>

#include "bench/exchange/ExchangePeer.h"

namespace {

bool ReadAll(int nSocket, char* pBytes, std::size_t nSize) {
    for (std::size_t nDone = 0; nDone < nSize;) {
        const ssize_t nRead = read(nSocket, pBytes + nDone, nSize - nDone);
        if (nRead <= 0) return false;
        nDone += static_cast<std::size_t>(nRead);
    }
    return true;
}

bool AnswerOne(int nSocket, CServerManner const& manner) {
    char request[kRequestSize];
    char reply[kReplySize];
    if (!ReadAll(nSocket, request, sizeof request)) return false;
    Work(manner);
    std::memset(reply, 'r', sizeof reply);
    return write(nSocket, reply, sizeof reply) == ssize_t{sizeof reply};
}

void Exchange(int nSocket) {
    char request[kRequestSize];
    char reply[kReplySize];
    std::memset(request, 'q', sizeof request);
    Check(write(nSocket, request, sizeof request) == ssize_t{sizeof request} &&
              ReadAll(nSocket, reply, sizeof reply),
          "the socket failed");
}

sockaddr_un AddressOf(std::string const& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    return address;
}

int Listen(std::string const& path) {
    const int nSocket = socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un address = AddressOf(path);
    Check(bind(nSocket, reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0 &&
              listen(nSocket, 64) == 0,
          "no socket to listen on");
    return nSocket;
}

int Connect(std::string const& path) {
    const int nSocket = socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un address = AddressOf(path);
    Check(connect(nSocket, reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0,
          "no connection");
    return nSocket;
}

// Answers whoever connects, any number of clients at a time.
void Serve(int nListener, CServerManner const& manner) {
    PlaceServer(manner.placement);
    std::vector<pollfd> sockets{{nListener, POLLIN, 0}};
    for (;;) {
        if (poll(sockets.data(), sockets.size(), -1) < 0) return;
        for (std::size_t i = sockets.size() - 1; i > 0; --i) {
            if (sockets[i].revents == 0 || AnswerOne(sockets[i].fd, manner)) continue;
            close(sockets[i].fd);
            sockets.erase(sockets.begin() + static_cast<std::ptrdiff_t>(i));
        }
        if (sockets[0].revents != 0)
            sockets.push_back({accept(nListener, nullptr, nullptr), POLLIN, 0});
    }
}

// As simple as a server can be: one client, no look at other sockets.
void ServeOne(int nListener, CServerManner const& manner) {
    PlaceServer(manner.placement);
    for (;;) {
        const int nSocket = accept(nListener, nullptr, nullptr);
        while (AnswerOne(nSocket, manner)) {
        }
        close(nSocket);
    }
}

class CSocketPeer : public CExchangePeer {
public:
    explicit CSocketPeer(CServerManner const& manner)
        : m_nListener(Listen(m_path.Path())), m_server([&] {
              if (manner.nClients > 1)
                  Serve(m_nListener, manner);
              else
                  ServeOne(m_nListener, manner);
          }) {
        if (manner.nClients == 1) Reconnect();
    }
    ~CSocketPeer() override {
        if (m_nSocket >= 0) close(m_nSocket);
        close(m_nListener);
    }

    void Call() override { Exchange(m_nSocket); }
    void Reconnect() override { m_nSocket = Connect(m_path.Path()); }

private:
    CSocketPath m_path{"kept"};
    int m_nListener;
    CChild m_server;
    int m_nSocket = -1;
};

class CSocketPerCallPeer : public CExchangePeer {
public:
    explicit CSocketPerCallPeer(CServerManner const& manner)
        : m_nListener(Listen(m_path.Path())), m_server([&] { ServeOne(m_nListener, manner); }) {}
    ~CSocketPerCallPeer() override { close(m_nListener); }

    void Call() override {
        const int nSocket = Connect(m_path.Path());
        Exchange(nSocket);
        close(nSocket);
    }

private:
    CSocketPath m_path{"fresh"};
    int m_nListener;
    CChild m_server;
};

}  // namespace

std::unique_ptr<CExchangePeer> MakeSocketPeer(CServerManner const& manner) {
    return std::make_unique<CSocketPeer>(manner);
}

std::unique_ptr<CExchangePeer> MakeSocketPerCallPeer(CServerManner const& manner) {
    return std::make_unique<CSocketPerCallPeer>(manner);
}
