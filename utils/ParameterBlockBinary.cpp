#include <typeinfo>
#include <utility>

#include "platform/Assertion.h"
#include "utils/ParameterBlockCodec.h"

CBinaryBlock::CBinaryBlock(void* payload, void (*free)(void*), void* (*copy)(void*))
    : data(payload), m_nReferenceCount(0), freeFunction(free), copyFunction(copy) {}

CBinaryBlock::~CBinaryBlock() {
    if (data != nullptr && freeFunction != nullptr) freeFunction(data);
}

CBinaryBlock* CBinaryBlock::Copy() const {
    if (data == nullptr || copyFunction == nullptr) return nullptr;
    return new CBinaryBlock(copyFunction(data), freeFunction, copyFunction);
}

void CBinaryBlock::AddRef() {
    ++m_nReferenceCount;
}

void CBinaryBlock::Release() {
    --m_nReferenceCount;
    TAVARIN_REQUIRE(m_nReferenceCount >= 0);
    if (m_nReferenceCount == 0) delete this;
}

CBinaryBlockParameter::CBinaryBlockParameter() : CParameter(tag, "") {}

CBinaryBlockParameter::CBinaryBlockParameter(const char* parameterName, CBinaryBlock* sharedBlock)
    : CParameter(tag, OrEmpty(parameterName)), block(sharedBlock) {
    TAVARIN_REQUIRE(block != nullptr);
    block->AddRef();
}

CBinaryBlockParameter::CBinaryBlockParameter(CParameter const* source)
    : CBinaryBlockParameter(SameClass<CBinaryBlockParameter>(source)) {}

CBinaryBlockParameter::CBinaryBlockParameter(CBinaryBlockParameter const& source)
    : CParameter(source), block(source.block) {
    if (block != nullptr) block->AddRef();
}

CBinaryBlockParameter::~CBinaryBlockParameter() {
    if (block != nullptr) block->Release();
}

CBinaryBlockParameter& CBinaryBlockParameter::operator=(CBinaryBlockParameter const& source) {
    if (block == source.block) {
        // What is assigned to itself must be copied while it is there.
        CBinaryBlock* const copy = block != nullptr ? block->Copy() : nullptr;
        delete block;
        block = copy;
    } else {
        delete std::exchange(block, nullptr);
        if (source.block != nullptr) block = source.block->Copy();
    }
    name = source.name;
    return *this;
}

CParameter& CBinaryBlockParameter::operator=(CParameter& source) {
    return *this = dynamic_cast<CBinaryBlockParameter const&>(source);
}

std::string CBinaryBlockParameter::GetString() const {
    return "Binary Block";
}

unsigned long CBinaryBlockParameter::GetSize() const {
    TAVARIN_REQUIRE(false);
    return 0;
}

unsigned long CBinaryBlockParameter::Save(unsigned long, unsigned char*) const {
    TAVARIN_REQUIRE(false);
    return 0;
}

unsigned long CBinaryBlockParameter::Load(std::vector<std::string> const*, unsigned long,
                                          unsigned char const*) {
    TAVARIN_REQUIRE(false);
    return 0;
}

bool CBinaryBlockParameter::operator==(CParameter const&) const {
    return false;
}
