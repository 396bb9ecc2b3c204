#include "PeerHost.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/interprocess/sync/scoped_lock.hpp>
#include <cstring>
#include <stdexcept>

namespace {

using boost::interprocess::scoped_lock;
using boost::interprocess::ipcdetail::spin_mutex;
using boost::posix_time::microsec_clock;

std::int64_t BoostTicksNow() {
    const auto now = microsec_clock::universal_time();
    return std::int64_t{now.date().day_number()} * 86'400'000'000 +
           now.time_of_day().total_microseconds();
}

}  // namespace

CTestSegment::CTestSegment(std::string name, std::size_t nSize)
    : m_strName("/" + std::move(name)), m_nSize(nSize), m_fOwned(true) {
    shm_unlink(m_strName.c_str());
    const int nFile = shm_open(m_strName.c_str(), O_CREAT | O_EXCL | O_RDWR, 0600);
    if (nFile < 0 || ftruncate(nFile, static_cast<off_t>(nSize)) != 0) {
        throw std::runtime_error("cannot create " + m_strName + ": " + std::strerror(errno));
    }
    Map(nFile);
}

CTestSegment::CTestSegment(std::string name) : m_strName("/" + std::move(name)), m_fOwned(false) {
    const int nFile = shm_open(m_strName.c_str(), O_RDWR, 0);
    struct stat status {};
    if (nFile < 0 || fstat(nFile, &status) != 0) {
        throw std::runtime_error("cannot open " + m_strName + ": " + std::strerror(errno));
    }
    m_nSize = static_cast<std::size_t>(status.st_size);
    Map(nFile);
}

CTestSegment::~CTestSegment() {
    if (m_pBytes) munmap(m_pBytes, m_nSize);
    if (m_fOwned) shm_unlink(m_strName.c_str());
}

void CTestSegment::Map(int nFile) {
    if (m_nSize > 0) {
        m_pBytes = static_cast<unsigned char*>(
            mmap(nullptr, m_nSize, PROT_READ | PROT_WRITE, MAP_SHARED, nFile, 0));
    }
    close(nFile);
}

CTestDirectory::CTestDirectory(std::int32_t nCurrentHost)
    : CTestSegment("__KEL_TAN_INTERPROCESS_DIR6__", 64) {
    SetCurrentHost(nCurrentHost);
    SetHeartbeat(BoostTicksNow() + 3'600'000'000);
}

CTestMessageSegment::CTestMessageSegment(int nHostId, std::int32_t nCapacity, std::size_t nSize)
    : CTestSegment("TAN_Host_" + std::to_string(nHostId), nSize) {
    Put(40, nCapacity);
    Put(48, kBufferOffset);
    Put(52, kErrorOffset);
}

CPeerHost::CPeerHost(int nId) : m_directory(nId), m_segment(nId) {
    AnswerWith("");
    m_thread = std::thread([this] { Serve(); });
}

CPeerHost::~CPeerHost() {
    {
        scoped_lock<spin_mutex> lock(m_segment.Mutex());
        m_fStop = true;
    }
    m_thread.join();
}

void CPeerHost::AnswerWith(std::string reply, std::string error) {
    AnswerWith([answer = Answer{std::move(reply), std::move(error)}](std::string const&) {
        return answer;
    });
}

void CPeerHost::AnswerWith(std::function<Answer(std::string const&)> answer) {
    const std::lock_guard guard(m_mutex);
    m_answer = std::move(answer);
}

std::vector<std::string> CPeerHost::Requests() const {
    const std::lock_guard guard(m_mutex);
    return m_requests;
}

std::string CPeerHost::LastRequest() const {
    const std::lock_guard guard(m_mutex);
    return m_requests.empty() ? std::string() : m_requests.back();
}

void CPeerHost::Serve() {
    scoped_lock<spin_mutex> lock(m_segment.Mutex());
    while (!m_fStop) {
        const auto soon = microsec_clock::universal_time() + boost::posix_time::milliseconds(20);
        m_segment.RequestCondition().timed_wait(lock, soon);
        if (!m_segment.IsPending()) continue;

        const std::string strRequest(m_segment.Buffer());
        Answer answer;
        {
            const std::lock_guard guard(m_mutex);
            m_requests.push_back(strRequest);
            answer = m_answer(strRequest);
        }
        std::memcpy(m_segment.Bytes() + CTestMessageSegment::kBufferOffset, answer.strReply.c_str(),
                    answer.strReply.size() + 1);
        std::memcpy(m_segment.Bytes() + CTestMessageSegment::kErrorOffset, answer.strError.c_str(),
                    answer.strError.size() + 1);
        m_segment.Bytes()[36] = 0;
        m_segment.ReplyCondition().notify_one();
    }
}
