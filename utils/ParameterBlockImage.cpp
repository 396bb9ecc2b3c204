#include <memory>

#include "utils/ParameterPool.h"
#include "utils/ParameterTree.h"

namespace {

using codec::countSize;
using codec::tagSize;

// The block that a parameter is, if what its class does is known: a loop may go through it then,
// while a derived class is asked for its own way.
CParameterBlock* AsOwnBlock(CParameter* parameter) {
    CParameterBlock* const block = AsBlock(parameter);
    return block != nullptr && IsOfOwnClass(*block) ? block : nullptr;
}

std::size_t SizeOfParameters(CParameterBlock const& block) {
    std::size_t size = countSize;
    std::vector<CParameterRange> stack;
    VisitTree(
        block,
        [&size](CParameter& parameter) {
            const bool plain = AsOwnBlock(&parameter) != nullptr;
            size += tagSize + (plain ? parameter.GetSizeOfName() + countSize : parameter.GetSize());
        },
        AsOwnBlock, stack);
    return size;
}

unsigned char* SaveParameters(CParameterBlock const& block, unsigned char* out) {
    out = SaveCount(block, out);
    std::vector<CParameterRange> stack;
    VisitTree(
        block,
        [&out](CParameter& parameter) {
            StoreLittleEndian(parameter.type, out);
            out += tagSize;
            if (CParameterBlock const* nested = AsOwnBlock(&parameter))
                out = SaveCount(*nested, out + parameter.SaveName(out));
            else
                out += parameter.Save(0, out);
        },
        AsOwnBlock, stack);
    return out;
}

}  // namespace

unsigned long CParameterBlock::GetSize() const {
    return GetSizeOfName() + SizeOfParameters(*this);
}

unsigned long CParameterBlock::Save(unsigned long, unsigned char* out) const {
    return static_cast<unsigned long>(SaveParameters(*this, out + SaveName(out)) - out);
}

unsigned char* CParameterBlock::CreateBlock(unsigned long* size) const {
    const std::size_t length = SizeOfParameters(*this);
    auto image = std::make_unique<unsigned char[]>(length);
    SaveParameters(*this, image.get());
    *size = length;
    return image.release();
}
