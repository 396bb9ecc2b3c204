#include <nng/nng.h>
#include <nng/protocol/reqrep0/rep.h>
#include <nng/protocol/reqrep0/req.h>

#include <cstring>

#include "bench/exchange/ExchangePeer.h"

namespace {

class CNngPeer : public CExchangePeer {
public:
    explicit CNngPeer(CServerManner const& manner)
        : m_strAddress("ipc://" + m_path.Path()), m_server([&] { Serve(manner); }) {
        Check(nng_req0_open(&m_socket) == 0, "nng has no socket");
        for (int nTry = 0; nTry < 500; ++nTry) {
            if (nng_dial(m_socket, m_strAddress.c_str(), nullptr, 0) == 0) return;
            SleepUs(10'000);
        }
        Check(false, "nng does not connect");
    }
    ~CNngPeer() override { nng_close(m_socket); }

    void Call() override {
        char request[kRequestSize];
        char reply[kReplySize];
        std::size_t nReply = sizeof reply;
        std::memset(request, 'q', sizeof request);
        Check(nng_send(m_socket, request, sizeof request, 0) == 0 &&
                  nng_recv(m_socket, reply, &nReply, 0) == 0 && nReply == sizeof reply,
              "nng failed");
    }

private:
    void Serve(CServerManner const& manner) {
        PlaceServer(manner.placement);
        nng_socket socket;
        Check(nng_rep0_open(&socket) == 0 &&
                  nng_listen(socket, m_strAddress.c_str(), nullptr, 0) == 0,
              "nng does not listen");
        char request[kRequestSize];
        char reply[kReplySize];
        std::memset(reply, 'r', sizeof reply);
        for (;;) {
            std::size_t nRequest = sizeof request;
            if (nng_recv(socket, request, &nRequest, 0) != 0) return;
            Work(manner);
            nng_send(socket, reply, sizeof reply, 0);
        }
    }

    CSocketPath m_path{"nng"};
    std::string m_strAddress;
    CChild m_server;
    nng_socket m_socket;
};

}  // namespace

std::unique_ptr<CExchangePeer> MakeNngPeer(CServerManner const& manner) {
    return std::make_unique<CNngPeer>(manner);
}
