#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "platform/Assertion.h"
#include "utils/LittleEndian.h"
#include "utils/ParameterBlock.h"

/// The bytes of parameters, shared by the parameters' own operations and by the passes over trees.
namespace codec {

inline constexpr std::uint32_t largestShortToken = 254;
inline constexpr unsigned char longTokenMark = 0xFF;
inline constexpr std::size_t longTokenSize = 4;
inline constexpr std::size_t lengthSize = 4;
inline constexpr std::size_t tagSize = 4;
inline constexpr std::size_t countSize = 4;

/// Sizes count in 32 bits; a larger one reads as the largest of these.
inline unsigned int Bounded(unsigned long size) {
    constexpr unsigned int largest = std::numeric_limits<unsigned int>::max();
    return size < largest ? static_cast<unsigned int>(size) : largest;
}

inline std::size_t TokenSize(std::uint32_t token) {
    return token <= largestShortToken ? 1 : longTokenSize;
}

inline unsigned char* StoreToken(std::uint32_t token, unsigned char* out) {
    if (token <= largestShortToken) {
        *out = static_cast<unsigned char>(token);
        return out + 1;
    }
    StoreLittleEndian<std::uint32_t>(token << 8 | longTokenMark, out);
    return out + longTokenSize;
}

inline unsigned char* StoreText(std::string const& text, unsigned char* out) {
    StoreLittleEndian(static_cast<std::uint32_t>(text.size()), out);
    std::memcpy(out + lengthSize, text.data(), text.size());
    return out + lengthSize + text.size();
}

inline unsigned char* StoreName(CParameter const& parameter, unsigned char* out) {
    return parameter.token == noToken ? StoreText(parameter.name, out)
                                      : StoreToken(parameter.token, out);
}

inline std::size_t NameSize(CParameter const& parameter) {
    return parameter.token == noToken ? lengthSize + parameter.name.size()
                                      : TokenSize(parameter.token);
}

inline unsigned int LoadTokenName(CParameter& parameter, std::vector<std::string> const& names,
                                  unsigned int size, unsigned char const* data) {
    if (size == 0) return 0;
    unsigned int consumed = 0;
    if (data[0] != longTokenMark) {
        parameter.token = data[0];
        consumed = 1;
    } else if (size >= longTokenSize) {
        parameter.token = LoadLittleEndian<std::uint32_t>(data) >> 8;
        consumed = longTokenSize;
    }
    if (parameter.token < names.size())
        parameter.name = names[parameter.token];
    else
        parameter.name.clear();
    return consumed;
}

inline unsigned int LoadInlineName(CParameter& parameter, unsigned int size,
                                   unsigned char const* data) {
    if (size < lengthSize) return 0;
    const auto length = LoadLittleEndian<std::uint32_t>(data);
    if (length == 0 || length > size - lengthSize) return lengthSize;
    parameter.name.assign(reinterpret_cast<const char*>(data) + lengthSize, length);
    return static_cast<unsigned int>(lengthSize) + length;
}

inline unsigned int LoadName(CParameter& parameter, std::vector<std::string> const* names,
                             unsigned int size, unsigned char const* data) {
    return names != nullptr ? LoadTokenName(parameter, *names, size, data)
                            : LoadInlineName(parameter, size, data);
}

/// The number of entries in a block's image: null entries of the list are not written.
inline std::uint32_t CountOf(CParameterBlock const& block) {
    const auto nulls = std::count(block.parameters.begin(), block.parameters.end(), nullptr);
    return static_cast<std::uint32_t>(block.parameters.size() - static_cast<std::size_t>(nulls));
}

/// The value bytes of the types that take a fixed number of them.
template <typename Value>
struct FixedValue {
    static constexpr std::size_t size = sizeof(Value);
    static void Store(Value value, unsigned char* out) { StoreLittleEndian(value, out); }
    static Value Load(unsigned char const* data) { return LoadLittleEndian<Value>(data); }
};

template <>
struct FixedValue<bool> {
    static constexpr std::size_t size = 1;
    static void Store(bool value, unsigned char* out) { *out = value ? 1 : 0; }
    static bool Load(unsigned char const* data) { return *data != 0; }
};

template <>
struct FixedValue<KEL::FileIdType> {
    static constexpr std::size_t size = 16;
    static void Store(KEL::FileIdType const&, unsigned char*) { TAVARIN_REQUIRE(false); }
    static KEL::FileIdType Load(unsigned char const* data) {
        return {LoadLittleEndian<std::uint64_t>(data), LoadLittleEndian<std::uint64_t>(data + 8)};
    }
};

template <typename Value, std::uint32_t Tag>
std::size_t ValueSize(CValueParameter<Value, Tag> const&) {
    return FixedValue<Value>::size;
}

inline std::size_t ValueSize(CStringParameter const& parameter) {
    return lengthSize + parameter.value.size();
}

template <typename Value, std::uint32_t Tag>
unsigned char* StoreValue(CValueParameter<Value, Tag> const& parameter, unsigned char* out) {
    FixedValue<Value>::Store(parameter.value, out);
    return out + FixedValue<Value>::size;
}

inline unsigned char* StoreValue(CStringParameter const& parameter, unsigned char* out) {
    return StoreText(parameter.value, out);
}

/// Reads name and value; returns the number of bytes consumed, which `size` is never short of.
template <typename Value, std::uint32_t Tag>
unsigned int Load(CValueParameter<Value, Tag>& parameter, std::vector<std::string> const* names,
                  unsigned int size, unsigned char const* data) {
    const unsigned int nameBytes = LoadName(parameter, names, size, data);
    if (size - nameBytes < FixedValue<Value>::size) return nameBytes;
    parameter.value = FixedValue<Value>::Load(data + nameBytes);
    return nameBytes + static_cast<unsigned int>(FixedValue<Value>::size);
}

inline unsigned int Load(CStringParameter& parameter, std::vector<std::string> const* names,
                         unsigned int size, unsigned char const* data) {
    unsigned int consumed = LoadName(parameter, names, size, data);
    parameter.value.clear();
    if (size - consumed < lengthSize) return consumed;
    const auto length = LoadLittleEndian<std::uint32_t>(data + consumed);
    consumed += lengthSize;
    if (length > size - consumed) return consumed;
    parameter.value.assign(reinterpret_cast<const char*>(data) + consumed, length);
    return consumed + length;
}

}  // namespace codec
