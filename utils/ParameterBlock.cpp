#include "utils/ParameterBlock.h"

#include <memory>
#include <string_view>

#include "platform/Assertion.h"
#include "utils/ParameterArena.h"
#include "utils/ParameterTree.h"

namespace {

void FreeText(std::string& text) {
    // An empty string's capacity is what a string holds within itself.
    if (text.capacity() > std::string().capacity()) std::string().swap(text);
}

// Like `delete`, but spares the parameters of a load or a copy, which come by the thousand, their
// destructors: those would do nothing but free texts and an empty list.
void DestroyParameter(CParameter* parameter, CReleaseBatch& batch) {
    if (parameter == nullptr) return;
    const CParameterOrigin origin = CParameterOrigin::Of(parameter);
    if (!origin.IsExact() || parameter->type == tagBinaryBlock) {
        delete parameter;
        return;
    }
    FreeText(parameter->name);
    if (parameter->type == tagString)
        FreeText(static_cast<CStringParameter*>(parameter)->value);
    else if (parameter->type == tagBlock)
        CParameterList().swap(static_cast<CParameterBlock*>(parameter)->parameters);
    batch.Release(origin.Chunk());
}

// Destroys a block's parameters from the end of its list on until one is a block that still holds
// some: answers that one, which stays the last, or null when the list is empty.
CParameterBlock* DestroyToNested(CParameterBlock& block, CReleaseBatch& batch) {
    CParameterList& list = block.parameters;
    CParameter** const first = list.data();
    CParameter** end = first + list.size();
    CParameterBlock* nested = nullptr;
    while (end != first) {
        if (end - first > prefetchDistance) PrefetchParameter(end[-1 - prefetchDistance]);
        nested = AsBlock(end[-1]);
        if (nested != nullptr && !nested->parameters.empty()) break;
        nested = nullptr;
        DestroyParameter(*--end, batch);
    }
    list.resize(static_cast<std::size_t>(end - first));
    return nested;
}

// Destroys the tree below `root` from the ends of its lists, without recursion and without asking
// for memory: on the way down a block's last entry keeps the way back up.
void DestroyParameters(CParameterBlock& root) noexcept {
    CReleaseBatch batch;
    CParameterBlock* current = &root;
    CParameterBlock* parent = nullptr;
    for (;;) {
        if (CParameterBlock* const nested = DestroyToNested(*current, batch)) {
            current->parameters.back() = parent;
            parent = current;
            current = nested;
            continue;
        }
        if (parent == nullptr) return;
        DestroyParameter(current, batch);
        current = parent;
        parent = static_cast<CParameterBlock*>(current->parameters.back());
        current->parameters.pop_back();
    }
}

template <typename Class>
CParameter* CopyAs(CParameterArena& arena, CParameter const& source) {
    return arena.Make<Class>(static_cast<Class const&>(source));
}

CParameter* CopyValue(CParameterArena& arena, CParameter const& source) {
    switch (source.type) {
        case tagString:
            return CopyAs<CStringParameter>(arena, source);
        case tagInt:
            return CopyAs<CIntParameter>(arena, source);
        case tagDouble:
            return CopyAs<CDoubleParameter>(arena, source);
        case tagUInt64:
            return CopyAs<CUInt64Parameter>(arena, source);
        case tagFileId:
            return CopyAs<CFileIdTypeParameter>(arena, source);
        case tagBool:
            return CopyAs<CBoolParameter>(arena, source);
        case tagFloat:
            return CopyAs<CFloatParameter>(arena, source);
        case tagSInt64:
            return CopyAs<CSInt64Parameter>(arena, source);
        case tagBinaryBlock:
            return CopyAs<CBinaryBlockParameter>(arena, source);
        default:
            return nullptr;
    }
}

CParameterBlock* CopyBlockHead(CParameterArena& arena, CParameterBlock const& source) {
    return arena.Make<CParameterBlock>(CLoadedName{source.token, source.name});
}

// Appends copies of the source's parameters to an empty block that is not part of the source.
void CopyTree(CParameterBlock const& source, CParameterBlock& target) {
    struct CLevel {
        CParameterRange from;
        CParameterBlock* to;
    };
    constexpr std::size_t usualParameterSize = 64;
    CParameterArena arena(source.parameters.size() * usualParameterSize);
    std::vector<CLevel> open{{CParameterRange(source), &target}};
    target.parameters.reserve(source.parameters.size());
    while (!open.empty()) {
        CParameter const* const original = open.back().from.Next();
        if (original == nullptr) {
            open.pop_back();
            continue;
        }
        // The place in the list comes first, so that nothing is lost when memory runs out.
        CParameterList& list = open.back().to->parameters;
        if (original->type != tagBlock) {
            if (original->type < tagString || original->type > tagBinaryBlock) continue;
            list.push_back(nullptr);
            list.back() = CopyValue(arena, *original);
            continue;
        }
        auto const& block = static_cast<CParameterBlock const&>(*original);
        list.push_back(nullptr);
        CParameterBlock* const copy = CopyBlockHead(arena, block);
        list.back() = copy;
        copy->parameters.reserve(block.parameters.size());
        open.push_back({CParameterRange(block), copy});
    }
}

// Whether two parameters agree in everything but what nested blocks hold.
bool EqualHeads(CParameter const& left, CParameter const& right) {
    if (left.type != right.type) return false;
    if (left.type != tagBlock) return left.operator==(right);
    return left.name == right.name;
}

bool EqualTrees(CParameterBlock const& left, CParameterBlock const& right) {
    struct CPair {
        CParameterRange left;
        CParameterRange right;
    };
    std::vector<CPair> open{{CParameterRange(left), CParameterRange(right)}};
    while (!open.empty()) {
        CParameter* const first = open.back().left.Next();
        CParameter* const second = open.back().right.Next();
        if (first == nullptr && second == nullptr) {
            open.pop_back();
            continue;
        }
        if (first == nullptr || second == nullptr || !EqualHeads(*first, *second)) return false;
        if (first->type == tagBlock)
            open.push_back({CParameterRange(*AsBlock(first)), CParameterRange(*AsBlock(second))});
    }
    return true;
}

std::string_view OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

template <typename Class>
Class* FindFrom(CParameterBlock const& block, std::size_t start, const char* parameterName,
                std::size_t* where = nullptr) {
    const std::string_view wanted = OrEmpty(parameterName);
    for (std::size_t i = start; i < block.parameters.size(); ++i) {
        CParameter* const parameter = block.parameters[i];
        if (parameter == nullptr || parameter->type != Class::tag || parameter->name != wanted)
            continue;
        if (where != nullptr) *where = i;
        return static_cast<Class*>(parameter);
    }
    return nullptr;
}

template <typename Class, typename Value>
bool FindValue(CParameterBlock const& block, const char* parameterName, Value* out,
               Value fallback) {
    Class const* const found = FindFrom<Class>(block, 0, parameterName);
    *out = found != nullptr ? found->value : fallback;
    return found != nullptr;
}

bool FindBlockFrom(CParameterBlock const& block, std::size_t start, const char* blockName,
                   CParameterBlock** out, std::size_t* where) {
    CParameterBlock* const found = FindFrom<CParameterBlock>(block, start, blockName, where);
    if (found == nullptr) return false;
    *out = found;
    return true;
}

void Append(CParameterBlock& block, std::unique_ptr<CParameter> parameter) {
    block.parameters.push_back(parameter.get());
    static_cast<void>(parameter.release());
}

}  // namespace

