#include "utils/ParameterBlock.h"

#include <memory>
#include <string_view>
#include <utility>

#include "platform/Assertion.h"
#include "utils/ParameterPool.h"
#include "utils/ParameterTree.h"

namespace {

// Deletes parameters, and tells a chunk of many at once.
class CParameterDeleter {
public:
    CParameterDeleter() = default;
    CParameterDeleter(CParameterDeleter const&) = delete;
    CParameterDeleter& operator=(CParameterDeleter const&) = delete;
    ~CParameterDeleter() { Tell(); }

    void Delete(CParameter* parameter) {
        if (parameter == nullptr) return;
        const auto destroy = [&](auto c) {
            return DestroyPooled<typename decltype(c)::type>(*parameter);
        };
        const bool destroyed = parameter->type == tagBlock
                                   ? destroy(CClass<CParameterBlock>())
                                   : WithValueClass(parameter->type, destroy);
        if (!destroyed) delete parameter;
    }

private:
    template <typename Class>
    bool DestroyPooled(CParameter& parameter) {
        using Pooled = CPooled<Class>;
        if (&typeid(parameter) != &typeid(Pooled)) return false;
        auto& pooled = static_cast<Pooled&>(static_cast<Class&>(parameter));
        if (m_pChunk != pooled.pChunk) {
            Tell();
            m_pChunk = pooled.pChunk;
        }
        ++m_nDeleted;
        pooled.~Pooled();
        return true;
    }

    void Tell() noexcept {
        if (m_pChunk != nullptr) m_pChunk->Release(m_nDeleted);
        m_nDeleted = 0;
    }

    CParameterChunk* m_pChunk = nullptr;
    std::size_t m_nDeleted = 0;
};

// Destroys the tree below `root` from the ends of its lists, without recursion and without asking
// for memory: on the way down a block's last entry keeps the way back up.
void DestroyParameters(CParameterBlock& root) noexcept {
    CParameterDeleter deleter;
    CParameterBlock* current = &root;
    CParameterBlock* parent = nullptr;
    for (;;) {
        CParameterList& list = current->parameters;
        if (list.empty()) {
            if (parent == nullptr) return;
            deleter.Delete(std::exchange(current, parent));
            parent = static_cast<CParameterBlock*>(current->parameters.back());
            current->parameters.pop_back();
            continue;
        }
        CParameter* const last = list.back();
        CParameterBlock* const nested = AsBlock(last);
        if (nested != nullptr && !nested->parameters.empty()) {
            list.back() = std::exchange(parent, current);
            current = nested;
        } else {
            list.pop_back();
            deleter.Delete(last);
        }
    }
}

void Append(CParameterBlock& block, std::unique_ptr<CParameter> parameter) {
    block.parameters.push_back(parameter.get());
    static_cast<void>(parameter.release());
}

// Null for a block and for an unknown type.
std::unique_ptr<CParameter> CopyValue(CParameter const& source, CParameterPool& pool) {
    std::unique_ptr<CParameter> copy;
    if (source.type == tagBinaryBlock) {
        copy = std::make_unique<CBinaryBlockParameter>(&source);
    } else {
        WithValueClass(source.type, [&](auto c) {
            using Class = typename decltype(c)::type;
            auto made = pool.Make<Class>();
            *made = static_cast<Class const&>(source);
            copy = std::move(made);
            return true;
        });
    }
    return copy;
}

// Appends copies of the source's parameters to an empty block that is not part of the source.
void CopyTree(CParameterBlock const& source, CParameterBlock& target) {
    struct CLevel {
        CParameterRange from;
        CParameterBlock* to;
    };
    CParameterPool pool;
    std::vector<CLevel> open{{CParameterRange(source), &target}};
    target.parameters.reserve(source.parameters.size());
    while (!open.empty()) {
        CParameter* const original = open.back().from.Next();
        CParameterBlock& to = *open.back().to;
        if (original == nullptr) {
            open.pop_back();
        } else if (CParameterBlock const* block = AsBlock(original)) {
            auto copy = pool.MakeBlock(block->parameters.size());
            copy->name = block->name;
            copy->token = block->token;
            open.push_back({CParameterRange(*block), copy.get()});
            Append(to, std::move(copy));
        } else if (auto copy = CopyValue(*original, pool)) {
            Append(to, std::move(copy));
        }
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

}  // namespace

CParameterBlock::CParameterBlock() : CParameter(tag, {}) {}

CParameterBlock::CParameterBlock(CProgress* observer, unsigned long total)
    : CParameter(tag, ""), progress(observer), progressTotal(total) {}

CParameterBlock::CParameterBlock(CParameter const* source) : CParameterBlock() {
    CopyTree(SameClass<CParameterBlock>(source), *this);
    name = source->name;
    token = source->token;
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
    TAVARIN_REQUIRE(block != nullptr);
    auto made = std::make_unique<CBinaryBlockParameter>();
    CBinaryBlockParameter& holder = *made;
    holder.name = OrEmpty(parameterName);
    Append(*this, std::move(made));
    // Not before it has its place: a holder that found none would take the block with it.
    holder.block = block;
    block->AddRef();
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
    parameters.reserve(copy.parameters.size());
    Clear();
    parameters = copy.parameters;
    copy.parameters.clear();
}

CParameterBlock& CParameterBlock::operator=(CParameterBlock const& source) {
    CopyParameters(&source);
    return *this;
}

CParameter& CParameterBlock::operator=(CParameter& source) {
    auto const& block = dynamic_cast<CParameterBlock const&>(source);
    std::string newName(block.name);
    CopyParameters(&block);
    name.swap(newName);
    return *this;
}

bool CParameterBlock::operator==(CParameter const& other) const {
    if (other.type != type || other.name != name) return false;
    return EqualTrees(*this, static_cast<CParameterBlock const&>(other));
}

std::string CParameterBlock::GetString() const {
    return "Block";
}
