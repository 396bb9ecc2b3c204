#include <zmq.h>

#include <cstring>

#include "bench/exchange/ExchangePeer.h"

namespace {

class CZeroMqPeer : public CExchangePeer {
public:
    explicit CZeroMqPeer(CServerManner const& manner)
        : m_strAddress("ipc://" + m_path.Path()), m_server([&] { Serve(manner); }) {
        m_pContext = zmq_ctx_new();
        m_pSocket = zmq_socket(m_pContext, ZMQ_REQ);
        Check(zmq_connect(m_pSocket, m_strAddress.c_str()) == 0, "ZeroMQ does not connect");
    }
    ~CZeroMqPeer() override {
        const int nLinger = 0;
        zmq_setsockopt(m_pSocket, ZMQ_LINGER, &nLinger, sizeof nLinger);
        zmq_close(m_pSocket);
        zmq_ctx_term(m_pContext);
    }

    void Call() override {
        char request[kRequestSize];
        char reply[kReplySize];
        std::memset(request, 'q', sizeof request);
        Check(zmq_send(m_pSocket, request, sizeof request, 0) == int{sizeof request} &&
                  zmq_recv(m_pSocket, reply, sizeof reply, 0) == int{sizeof reply},
              "ZeroMQ failed");
    }

private:
    void Serve(CServerManner const& manner) {
        PlaceServer(manner.placement);
        void* const pSocket = zmq_socket(zmq_ctx_new(), ZMQ_REP);
        Check(zmq_bind(pSocket, m_strAddress.c_str()) == 0, "ZeroMQ does not bind");
        char request[kRequestSize];
        char reply[kReplySize];
        std::memset(reply, 'r', sizeof reply);
        while (zmq_recv(pSocket, request, sizeof request, 0) >= 0) {
            Work(manner);
            zmq_send(pSocket, reply, sizeof reply, 0);
        }
    }

    CSocketPath m_path{"zeromq"};
    std::string m_strAddress;
    CChild m_server;
    void* m_pContext;
    void* m_pSocket;
};

}  // namespace

std::unique_ptr<CExchangePeer> MakeZeroMqPeer(CServerManner const& manner) {
    return std::make_unique<CZeroMqPeer>(manner);
}
