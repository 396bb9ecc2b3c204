#include <boost/interprocess/ipc/message_queue.hpp>
#include <cstring>

#ifdef TAVARIN_BENCH_MQUEUE
#include <fcntl.h>
#include <mqueue.h>
#endif

#include "bench/exchange/ExchangePeer.h"

namespace {

constexpr char szRequests[] = "/tavarin_bench_requests";
constexpr char szReplies[] = "/tavarin_bench_replies";

#ifdef TAVARIN_BENCH_MQUEUE

class CPosixQueue {
public:
    CPosixQueue(const char* szName, std::size_t nSize) : m_szName(szName) {
        mq_unlink(szName);
        mq_attr attributes{};
        attributes.mq_maxmsg = 8;
        attributes.mq_msgsize = static_cast<long>(nSize);
        m_queue = mq_open(szName, O_RDWR | O_CREAT, 0600, &attributes);
        Check(m_queue >= 0, "no POSIX message queue");
    }
    ~CPosixQueue() {
        mq_close(m_queue);
        mq_unlink(m_szName);
    }
    CPosixQueue(CPosixQueue const&) = delete;
    CPosixQueue& operator=(CPosixQueue const&) = delete;

    bool Send(const char* pBytes, std::size_t nSize) {
        return mq_send(m_queue, pBytes, nSize, 0) == 0;
    }
    bool Receive(char* pBytes, std::size_t nSize) {
        return mq_receive(m_queue, pBytes, nSize, nullptr) >= 0;
    }

private:
    const char* m_szName;
    mqd_t m_queue;
};

#endif

class CBoostQueue {
public:
    CBoostQueue(const char* szName, std::size_t nSize)
        : m_szName(szName + 1), m_queue(Fresh(szName + 1), m_szName, 8, nSize) {}
    ~CBoostQueue() { boost::interprocess::message_queue::remove(m_szName); }
    CBoostQueue(CBoostQueue const&) = delete;
    CBoostQueue& operator=(CBoostQueue const&) = delete;

    bool Send(const char* pBytes, std::size_t nSize) {
        m_queue.send(pBytes, nSize, 0);
        return true;
    }
    bool Receive(char* pBytes, std::size_t nSize) {
        boost::interprocess::message_queue::size_type nReceived = 0;
        unsigned int nPriority = 0;
        m_queue.receive(pBytes, nSize, nReceived, nPriority);
        return nReceived == nSize;
    }

private:
    static boost::interprocess::create_only_t Fresh(const char* szName) {
        boost::interprocess::message_queue::remove(szName);
        return boost::interprocess::create_only;
    }

    const char* m_szName;
    boost::interprocess::message_queue m_queue;
};

template <typename Queue>
class CQueuePeer : public CExchangePeer {
public:
    explicit CQueuePeer(CServerManner const& manner)
        : m_requests(szRequests, kRequestSize),
          m_replies(szReplies, kReplySize),
          m_server([&] { Serve(manner); }) {}

    void Call() override {
        char request[kRequestSize];
        char reply[kReplySize];
        std::memset(request, 'q', sizeof request);
        Check(m_requests.Send(request, sizeof request) && m_replies.Receive(reply, sizeof reply),
              "a message queue failed");
    }

private:
    void Serve(CServerManner const& manner) {
        PlaceServer(manner.placement);
        char request[kRequestSize];
        char reply[kReplySize];
        std::memset(reply, 'r', sizeof reply);
        while (m_requests.Receive(request, sizeof request)) {
            Work(manner);
            m_replies.Send(reply, sizeof reply);
        }
    }

    Queue m_requests;
    Queue m_replies;
    CChild m_server;
};

}  // namespace

std::unique_ptr<CExchangePeer> MakePosixQueuePeer([[maybe_unused]] CServerManner const& manner) {
#ifdef TAVARIN_BENCH_MQUEUE
    return std::make_unique<CQueuePeer<CPosixQueue>>(manner);
#else
    return nullptr;
#endif
}

std::unique_ptr<CExchangePeer> MakeBoostQueuePeer(CServerManner const& manner) {
    return std::make_unique<CQueuePeer<CBoostQueue>>(manner);
}
