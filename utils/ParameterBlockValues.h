#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/// \file
/// Named, typed values that measure, write and read themselves in a compact binary form.
///
/// Bytes are little-endian and unaligned. A parameter's own bytes are its name, then its value; the
/// tag that tells its type is written by the block that holds it. A name stands inline (32-bit
/// length, then the bytes) or as a token, an index into a table of names: one byte up to 254, else
/// the byte 0xFF and 24 bits.
///
/// Reading never looks past the given size: what is not there leaves its part of the value as it
/// was. Text made from numbers is the same in every locale.
///
/// A parameter belongs to one thread at a time; different threads may use different parameters.

/// What a file is known by while the process runs.
namespace KEL {

/// Two words that together identify a file; all ones in both means "none".
struct FileIdType {
    std::uint64_t first = ~std::uint64_t{0};   ///< The first word.
    std::uint64_t second = ~std::uint64_t{0};  ///< The second word.

    /// Whether both words are the same.
    friend bool operator==(FileIdType const&, FileIdType const&) = default;
};

}  // namespace KEL

/// What the tag of a parameter says: the class of the parameter.
enum ParameterTag : std::uint32_t {
    tagString = 1,        ///< CStringParameter
    tagInt = 2,           ///< CIntParameter
    tagDouble = 3,        ///< CDoubleParameter
    tagUInt64 = 4,        ///< CUInt64Parameter
    tagFileId = 5,        ///< CFileIdTypeParameter
    tagBlock = 6,         ///< CParameterBlock
    tagBool = 7,          ///< CBoolParameter
    tagFloat = 8,         ///< CFloatParameter
    tagSInt64 = 9,        ///< CSInt64Parameter
    tagBinaryBlock = 10,  ///< CBinaryBlockParameter
};

/// The token of a parameter whose name is written inline.
inline constexpr std::uint32_t noToken = 0xFFFFFFFF;

/// A named value of one of ten types.
class CParameter {
public:
    const std::uint32_t type;       ///< A ParameterTag.
    std::uint32_t token = noToken;  ///< Index of the name in a name table, or noToken.
    std::string name;               ///< May be empty.

    /// Parameters are deleted through this class.
    virtual ~CParameter() = default;

    /// The value as text.
    virtual std::string GetString() const = 0;

    /// The number of bytes that Save writes.
    virtual unsigned long GetSize() const = 0;

    /// Writes name and value to `out`, which has room for GetSize() bytes; `available` is not
    /// consulted. Returns the number of bytes written.
    virtual unsigned long Save(unsigned long available, unsigned char* out) const = 0;

    /// Reads name and value from at most `size` bytes at `data` and returns the number of bytes
    /// consumed. `names` is the table that tokens point into, or null when names stand inline.
    virtual unsigned long Load(std::vector<std::string> const* names, unsigned long size,
                               unsigned char const* data) = 0;

    /// Takes over the name and the value of a parameter of the same class, not its token. Throws
    /// std::bad_cast, and changes nothing, when the classes differ.
    virtual CParameter& operator=(CParameter& source) = 0;

    /// Whether type, name and value are equal. Tokens play no part.
    virtual bool operator==(CParameter const& other) const = 0;

    /// The bytes that SaveName writes: 1 or 4 for a token, 4 and the name's own for none.
    unsigned long GetSizeOfName() const;

    /// Writes the token, or the name when there is none. Returns the number of bytes written.
    unsigned long SaveName(unsigned char* out) const;

    /// Reads the name from at most `size` bytes and returns the number of bytes consumed.
    ///
    /// With a table the token is read and kept; a token beyond the table gives an empty name.
    /// Without one, a length of zero or beyond `size` consumes the length and leaves the name.
    unsigned int LoadName(std::vector<std::string> const* names, unsigned int size,
                          unsigned char const* data);

    /// Counts one more use of this name. An empty name is not counted.
    void AddNameToMap(std::map<std::string, int>& counts) const;

    /// Sets the token to the one given for this name, or to 0 when there is none.
    void UpdateTokenFromMap(std::map<std::string, int> const& tokens);

protected:
    /// A parameter with a name and no token.
    CParameter(std::uint32_t parameterType, std::string_view parameterName)
        : type(parameterType), name(parameterName) {}

    /// Copies type and name; a copy has no token.
    CParameter(CParameter const& source) : type(source.type), name(source.name) {}

    /// Copies the name; the token stays.
    CParameter& operator=(CParameter const& source) {
        name = source.name;
        return *this;
    }
};

/// Compares two parameters of any classes. Being an exact match for them, it keeps `a == b` clear
/// where the reversed form `b == a` of the member would be as good a choice.
template <typename First, typename Second>
requires std::is_base_of_v<CParameter, First> && std::is_base_of_v<CParameter, Second>
bool operator==(First const& first, Second const& second) {
    return static_cast<CParameter const&>(first).operator==(static_cast<CParameter const&>(second));
}

/// A parameter whose value has bytes in an image. Copies take over name and value, not the token.
template <typename Value, std::uint32_t Tag>
class CValueParameter : public CParameter {
public:
    static constexpr std::uint32_t tag = Tag;  ///< What `type` is in this class.

    /// What a value is made from: a string from a text.
    using Argument = std::conditional_t<std::is_same_v<Value, std::string>, const char*, Value>;

