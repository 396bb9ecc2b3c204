#pragma once

#include <atomic>
#include <boost/interprocess/sync/spin/condition.hpp>
#include <boost/interprocess/sync/spin/mutex.hpp>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// A shared-memory object of a test, mapped whole.
class CTestSegment {
public:
    /// Creates it afresh; it is removed with this object.
    CTestSegment(std::string name, std::size_t nSize);
    /// Maps one that a host made and will remove.
    explicit CTestSegment(std::string name);
    ~CTestSegment();
    CTestSegment(CTestSegment const&) = delete;
    CTestSegment& operator=(CTestSegment const&) = delete;

    unsigned char* Bytes() const { return m_pBytes; }
    std::size_t Size() const { return m_nSize; }

    template <typename T>
    void Put(std::size_t nOffset, T value) {
        __builtin_memcpy(m_pBytes + nOffset, &value, sizeof(value));
    }
    template <typename T>
    T Get(std::size_t nOffset) const {
        T value;
        __builtin_memcpy(&value, m_pBytes + nOffset, sizeof(value));
        return value;
    }

private:
    void Map(int nFile);

    std::string m_strName;
    std::size_t m_nSize;
    bool m_fOwned;
    unsigned char* m_pBytes = nullptr;
};

/// The directory segment of a test, with a heartbeat that stays fresh for an hour.
class CTestDirectory : public CTestSegment {
public:
    explicit CTestDirectory(std::int32_t nCurrentHost);

    void SetCurrentHost(std::int32_t nCurrentHost) { Put(8, nCurrentHost); }
    void SetHeartbeat(std::int64_t lHeartbeat) { Put(12, lHeartbeat); }
};

/// A message segment laid out by hand, with no host behind it.
class CTestMessageSegment : public CTestSegment {
public:
    static constexpr std::int32_t kBufferOffset = 1024;
    static constexpr std::int32_t kErrorOffset = 64;

    explicit CTestMessageSegment(int nHostId, std::int32_t nCapacity = 8192,
                                 std::size_t nSize = 64 * 1024);

    std::string_view Buffer() const {
        return reinterpret_cast<const char*>(Bytes() + kBufferOffset);
    }
    void Close() { Bytes()[37] = 1; }
    std::uint32_t RequestLock() const { return Get<std::uint32_t>(4); }
    std::uint32_t ExchangeMutex() const { return Get<std::uint32_t>(8); }
    std::uint32_t ReplyWaiters() const { return Get<std::uint32_t>(32); }
    bool IsPending() const { return Bytes()[36] != 0; }

    boost::interprocess::ipcdetail::spin_mutex& Mutex() const {
        return *reinterpret_cast<boost::interprocess::ipcdetail::spin_mutex*>(Bytes() + 8);
    }
    boost::interprocess::ipcdetail::spin_condition& RequestCondition() const {
        return *reinterpret_cast<boost::interprocess::ipcdetail::spin_condition*>(Bytes() + 12);
    }
    boost::interprocess::ipcdetail::spin_condition& ReplyCondition() const {
        return *reinterpret_cast<boost::interprocess::ipcdetail::spin_condition*>(Bytes() + 24);
    }
};

/// A host that answers with prepared replies, independent of the product: its locking is Boost's
/// own spin mutex and spin condition placed on the segment's bytes.
class CPeerHost {
public:
    /// What the host answers to a request.
    struct Answer {
        std::string strReply;
        std::string strError;
    };

    explicit CPeerHost(int nId = 3);
    ~CPeerHost();

    /// Every later request gets this answer.
    void AnswerWith(std::string reply, std::string error = {});
    /// Every later request is answered by a function of its text.
    void AnswerWith(std::function<Answer(std::string const&)> answer);

    /// Every request so far, in order.
    std::vector<std::string> Requests() const;
    /// The last request; empty when there was none.
    std::string LastRequest() const;

    CTestDirectory& Directory() { return m_directory; }
    CTestMessageSegment& Segment() { return m_segment; }

private:
    void Serve();

    CTestDirectory m_directory;
    CTestMessageSegment m_segment;
    mutable std::mutex m_mutex;
    std::function<Answer(std::string const&)> m_answer;
    std::vector<std::string> m_requests;
    std::atomic<bool> m_fStop = false;
    std::thread m_thread;
};
