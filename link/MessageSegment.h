#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "link/SharedSegments.h"

/// The client's view of a mapped message segment, with every place it may touch checked against
/// the segment's size once. Does not own the memory.
///
/// The host may change any byte at any time: nothing that was read before a check is read again.
class CMessageSegment {
public:
    /// Views `nSize` bytes at `pBytes`. Ask `IsUsable` before anything else.
    CMessageSegment(unsigned char* pBytes, std::size_t nSize) noexcept;

    /// True when the header is there and the capacity and both offsets lie behind it and inside.
    bool IsUsable() const noexcept { return m_pRequest != nullptr; }

    MessageRecord* Record() const noexcept { return m_pRecord; }
    bool IsClosed() const noexcept;
    bool IsPending() const noexcept;
    void SetPending() noexcept;

    /// Copies a request up to its first NUL, cut at capacity - 1 bytes, and fills the rest of the
    /// capacity with NULs.
    void WriteRequest(std::string const& request) noexcept;
    /// The text in the buffer, ending at its NUL or at the end of the segment.
    std::string ReadReply() const;
    /// The error text, ending likewise.
    std::string ReadError() const;

private:
    std::string_view TextAt(const unsigned char* pStart) const noexcept;

    MessageRecord* m_pRecord = nullptr;
    unsigned char* m_pRequest = nullptr;
    unsigned char* m_pError = nullptr;
    unsigned char* m_pEnd = nullptr;
    std::size_t m_nCapacity = 0;
};
