#include "host/HostSegments.h"

#include <sys/file.h>

#include <boost/interprocess/exceptions.hpp>
#include <cerrno>
#include <system_error>
#include <utility>

#include "link/LinkClock.h"
#include "link/MappedSegment.h"
#include "platform/SharedMemory.h"

namespace {

using namespace boost::interprocess;

std::string MessageSegmentName(int nId, SegmentName name) {
    const std::string strName = szHostSegmentPrefix + std::to_string(nId);
    return name == SegmentName::Spare ? strName + ".spare" : strName;
}

// Removes what a crash may have left under the name.
std::string FreeName(std::string strName) {
    shared_memory_object::remove(strName.c_str());
    return strName;
}

[[noreturn]] void RefuseToCreate(std::string const& name, std::string const& strReason) {
    throw CHostSegmentError("cannot create the shared-memory segment " + name + ": " + strReason);
}

shared_memory_object CreateObject(std::string const& name, std::size_t nSize) {
    try {
        shared_memory_object object(create_only, name.c_str(), read_write, permissions(0600));
        object.truncate(static_cast<offset_t>(nSize));
        const int nError = ReserveSharedMemory(object.get_mapping_handle().handle, nSize);
        if (nError == 0) return object;
        shared_memory_object::remove(name.c_str());
        RefuseToCreate(name, std::generic_category().message(nError));
    } catch (interprocess_exception const& failure) {
        RefuseToCreate(name, failure.what());
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

// The directory's name, free for this process.
std::string ClaimDirectory() {
    RefuseLiveHost();
    return FreeName(szDirectorySegment);
}

}  // namespace

COwnedSegment::COwnedSegment(std::string name, std::size_t nSize)
    : m_strName(std::move(name)),
      m_object(CreateObject(m_strName, nSize)),
      m_region(m_object, read_write) {}

COwnedSegment::~COwnedSegment() {
    if (!m_strName.empty()) shared_memory_object::remove(m_strName.c_str());
}

bool COwnedSegment::TakeNameOf(COwnedSegment& other) noexcept {
    if (!RenameSharedMemory(m_strName.c_str(), other.m_strName.c_str())) return false;
    m_strName = std::exchange(other.m_strName, {});
    return true;
}

CHostDirectory::CHostDirectory() : m_segment(ClaimDirectory(), sizeof(DirectoryRecord)) {
    flock(m_segment.Descriptor(), LOCK_EX | LOCK_NB);
}

CHostMessageSegment::CHostMessageSegment(int nId, SegmentName name)
    : m_segment(FreeName(MessageSegmentName(nId, name)), MessageLayout::kSegmentSize) {
    Record()->nRequestCapacity = MessageLayout::kRequestCapacity;
    Record()->nBufferOffset = MessageLayout::kBufferOffset;
    Record()->nErrorOffset = MessageLayout::kErrorOffset;
}

char* CHostMessageSegment::Buffer() const noexcept {
    return reinterpret_cast<char*>(m_segment.Bytes() + MessageLayout::kBufferOffset);
}

char* CHostMessageSegment::ErrorText() const noexcept {
    return reinterpret_cast<char*>(m_segment.Bytes() + MessageLayout::kErrorOffset);
}
