#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/Assertion.h"
#include "utils/LittleEndian.h"
#include "utils/ParameterBlock.h"

/// What a null text of a caller stands for.
inline std::string_view OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

/// Other values are themselves.
template <typename Value>
Value OrEmpty(Value value) {
    return value;
}

/// The source of a copy, which has to be of the class that is copied.
template <typename Class>
Class const& SameClass(CParameter const* source) {
    TAVARIN_REQUIRE(source != nullptr);
    TAVARIN_REQUIRE(source->type == Class::tag);
    return static_cast<Class const&>(*source);
}

/// How numbers, texts and tokens stand in an image. What saves returns the place behind it, what
/// loads the number of bytes consumed; a value that is cut off stays as it was.
namespace codec {

inline constexpr std::size_t tagSize = 4;
inline constexpr std::size_t countSize = 4;
inline constexpr std::size_t lengthSize = 4;
inline constexpr std::size_t longTokenSize = 4;
inline constexpr std::uint32_t largestShortToken = 254;
inline constexpr std::uint32_t largestToken = 0xFFFFFF;
inline constexpr unsigned char longTokenMark = 0xFF;

/// A token of one byte may stand for a long name, so what the names of one body unfold to is
/// bounded. No real session comes near; who saves and who loads keep to the same number.
inline constexpr std::uint64_t mostUnfoldedNames = std::uint64_t{1} << 30;

inline std::size_t TokenSize(std::uint32_t token) {
    return token <= largestShortToken ? 1 : longTokenSize;
}

inline unsigned char* SaveToken(std::uint32_t token, unsigned char* out) {
    if (token <= largestShortToken) {
        *out = static_cast<unsigned char>(token);
        return out + 1;
    }
    StoreLittleEndian<std::uint32_t>(token << 8 | longTokenMark, out);
    return out + longTokenSize;
}

inline std::size_t ValueSize(std::string const& value) {
    return lengthSize + value.size();
}

inline unsigned char* SaveValue(std::string const& value, unsigned char* out) {
    StoreLittleEndian(static_cast<std::uint32_t>(value.size()), out);
    return std::copy(value.begin(), value.end(), out + lengthSize);
}

/// A text is emptied first, and stays empty when its length is cut off or lies.
inline std::size_t LoadValue(std::string& value, std::size_t size, unsigned char const* data) {
    value.clear();
    if (size < lengthSize) return 0;
    const auto length = LoadLittleEndian<std::uint32_t>(data);
    if (length > size - lengthSize) return lengthSize;
    value.assign(reinterpret_cast<const char*>(data) + lengthSize, length);
    return lengthSize + length;
}

/// Identities hold only while the process runs.
inline unsigned char* SaveValue(KEL::FileIdType const&, unsigned char* out) {
    TAVARIN_REQUIRE(false);
    return out;
}

inline std::size_t LoadValue(KEL::FileIdType& value, std::size_t size, unsigned char const* data) {
    if (size < sizeof value) return 0;
    value = {LoadLittleEndian<std::uint64_t>(data), LoadLittleEndian<std::uint64_t>(data + 8)};
    return sizeof value;
}

inline std::size_t ValueSize(KEL::FileIdType const&) {
    return 16;
}

/// A number takes its own bytes, a bool one.
template <typename Number>
inline std::size_t ValueSize(Number const&) {
    return sizeof(Number);
}

template <typename Number>
inline unsigned char* SaveValue(Number value, unsigned char* out) {
    StoreLittleEndian(value, out);
    return out + sizeof value;
}

template <typename Number>
inline std::size_t LoadValue(Number& value, std::size_t size, unsigned char const* data) {
    if (size < sizeof value) return 0;
    if constexpr (std::is_same_v<Number, bool>)
        value = *data != 0;
    else
        value = LoadLittleEndian<Number>(data);
    return sizeof value;
}

/// What the bytes of a name say: how many they are, and the token and the text unless they are
/// missing or lie.
struct CNameBytes {
    std::size_t nConsumed = 0;
    bool fGiven = false;
    std::uint32_t nToken = noToken;
    std::string_view text;
};

/// Reads a name; `names` is the table that tokens point into, or null when names stand inline.
template <typename Names>
inline CNameBytes ReadName(Names const* names, std::uint32_t tokenBefore, std::size_t size,
                           unsigned char const* data) {
    CNameBytes name;
    name.nToken = tokenBefore;
    if (names == nullptr) {
        if (size < lengthSize) return name;
        const auto length = LoadLittleEndian<std::uint32_t>(data);
        name.nConsumed = lengthSize;
        if (length == 0 || length > size - lengthSize) return name;
        name.nConsumed += length;
        name.text = {reinterpret_cast<const char*>(data) + lengthSize, length};
    } else {
        if (size == 0) return name;
        if (data[0] != longTokenMark) {
            name.nToken = data[0];
            name.nConsumed = 1;
        } else if (size >= longTokenSize) {
            name.nToken = LoadLittleEndian<std::uint32_t>(data) >> 8;
            name.nConsumed = longTokenSize;
        }
        if (name.nToken < names->size()) name.text = (*names)[name.nToken];
    }
    name.fGiven = true;
    return name;
}

/// Reads the name of a parameter that may have one already.
template <typename Names>
inline std::size_t LoadName(CParameter& parameter, Names const* names, std::size_t size,
                            unsigned char const* data) {
    const CNameBytes name = ReadName(names, parameter.token, size, data);
    parameter.token = name.nToken;
    if (name.fGiven) parameter.name = name.text;
    return name.nConsumed;
}

}  // namespace codec

/// Stands for a class where a function is called for one of several.
template <typename Class>
struct CClass {
    using type = Class;
};

/// Calls `visit` with the class of a tag, if it has a value in images. False for the others.
template <typename Visit>
inline bool WithValueClass(std::uint32_t tag, Visit visit) {
    const auto select = [&](auto... classes) {
        return ((tag == decltype(classes)::type::tag && visit(classes)) || ...);
    };
    return select(CClass<CStringParameter>(), CClass<CIntParameter>(), CClass<CDoubleParameter>(),
                  CClass<CUInt64Parameter>(), CClass<CFileIdTypeParameter>(),
                  CClass<CBoolParameter>(), CClass<CFloatParameter>(), CClass<CSInt64Parameter>());
}
