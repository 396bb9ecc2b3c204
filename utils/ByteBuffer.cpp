#include "utils/ByteBuffer.h"

#include <algorithm>

unsigned char* CByteBuffer::Grow(std::size_t used, std::size_t count) {
    constexpr std::size_t smallestCapacity = 4096;
    const auto capacity = static_cast<std::size_t>(m_pEnd - m_pBegin);
    const std::size_t wanted = std::max({used + count, capacity * 2, smallestCapacity});
    auto* const moved = static_cast<unsigned char*>(std::realloc(m_pBegin, wanted));
    if (moved == nullptr) throw std::bad_alloc();
    m_pBegin = moved;
    m_pEnd = moved + wanted;
    return moved + used;
}
