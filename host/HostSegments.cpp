#include "host/HostSegments.h"

#include <boost/interprocess/exceptions.hpp>
#include <system_error>
#include <utility>

#include "host/DirectoryMark.h"
#include "host/ForeignHost.h"
#include "link/MappedSegment.h"
#include "platform/SharedMemory.h"
#include "platform/SharedName.h"

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

shared_memory_object CreateObject(std::string const& name) try {
    return shared_memory_object(create_only, name.c_str(), read_write, permissions(0600));
} catch (interprocess_exception const& failure) {
    RefuseToCreate(name, failure.what());
}

mapped_region MapObject(shared_memory_object& object, std::string const& name,
                        std::size_t nSize) try {
    object.truncate(static_cast<offset_t>(nSize));
    const int nError = ReserveSharedMemory(object.get_mapping_handle().handle, nSize);
    if (nError != 0) RefuseToCreate(name, std::generic_category().message(nError));
    return mapped_region(object, read_write);
} catch (interprocess_exception const& failure) {
    RefuseToCreate(name, failure.what());
}

[[noreturn]] void RefuseToLook(interprocess_exception const& failure) {
    throw CHostSegmentError(std::string("cannot look at the link's directory segment ") +
                            szDirectorySegment + ": " + failure.what());
}

// Somebody else has the lock.
[[noreturn]] void RefuseSecondHost() {
    std::string strProcess;
    try {
        const CMappedSegment directory(szDirectorySegment);
        const MarkedDirectory* const pMarked = FindMark(directory);
        if (pMarked) strProcess = " (process " + std::to_string(pMarked->nProcess) + ")";
    } catch (interprocess_exception const&) {
        // It is about to make one, or to end.
    }
    throw CHostSegmentError("a host application is already running" + strProcess +
                            "; quit it first");
}

// The directory's name, free for this process.
std::string ClaimDirectory() {
    try {
        const CMappedSegment existing(szDirectorySegment);
        if (!FindMark(existing)) RefuseForeignHost(existing);
        RemoveSharedName(existing.Descriptor(), szDirectorySegment);
    } catch (interprocess_exception const& failure) {
        const bool fEmpty = failure.get_error_code() == size_error;
        if (fEmpty) return FreeName(szDirectorySegment);
        if (failure.get_error_code() != not_found_error) RefuseToLook(failure);
    }
    return szDirectorySegment;
}

}  // namespace

COwnedName::COwnedName(std::string&& name, int nDescriptor) noexcept
    : m_strName(std::move(name)), m_nDescriptor(nDescriptor) {}

COwnedName::~COwnedName() {
    if (!m_strName.empty()) RemoveSharedName(m_nDescriptor, m_strName.c_str());
}

bool COwnedName::Take(COwnedName& other) noexcept {
    const char* const szName = other.m_strName.c_str();
    if (!HasSharedName(other.m_nDescriptor, szName)) return false;
    if (!RenameSharedMemory(m_strName.c_str(), szName)) return false;
    m_strName = std::exchange(other.m_strName, {});
    return true;
}

COwnedSegment::COwnedSegment(std::string name, std::size_t nSize)
    : m_object(CreateObject(name)),
      m_name(std::move(name), Descriptor()),
      m_region(MapObject(m_object, m_name.Text(), nSize)) {}

CHostLock::CHostLock() try : m_lock(szDirectorySegment) {
    if (!m_lock.IsHeld()) RefuseSecondHost();
} catch (std::system_error const& refusal) {
    throw CHostSegmentError(std::string("cannot take the link's lock: ") + refusal.what());
}

CHostDirectory::CHostDirectory() : m_segment(ClaimDirectory(), sizeof(MarkedDirectory)) {
    MarkDirectory(*reinterpret_cast<MarkedDirectory*>(m_segment.Bytes()));
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