CParameterBlock::CParameterBlock() : CParameterBlock(CLoadedName()) {}

CParameterBlock::CParameterBlock(CProgress* observer, unsigned long total)
    : CParameter(tag, ""), progress(observer), progressTotal(total) {}

CParameterBlock::CParameterBlock(CParameter const* source) : CParameterBlock() {
    TAVARIN_REQUIRE(source != nullptr);
    TAVARIN_REQUIRE(source->type == tag);
    name = source->name;
    token = source->token;
    CopyTree(static_cast<CParameterBlock const&>(*source), *this);
}

CParameterBlock::CParameterBlock(const char* blockName, CParameterBlock const* source)
    : CParameterBlock() {
    TAVARIN_REQUIRE(source != nullptr);
    name = OrEmpty(blockName);
    CopyTree(*source, *this);
}

CParameterBlock::CParameterBlock(CParameterBlock const& source)
    : CParameterBlock(static_cast<CParameter const*>(&source)) {}

CParameterBlock::~CParameterBlock() {
    Clear();
}

void CParameterBlock::Clear() {
    if (!parameters.empty()) DestroyParameters(*this);
}

void CParameterBlock::AddParameter(const char* parameterName, const char* value) {
    Append(*this, std::make_unique<CStringParameter>(parameterName, value));
}

void CParameterBlock::AddParameter(const char* parameterName, int value) {
    Append(*this, std::make_unique<CIntParameter>(parameterName, value));
}

void CParameterBlock::AddParameter(const char* parameterName, double value) {
    Append(*this, std::make_unique<CDoubleParameter>(parameterName, value));
}

void CParameterBlock::AddParameter(const char* parameterName, unsigned long long value) {
    Append(*this, std::make_unique<CUInt64Parameter>(parameterName, value));
}

