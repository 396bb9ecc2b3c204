#include "bench/exchange/ExchangePeer.h"
#include "host/LinkServer.h"
#include "link/TANClientInterProcess.h"

namespace {

constexpr int kHost = 1;

void RunHost(CServerManner const& manner) {
    PlaceServer(manner.placement);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    const CLinkServer server(kHost, true, [&](std::string const&) {
        Work(manner);
        return CServerReply{std::string(kReplySize, 'r'), "", 0};
    });
    int nSignal = 0;
    sigwait(&signals, &nSignal);
}

// Commands as a view makes them: the host check and the exchange.
class CLinkPeer : public CExchangePeer {
public:
    explicit CLinkPeer(CServerManner const& manner) : m_host([&] { RunHost(manner); }) {
        for (int nTry = 0; nTry < 500; ++nTry) {
            if (m_client.GetCurrentIdFromMainDirectory() == kHost) return;
            SleepUs(10'000);
        }
        Check(false, "the host did not start; is another one running?");
    }

    void Call() override {
        const int id = m_client.GetCurrentTANHost();
        const int nStatus = m_client.SendTANMessage(id, m_strRequest, m_strReply, -1);
        Check(nStatus == 0 && m_strReply.size() == kReplySize, "the link gave a wrong reply");
    }

private:
    CChild m_host;
    CTANClientInterProcess m_client;
    std::string m_strRequest = std::string(kRequestSize, 'q');
    std::string m_strReply;
};

}  // namespace

std::unique_ptr<CExchangePeer> MakeLinkPeer(CServerManner const& manner) {
    return std::make_unique<CLinkPeer>(manner);
}
