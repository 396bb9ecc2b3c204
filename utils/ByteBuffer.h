#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <span>

/// Bytes that are written from the front and never read back: growing leaves the new ones unset.
class CByteBuffer {
public:
    CByteBuffer() = default;
    CByteBuffer(CByteBuffer const&) = delete;
    CByteBuffer& operator=(CByteBuffer const&) = delete;
    ~CByteBuffer() { std::free(m_pBegin); }

    /// Makes room for `count` bytes from `at`, the place behind the last byte written (or null for
    /// none), and returns that place, which may have moved.
    unsigned char* Room(unsigned char* at, std::size_t count) {
        if (at != nullptr && static_cast<std::size_t>(m_pEnd - at) >= count) return at;
        return Grow(at != nullptr ? static_cast<std::size_t>(at - m_pBegin) : 0, count);
    }

    /// Where the byte number `offset` is for now.
    unsigned char* At(std::size_t offset) { return m_pBegin + offset; }

    std::size_t OffsetOf(unsigned char const* at) const {
        return static_cast<std::size_t>(at - m_pBegin);
    }

    void Finish(unsigned char const* end) { m_nSize = OffsetOf(end); }

    /// The bytes up to where Finish was told.
    std::span<unsigned char const> Bytes() const { return {m_pBegin, m_nSize}; }

private:
    unsigned char* Grow(std::size_t used, std::size_t count);

    unsigned char* m_pBegin = nullptr;
    unsigned char* m_pEnd = nullptr;
    std::size_t m_nSize = 0;
};