void CParameterBlock::AddParameter(const char* parameterName, long long value) {
    Append(*this, std::make_unique<CSInt64Parameter>(parameterName, value));
}

void CParameterBlock::AddParameter(const char* parameterName, KEL::FileIdType value) {
    Append(*this, std::make_unique<CFileIdTypeParameter>(parameterName, value));
}

void CParameterBlock::AddParameter(const char* parameterName, bool value) {
    Append(*this, std::make_unique<CBoolParameter>(parameterName, value));
}

void CParameterBlock::AddParameter(const char* parameterName, float value) {
    Append(*this, std::make_unique<CFloatParameter>(parameterName, value));
}

void CParameterBlock::AddParameter(const char* parameterName, CParameterBlock const* block) {
    Append(*this, std::make_unique<CParameterBlock>(parameterName, block));
}

void CParameterBlock::AddParameter(const char* parameterName, CBinaryBlock* block) {
    Append(*this, std::make_unique<CBinaryBlockParameter>(parameterName, block));
}

bool CParameterBlock::FindParameter(const char* parameterName, std::string* out,
                                    const char* fallback) const {
    CStringParameter const* const found = FindFrom<CStringParameter>(*this, 0, parameterName);
    if (found != nullptr)
        *out = found->value;
    else if (fallback != nullptr)
        *out = fallback;
    return found != nullptr;
}

bool CParameterBlock::FindParameter(const char* parameterName, int* out, int fallback) const {
    return FindValue<CIntParameter>(*this, parameterName, out, fallback);
}

bool CParameterBlock::FindParameter(const char* parameterName, double* out, double fallback) const {
    return FindValue<CDoubleParameter>(*this, parameterName, out, fallback);
}

bool CParameterBlock::FindParameter(const char* parameterName, unsigned long long* out,
                                    unsigned long long fallback) const {
    return FindValue<CUInt64Parameter>(*this, parameterName, out, fallback);
}

bool CParameterBlock::FindParameter(const char* parameterName, long long* out,
                                    long long fallback) const {
    return FindValue<CSInt64Parameter>(*this, parameterName, out, fallback);
}

bool CParameterBlock::FindParameter(const char* parameterName, bool* out, bool fallback) const {
    return FindValue<CBoolParameter>(*this, parameterName, out, fallback);
}

bool CParameterBlock::FindParameter(const char* parameterName, float* out, float fallback) const {
    return FindValue<CFloatParameter>(*this, parameterName, out, fallback);
}

bool CParameterBlock::FindParameter(const char* parameterName, KEL::FileIdType* out) const {
    return FindValue<CFileIdTypeParameter>(*this, parameterName, out, KEL::FileIdType());
}

bool CParameterBlock::FindParameter(const char* parameterName, CBinaryBlock** out) const {
    auto const* const found = FindFrom<CBinaryBlockParameter>(*this, 0, parameterName);
    *out = found != nullptr ? found->block : nullptr;
    return found != nullptr;
}

bool CParameterBlock::FindParameter(const char* parameterName, CParameterBlock** out) const {
    *out = FindFrom<CParameterBlock>(*this, 0, parameterName);
    return *out != nullptr;
}

bool CParameterBlock::CheckBoolParameter(const char* parameterName) const {
    return FindFrom<CBoolParameter>(*this, 0, parameterName) != nullptr;
}

bool CParameterBlock::CheckIntParameter(const char* parameterName) const {
    return FindFrom<CIntParameter>(*this, 0, parameterName) != nullptr;
}

bool CParameterBlock::FindFirstParameter(const char* blockName, CParameterBlock** out,
                                         position* where) const {
    return FindBlockFrom(*this, 0, blockName, out, where);
}

bool CParameterBlock::FindNextParameter(const char* blockName, CParameterBlock** out,
                                        position* where) const {
    return FindBlockFrom(*this, *where + 1, blockName, out, where);
}

void CParameterBlock::CopyParameters(CParameterBlock const* source) {
    TAVARIN_REQUIRE(source != nullptr);
    // The copies are whole before anything goes: the source may be a part of this very tree.
    CParameterBlock copy(nullptr, source);
    parameters.swap(copy.parameters);
}

CParameterBlock& CParameterBlock::operator=(CParameterBlock const& source) {
    CopyParameters(&source);
    return *this;
}

CParameter& CParameterBlock::operator=(CParameter& source) {
    auto const& block = dynamic_cast<CParameterBlock const&>(source);
    name = block.name;
    CopyParameters(&block);
    return *this;
}

bool CParameterBlock::operator==(CParameter const& other) const {
    if (other.type != type || other.name != name) return false;
    return EqualTrees(*this, static_cast<CParameterBlock const&>(other));
}

std::string CParameterBlock::GetString() const {
    return "Block";
}
