#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "utils/ParameterBlockValues.h"
#include "utils/ParameterList.h"

class CFileName;

/// Watches a load and may stop it.
class CProgress {
public:
    /// Observers may be deleted through this class.
    virtual ~CProgress() = default;

    /// Called on the loading thread after each nested block. `done` is the total that the loading
    /// block was given less the bytes still to be read. True stops the load.
    virtual bool Progress(unsigned long done) = 0;
};

/// What loading and saving whole sessions answers.
enum SessionStatus : int {
    sessionDone = 0,            ///< Also for empty input, which loads nothing.
    sessionBodyFailed = 2033,   ///< The body could not be loaded, or the observer stopped it.
    sessionFileFailed = 2035,   ///< The file could not be used, or there was nothing to save.
    sessionHeaderFailed = 7534  ///< Not an accepted format, or a header that contradicts itself.
};

/// An ordered list of parameters, itself a parameter, so that blocks nest.
///
/// The block owns its parameters. Names may repeat; a search takes the first match. Two binary
/// forms exist. The bare image holds the block's parameters with inline names. The session image
/// begins with the caller's format identifier and a table of all names, so that each name in the
/// body is a token of one byte (or four, from the 255th name on).
///
/// Images are taken as untrusted: loading never reads past the given size, needs no recursion
/// however deep blocks nest, and takes memory in proportion to the image. What the tokens of one
/// body unfold to is bounded by a gibibyte of names, and saving refuses what would exceed it.
///
/// When memory runs out, what answers a status or a size answers its failure; everything else
/// throws std::bad_alloc and leaves its block as it was.
///
/// One tree belongs to one thread at a time.
class CParameterBlock : public CParameter {
public:
    static constexpr std::uint32_t tag = tagBlock;  ///< What `type` is in this class.

    /// A place in the list of parameters, given by FindFirstParameter.
    using position = std::size_t;

    /// In order of insertion or loading, owned. Loading leaves a null entry for each unknown type;
    /// everything else here passes over null entries.
    CParameterList parameters;

    CProgress* progress = nullptr;    ///< Not owned; may be null.
    unsigned long progressTotal = 0;  ///< What progress is reported against; 0 reports nothing.

    /// No parameters and an empty name.
    CParameterBlock();

    /// An empty block under an empty name, watched by `observer` while it loads.
    CParameterBlock(CProgress* observer, unsigned long total);

    /// A deep copy of a block with its name and token but no progress. Another class of parameter
    /// stops the process.
    explicit CParameterBlock(CParameter const* source);

    /// A deep copy of the parameters of `source` under another name, with no token and no progress.
    CParameterBlock(const char* blockName, CParameterBlock const* source);

    /// The same deep copy as from a pointer.
    CParameterBlock(CParameterBlock const& source);

    /// Destroys all parameters, however deep they nest.
    ~CParameterBlock() override;

    /// Destroys all parameters.
    void Clear();

    /// \name Adding
    /// Each appends a new parameter; nothing is replaced. A null name is an empty one.
    /// @{

    /// Appends a value. A null text is an empty one.
    void AddParameter(const char* parameterName, const char* value);
    void AddParameter(const char* parameterName, int value);
    void AddParameter(const char* parameterName, double value);
    void AddParameter(const char* parameterName, unsigned long long value);
    void AddParameter(const char* parameterName, long long value);
    void AddParameter(const char* parameterName, KEL::FileIdType value);
    void AddParameter(const char* parameterName, bool value);
    void AddParameter(const char* parameterName, float value);

    /// Appends a deep copy of `block`; which may be this block or one inside it.
    void AddParameter(const char* parameterName, CParameterBlock const* block);

    /// Appends one more holder of `block`; a null one stops the process.
    void AddParameter(const char* parameterName, CBinaryBlock* block);
    /// @}

    /// \name Finding
    /// The first parameter with this name and the type of `out`. When there is none, the answer is
    /// false and `*out` becomes the fallback (or "none": null, or a file identity of all ones).
    /// @{

    /// A value. A null text to fall back on leaves `*out` as it is.
    bool FindParameter(const char* parameterName, std::string* out, const char* fallback) const;
    bool FindParameter(const char* parameterName, int* out, int fallback) const;
    bool FindParameter(const char* parameterName, double* out, double fallback) const;
    bool FindParameter(const char* parameterName, unsigned long long* out,
                       unsigned long long fallback) const;
    bool FindParameter(const char* parameterName, long long* out, long long fallback) const;
    bool FindParameter(const char* parameterName, bool* out, bool fallback) const;
    bool FindParameter(const char* parameterName, float* out, float fallback) const;
    bool FindParameter(const char* parameterName, KEL::FileIdType* out) const;

    /// A binary block. It stays the parameter's: its count does not change.
    bool FindParameter(const char* parameterName, CBinaryBlock** out) const;

    /// A nested block. It stays owned by this one and is valid until the list changes.
    bool FindParameter(const char* parameterName, CParameterBlock** out) const;

    /// Whether there is a CBoolParameter of that name.
    bool CheckBoolParameter(const char* parameterName) const;

    /// Whether there is a CIntParameter of that name.
    bool CheckIntParameter(const char* parameterName) const;

