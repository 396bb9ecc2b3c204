#pragma once

#include <algorithm>
#include <cstdint>

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

/// A name's bytes: how many they are, and what they say unless they are missing or lie.
struct CNameBytes {
    std::size_t nConsumed = 0;
    bool fGiven = false;
    CLoadedName said;
};

inline CNameBytes ReadTokenName(std::vector<std::string> const& names, std::uint32_t tokenBefore,
                                std::size_t size, unsigned char const* data) {
    CNameBytes name;
    name.said.token = tokenBefore;
    if (size == 0) return name;
    name.fGiven = true;
    if (data[0] != longTokenMark) {
        name.said.token = data[0];
        name.nConsumed = 1;
    } else if (size >= longTokenSize) {
        name.said.token = LoadLittleEndian<std::uint32_t>(data) >> 8;
        name.nConsumed = longTokenSize;
    }
    if (name.said.token < names.size()) name.said.text = names[name.said.token];
    return name;
}

inline CNameBytes ReadInlineName(std::uint32_t tokenBefore, std::size_t size,
                                 unsigned char const* data) {
    CNameBytes name;
    name.said.token = tokenBefore;
    if (size < lengthSize) return name;
    name.nConsumed = lengthSize;
    const auto length = LoadLittleEndian<std::uint32_t>(data);
    if (length == 0 || length > size - lengthSize) return name;
    name.nConsumed += length;
    name.fGiven = true;
    name.said.text = {reinterpret_cast<const char*>(data) + lengthSize, length};
    return name;
}

inline CNameBytes ReadName(std::vector<std::string> const* names, std::uint32_t tokenBefore,
                           std::size_t size, unsigned char const* data) {
    return names != nullptr ? ReadTokenName(*names, tokenBefore, size, data)
                            : ReadInlineName(tokenBefore, size, data);
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

/// Calls `visit` with a parameter as the class that its type tells; false for a block, for a binary
/// block and for types of no image. Spares passes over whole trees two virtual calls per parameter.
template <typename Visit>
inline bool VisitValue(CParameter const& parameter, Visit visit) {
    switch (parameter.type) {
        case tagString:
            visit(static_cast<CStringParameter const&>(parameter));
            return true;
        case tagInt:
            visit(static_cast<CIntParameter const&>(parameter));
            return true;
        case tagDouble:
            visit(static_cast<CDoubleParameter const&>(parameter));
            return true;
        case tagUInt64:
            visit(static_cast<CUInt64Parameter const&>(parameter));
            return true;
        case tagFileId:
            visit(static_cast<CFileIdTypeParameter const&>(parameter));
            return true;
        case tagBool:
            visit(static_cast<CBoolParameter const&>(parameter));
            return true;
        case tagFloat:
            visit(static_cast<CFloatParameter const&>(parameter));
            return true;
        case tagSInt64:
            visit(static_cast<CSInt64Parameter const&>(parameter));
            return true;
        default:
            return false;
    }
}

/// Reads a value and returns the number of bytes consumed; what is cut off stays as it was.
template <typename Value, std::uint32_t Tag>
std::size_t LoadValue(CValueParameter<Value, Tag>& parameter, std::size_t size,
                      unsigned char const* data) {
    if (size < FixedValue<Value>::size) return 0;
    parameter.value = FixedValue<Value>::Load(data);
    return FixedValue<Value>::size;
}

/// A text is emptied first, and stays empty when its length is cut off or lies.
inline std::size_t LoadValue(CStringParameter& parameter, std::size_t size,
                             unsigned char const* data) {
    parameter.value.clear();
    if (size < lengthSize) return 0;
    const auto length = LoadLittleEndian<std::uint32_t>(data);
    if (length > size - lengthSize) return lengthSize;
    parameter.value.assign(reinterpret_cast<const char*>(data) + lengthSize, length);
    return lengthSize + length;
}

/// Reads a name into a parameter that stands already.
inline std::size_t LoadName(CParameter& parameter, std::vector<std::string> const* names,
                            std::size_t size, unsigned char const* data) {
    const CNameBytes bytes = ReadName(names, parameter.token, size, data);
    parameter.token = bytes.said.token;
    if (bytes.fGiven) parameter.name = bytes.said.text;
    return bytes.nConsumed;
}

/// Reads name and value into a parameter that stands already.
template <typename Parameter>
std::size_t Load(Parameter& parameter, std::vector<std::string> const* names, std::size_t size,
                 unsigned char const* data) {
    const std::size_t nameBytes = LoadName(parameter, names, size, data);
    return nameBytes + LoadValue(parameter, size - nameBytes, data + nameBytes);
}

}  // namespace codec