    Value value{};  ///< The value; for anybody to read and change.

    /// The default value under an empty name.
    CValueParameter() : CParameter(Tag, {}) {}

    /// A null name or text is an empty one.
    CValueParameter(const char* parameterName, Argument parameterValue);

    /// Copies a parameter of the same class; another one stops the process.
    explicit CValueParameter(CParameter const* source);

    /// A string itself, a number in decimal, 1 or 0 for a bool, "FileID" for a file identity.
    std::string GetString() const override;

    unsigned long GetSize() const override;
    unsigned long Save(unsigned long available, unsigned char* out) const override;

    /// Fewer bytes than the value's own leave it as it was. A string is emptied first, and stays
    /// empty when its length exceeds what is left.
    unsigned long Load(std::vector<std::string> const* names, unsigned long size,
                       unsigned char const* data) override;

    CParameter& operator=(CParameter& source) override;
    bool operator==(CParameter const& other) const override;
};

/// A string of any bytes; 32-bit length, then the bytes.
using CStringParameter = CValueParameter<std::string, tagString>;

/// A signed 32-bit number; 4 bytes.
using CIntParameter = CValueParameter<std::int32_t, tagInt>;

/// A double; 8 bytes. Compares as a number: a NaN equals nothing, 0.0 equals -0.0.
using CDoubleParameter = CValueParameter<double, tagDouble>;

/// An unsigned 64-bit number; 8 bytes.
using CUInt64Parameter = CValueParameter<unsigned long long, tagUInt64>;

/// The identity of a file; 16 bytes when read. Save stops the process: identities hold only while
/// the process runs.
using CFileIdTypeParameter = CValueParameter<KEL::FileIdType, tagFileId>;

/// True or false; one byte, 1 or 0. Any other byte reads as true.
using CBoolParameter = CValueParameter<bool, tagBool>;

/// A float; 4 bytes. Compares as a number.
using CFloatParameter = CValueParameter<float, tagFloat>;

/// A signed 64-bit number; 8 bytes.
using CSInt64Parameter = CValueParameter<long long, tagSInt64>;

extern template class CValueParameter<std::string, tagString>;
extern template class CValueParameter<std::int32_t, tagInt>;
extern template class CValueParameter<double, tagDouble>;
extern template class CValueParameter<unsigned long long, tagUInt64>;
extern template class CValueParameter<KEL::FileIdType, tagFileId>;
extern template class CValueParameter<bool, tagBool>;
extern template class CValueParameter<float, tagFloat>;
extern template class CValueParameter<long long, tagSInt64>;

/// A payload of the caller's own kind, shared by the parameters that hold it and gone with the
/// last.
///
/// The count is a plain number: all holders belong to one thread.
class CBinaryBlock {
public:
    void* data;                      ///< Owned.
    std::int32_t m_nReferenceCount;  ///< 0 when made.
    void (*freeFunction)(void*);     ///< Releases the payload; may be null. Must not throw.
    void* (*copyFunction)(void*);    ///< Returns a new copy of the payload; may be null.

    /// Takes over a payload, which may be null, with nobody holding the block yet.
    CBinaryBlock(void* payload, void (*free)(void*), void* (*copy)(void*));
    CBinaryBlock(CBinaryBlock const&) = delete;
    CBinaryBlock& operator=(CBinaryBlock const&) = delete;

    /// Releases the payload.
    ~CBinaryBlock();

    /// A new block with a copy of the payload, owned by the caller and not yet counted; null when
    /// there is no payload or no way to copy it.
    CBinaryBlock* Copy() const;

    /// Counts one more holder.
    void AddRef();

    /// Destroys the block when this was the last holder. Stops the process when there was none.
    void Release();
};

/// A share in a binary block. It exists in memory only: GetSize, Save and Load stop the process.
///
/// Two of them are never equal, not even one with itself.
class CBinaryBlockParameter : public CParameter {
public:
    static constexpr std::uint32_t tag = tagBinaryBlock;  ///< What `type` is in this class.

    CBinaryBlock* block = nullptr;  ///< Held; may be null.

    /// No block and an empty name.
    CBinaryBlockParameter();

    /// Becomes one more holder of `sharedBlock`; a null one stops the process.
    CBinaryBlockParameter(const char* parameterName, CBinaryBlock* sharedBlock);

    /// Shares the block that `source`, a parameter of the same class, holds (which may be none).
    explicit CBinaryBlockParameter(CParameter const* source);

    /// Shares the source's block under the same name.
    CBinaryBlockParameter(CBinaryBlockParameter const& source);

    /// Assigns as below.
    CBinaryBlockParameter& operator=(CBinaryBlockParameter const& source);

    /// Gives up the share.
    ~CBinaryBlockParameter() override;

    std::string GetString() const override;
    unsigned long GetSize() const override;
    unsigned long Save(unsigned long available, unsigned char* out) const override;
    unsigned long Load(std::vector<std::string> const* names, unsigned long size,
                       unsigned char const* data) override;

    /// Destroys the block held, however many share it, and then holds a copy of the source's block
    /// that nobody counts: never assign over a shared block. Destroying a parameter while its block
    /// is not counted stops the process.
    CParameter& operator=(CParameter& source) override;
    bool operator==(CParameter const& other) const override;
};