    /// The first nested block of that name, and its place. False leaves both as they are.
    bool FindFirstParameter(const char* blockName, CParameterBlock** out, position* where) const;

    /// The next such block after `*where`, which a successful call gave for this unchanged block.
    bool FindNextParameter(const char* blockName, CParameterBlock** out, position* where) const;
    /// @}

    /// \name Copying and comparing
    /// @{

    /// Replaces the parameters by copies of those of `source`, which may be this block or one
    /// inside it. Values are copied without tokens, binary blocks are shared, nested blocks are
    /// copied whole with names and tokens. Parameters of unknown types are left out.
    void CopyParameters(CParameterBlock const* source);

    /// CopyParameters: this block keeps its own name and token.
    CParameterBlock& operator=(CParameterBlock const& source);

    /// Takes the name of the source too. Throws std::bad_cast when it is not a block.
    CParameter& operator=(CParameter& source) override;

    /// Whether the other is a block of the same name with equal parameters in the same order. A
    /// block that holds a binary block equals nothing.
    bool operator==(CParameter const& other) const override;
    /// @}

    /// \name Images
    /// A tree that holds a file identity cannot be saved, one that holds a binary block cannot even
    /// be measured: either stops the process.
    /// @{
    std::string GetString() const override;
    unsigned long GetSize() const override;
    unsigned long Save(unsigned long available, unsigned char* out) const override;

    /// Reads a name and LoadBlock's bytes. All bits set when LoadBlock fails.
    unsigned long Load(std::vector<std::string> const* names, unsigned long size,
                       unsigned char const* data) override;

    /// The bare image: the parameters without this block's name, each name as its token stands
    /// (inline while none was given). The caller frees it with `delete[]`; `*size` is its length.
    unsigned char* CreateBlock(unsigned long* size) const;

    /// Replaces the parameters by those of an image and returns the bytes consumed, or -1.
    ///
    /// It fails when the image ends before an entry's type, when an entry claims to be a binary
    /// block, when names unfold beyond the bound above, when memory runs out and when the observer
    /// says so; the parameters read until then stay. Less than the value of an entry leaves that
    /// entry's default. A parameter is appended when it was read whole: the observer finds nothing
    /// else here, and may change the list.
    long LoadBlock(std::vector<std::string> const* names, unsigned long size, void const* data);
    /// @}

    /// \name Session images
    /// A null identifier is an empty one, a null list an empty one.
    /// @{

    /// Counts the names of all parameters, nested ones included, but not this block's own.
    void TokenizeNames(std::map<std::string, int>& counts) const;

    /// Gives every parameter, nested ones included, its token; not this block itself.
    void SetTokens(std::map<std::string, int> const& tokens);

    /// The number of bytes that SaveHeader writes.
    unsigned long GetSizeOfHeader(const char* id,
                                  std::vector<std::pair<std::string, int>> const* names) const;

    /// Writes the header, GetSizeOfHeader() bytes, and returns their number.
    unsigned long SaveHeader(const char* id, unsigned long available,
                             std::vector<std::pair<std::string, int>> const* names,
                             unsigned char* out) const;

    /// Reads a header that begins with one of `ids`. `*names` becomes the name table with the empty
    /// name in front. Returns the header's length, or 0xFFFFFFFF when it is not acceptable.
    unsigned int LoadHeader(std::vector<const char*> const* ids, unsigned int size,
                            std::vector<std::string>* names, unsigned char const* data) const;

    /// Makes a session image of this tree in `data`, which becomes 32 zero bytes longer than the
    /// image, and returns the image's length.
    ///
    /// The most frequent names get the lowest tokens, equally frequent ones as the tree first uses
    /// them; the tokens stay on the tree. A name ends at its first zero byte. Parameters of derived
    /// classes save themselves by their own Save.
    ///
    /// Returns 0 and leaves everything as it was when no parameter has a name, when memory runs
    /// out, and when the image could not be loaded: with a type that is none of ParameterTag, with
    /// more than 2^24 - 1 names, or with names that unfold to more than the bound above. Returns 0
    /// and leaves `data` as it was when the image would exceed 4 GiB.
    unsigned long SaveBinarySessionToMemory(const char* id, CFMutableDataRef data);

    /// Replaces name and parameters by those of a session image. Returns a SessionStatus; nothing
    /// changes for a null or empty image or an unacceptable header.
    int LoadBinarySessionFromMemory(std::vector<const char*> const* ids, unsigned char const* data,
                                    unsigned int size);

    /// Writes the session image of this tree to a file and returns a SessionStatus.
    ///
    /// An existing file is emptied before it is written, and a disk that fills up goes unnoticed:
    /// to keep the old file until the new one is whole, save beside it, load that back, then move
    /// it.
    int SaveBinarySession(const char* id, CFileName const* file);

    /// Reads a session file. Returns a SessionStatus; an empty file is done with nothing loaded.
    int LoadBinarySession(std::vector<const char*> const* ids, CFileName const* file);
    /// @}
};

/// Orders name counts, the greater first.
bool IntCmp(std::pair<std::string, int> const& a, std::pair<std::string, int> const& b);
