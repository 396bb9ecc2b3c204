#pragma once

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>

/// Numbers as little-endian bytes at any address, the form of every binary image of the system.

/// Writes `value` to the `sizeof(Number)` bytes at `out`.
template <typename Number>
inline void StoreLittleEndian(Number value, unsigned char* out) {
    static_assert(std::is_arithmetic_v<Number>);
    std::memcpy(out, &value, sizeof value);
    if constexpr (std::endian::native == std::endian::big) std::reverse(out, out + sizeof value);
}

/// Reads a number from the `sizeof(Number)` bytes at `data`.
template <typename Number>
inline Number LoadLittleEndian(unsigned char const* data) {
    static_assert(std::is_arithmetic_v<Number>);
    unsigned char bytes[sizeof(Number)];
    std::memcpy(bytes, data, sizeof bytes);
    if constexpr (std::endian::native == std::endian::big)
        std::reverse(bytes, bytes + sizeof bytes);
    return std::bit_cast<Number>(bytes);
}
