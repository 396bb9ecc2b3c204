#pragma once

#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>
#include <cstddef>
#include <stdexcept>
#include <string>

#include "link/SharedSegments.h"
#include "platform/NameLock.h"

/// Thrown when the link's segments cannot be had; the text tells the user why.
class CHostSegmentError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Bytes of the message segment's parts, as this host lays them out: the record and the error text
/// share the first page, the request and reply buffer has the rest.
namespace MessageLayout {
inline constexpr std::int32_t kErrorOffset = 64;
inline constexpr std::int32_t kErrorSize = 4096 - kErrorOffset;
inline constexpr std::int32_t kBufferOffset = 4096;
/// For a request. Replies may go on behind it.
inline constexpr std::int32_t kRequestCapacity = 16 * 1024;
inline constexpr std::int32_t kReplySize = 1024 * 1024;
inline constexpr std::size_t kSegmentSize = kBufferOffset + kReplySize;
}  // namespace MessageLayout

/// The name of a shared-memory object of this process, removed with this object if it is still that
/// object's.
class COwnedName {
public:
    COwnedName(std::string&& name, int nDescriptor) noexcept;
    ~COwnedName();
    COwnedName(COwnedName const&) = delete;
    COwnedName& operator=(COwnedName const&) = delete;

    /// Takes another object's name in exchange for the own one, which nobody has afterwards. False
    /// when the platform cannot do that, or the other has lost its name.
    bool Take(COwnedName& other) noexcept;

    /// Empty once another object has it.
    std::string const& Text() const noexcept { return m_strName; }

private:
    std::string m_strName;
    int m_nDescriptor;
};

/// One shared-memory object of this process, private to the user (mode 0600), zero-filled, mapped
/// whole, and removed with this object.
class COwnedSegment {
public:
    /// Throws `CHostSegmentError` when the object exists already or cannot be made.
    COwnedSegment(std::string name, std::size_t nSize);
    COwnedSegment(COwnedSegment const&) = delete;
    COwnedSegment& operator=(COwnedSegment const&) = delete;

    unsigned char* Bytes() const noexcept {
        return static_cast<unsigned char*>(m_region.get_address());
    }
    int Descriptor() const { return m_object.get_mapping_handle().handle; }

    /// Takes another segment's name, under which newcomers find this one from now on. The other
    /// stays mapped wherever it is. False when the platform cannot do that.
    bool TakeNameOf(COwnedSegment& other) noexcept { return m_name.Take(other.m_name); }

private:
    boost::interprocess::shared_memory_object m_object;
    COwnedName m_name;
    boost::interprocess::mapped_region m_region;
};

/// The right to be the user's one host, held as long as this object lives.
class CHostLock {
public:
    /// Throws `CHostSegmentError` when another host has it.
    CHostLock();

private:
    CNameLock m_lock;
};

/// The directory segment of this process. What a dead host left behind is taken over, whatever its
/// heartbeat says; a live host of another kind, which does not know the lock, is refused.
class CHostDirectory {
public:
    /// To be made with the lock held. Throws `CHostSegmentError` when a live host has the
    /// directory.
    CHostDirectory();

    DirectoryRecord* Record() const noexcept {
        return reinterpret_cast<DirectoryRecord*>(m_segment.Bytes());
    }

private:
    COwnedSegment m_segment;
};

/// The name that a new message segment gets.
enum class SegmentName {
    OfTheHost,  ///< where clients look; one that is there already is replaced
    Spare       ///< a name beside it, to be exchanged for the host's
};

/// A message segment of this process, laid out and empty. The locking inside is the link's word
/// protocol; this class only owns the memory.
class CHostMessageSegment {
public:
    /// A segment of host `nId`, whose directory this process has.
    CHostMessageSegment(int nId, SegmentName name);

    bool TakeNameOf(CHostMessageSegment& other) noexcept {
        return m_segment.TakeNameOf(other.m_segment);
    }

    MessageRecord* Record() const noexcept {
        return reinterpret_cast<MessageRecord*>(m_segment.Bytes());
    }
    /// The request and reply buffer, `MessageLayout::kReplySize` bytes.
    char* Buffer() const noexcept;
    /// The error text buffer, `MessageLayout::kErrorSize` bytes.
    char* ErrorText() const noexcept;
    int Descriptor() const { return m_segment.Descriptor(); }

private:
    COwnedSegment m_segment;
};
