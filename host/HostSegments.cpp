#include "host/HostSegments.h"

#include <sys/file.h>

#include <boost/interprocess/exceptions.hpp>

#include "link/LinkClock.h"
#include "link/MappedSegment.h"

namespace {

using namespace boost::interprocess;

std::string MessageSegmentName(int nId) {
    return szHostSegmentPrefix + std::to_string(nId);
}

shared_memory_object CreateObject(std::string const& name, std::size_t nSize) {
    try {
        shared_memory_object object(create_only, name.c_str(), read_write, permissions(0600));
        object.truncate(static_cast<offset_t>(nSize));
        return object;
    } catch (interprocess_exception const& failure) {
        throw CHostSegmentError("cannot create the shared-memory segment " + name + ": " +
                                failure.what());
    }
}

// A process keeps its own directory segment locked as long as it lives, so a hung host is told from
// a dead one.
bool IsHeldByAProcess(int nDescriptor) {
    if (flock(nDescriptor, LOCK_EX | LOCK_NB) == 0) {
        flock(nDescriptor, LOCK_UN);
        return false;
    }
    return errno == EWOULDBLOCK;
}

void RefuseLiveHost() {
    try {
        const CMappedSegment existing(szDirectorySegment);
        if (existing.Size() < sizeof(DirectoryRecord)) return;
        const auto* const pDirectory = reinterpret_cast<const DirectoryRecord*>(existing.Bytes());
        if (!IsHeartbeatStale(pDirectory->lHeartbeat, LinkTimeNow())) {
            throw CHostSegmentError("a host application is already running (host id " +
                                    std::to_string(pDirectory->nCurrentHost) + "); quit it first");
        }
        if (IsHeldByAProcess(existing.Descriptor())) {
            throw CHostSegmentError(
                "another host holds the link's directory but does not answer; end that process "
                "first");
        }
    } catch (interprocess_exception const& failure) {
        const bool fNothingToRefuse =
            failure.get_error_code() == not_found_error || failure.get_error_code() == size_error;
        if (fNothingToRefuse) return;
        throw CHostSegmentError(std::string("cannot look at the link's directory segment ") +
                                szDirectorySegment + ": " + failure.what());
    }
}

}  // namespace

COwnedSegment::COwnedSegment(std::string name, std::size_t nSize)
    : m_strName(std::move(name)),
      m_object(CreateObject(m_strName, nSize)),
      m_region(m_object, read_write) {}

COwnedSegment::~COwnedSegment() {
    shared_memory_object::remove(m_strName.c_str());
}

CHostSegments::CHostSegments(int nId) {
    RefuseLiveHost();
    shared_memory_object::remove(szDirectorySegment);
    shared_memory_object::remove(MessageSegmentName(nId).c_str());

    m_pDirectory = std::make_unique<COwnedSegment>(szDirectorySegment, sizeof(DirectoryRecord));
    flock(m_pDirectory->Descriptor(), LOCK_EX | LOCK_NB);
    m_pMessage =
        std::make_unique<COwnedSegment>(MessageSegmentName(nId), MessageLayout::kSegmentSize);
    Message()->nRequestCapacity = MessageLayout::kRequestCapacity;
    Message()->nBufferOffset = MessageLayout::kBufferOffset;
    Message()->nErrorOffset = MessageLayout::kErrorOffset;
}

char* CHostSegments::Buffer() const noexcept {
    return reinterpret_cast<char*>(m_pMessage->Bytes() + MessageLayout::kBufferOffset);
}

char* CHostSegments::ErrorText() const noexcept {
    return reinterpret_cast<char*>(m_pMessage->Bytes() + MessageLayout::kErrorOffset);
}
