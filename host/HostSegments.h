#pragma once

#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

#include "link/SharedSegments.h"

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

/// One shared-memory object of this process, private to the user (mode 0600), zero-filled, mapped
/// whole, and removed with this object.
class COwnedSegment {
public:
    /// Throws `CHostSegmentError` when the object exists already or cannot be made.
    COwnedSegment(std::string name, std::size_t nSize);
    ~COwnedSegment();
    COwnedSegment(COwnedSegment const&) = delete;
    COwnedSegment& operator=(COwnedSegment const&) = delete;

    unsigned char* Bytes() const noexcept {
        return static_cast<unsigned char*>(m_region.get_address());
    }
    int Descriptor() const { return m_object.get_mapping_handle().handle; }

private:
    std::string m_strName;
    boost::interprocess::shared_memory_object m_object;
    boost::interprocess::mapped_region m_region;
};

/// The directory and the message segment of one host, from creation to removal.
///
/// A pair that a crashed host left behind is taken over; a live one is refused. The locking inside
/// is the link's word protocol; this class only owns the memory.
class CHostSegments {
public:
    /// Creates both segments for host `nId`. Throws `CHostSegmentError` when a live host has them.
    explicit CHostSegments(int nId);

    DirectoryRecord* Directory() const noexcept {
        return reinterpret_cast<DirectoryRecord*>(m_pDirectory->Bytes());
    }
    MessageRecord* Message() const noexcept {
        return reinterpret_cast<MessageRecord*>(m_pMessage->Bytes());
    }
    /// The request and reply buffer, `MessageLayout::kReplySize` bytes.
    char* Buffer() const noexcept;
    /// The error text buffer, `MessageLayout::kErrorSize` bytes.
    char* ErrorText() const noexcept;

private:
    std::unique_ptr<COwnedSegment> m_pDirectory;
    std::unique_ptr<COwnedSegment> m_pMessage;
};
