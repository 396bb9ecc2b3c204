#include <memory>

#include "utils/ParameterBlockCodec.h"
#include "utils/ParameterTree.h"

namespace {

std::size_t SizeOfParameters(CParameterBlock const& block) {
    std::size_t size = codec::countSize;
    VisitTree(block, [&](CParameter const& parameter) {
        size += codec::tagSize;
        size += parameter.type == tagBlock ? codec::NameSize(parameter) + codec::countSize
                                           : parameter.GetSize();
    });
    return size;
}

unsigned char* StoreCount(CParameterBlock const& block, unsigned char* out) {
    StoreLittleEndian(codec::CountOf(block), out);
    return out + codec::countSize;
}

unsigned char* StoreParameters(CParameterBlock const& block, unsigned char* out) {
    out = StoreCount(block, out);
    VisitTree(block, [&](CParameter const& parameter) {
        StoreLittleEndian(parameter.type, out);
        out += codec::tagSize;
        if (parameter.type == tagBlock)
            out = StoreCount(static_cast<CParameterBlock const&>(parameter),
                             codec::StoreName(parameter, out));
        else
            out += parameter.Save(0, out);
    });
    return out;
}

}  // namespace

unsigned long CParameterBlock::GetSize() const {
    return codec::NameSize(*this) + SizeOfParameters(*this);
}

unsigned long CParameterBlock::Save(unsigned long, unsigned char* out) const {
    unsigned char* end = StoreParameters(*this, codec::StoreName(*this, out));
    return static_cast<unsigned long>(end - out);
}

unsigned char* CParameterBlock::CreateBlock(unsigned long* size) const {
    const std::size_t length = SizeOfParameters(*this);
    auto image = std::make_unique<unsigned char[]>(length);
    StoreParameters(*this, image.get());
    *size = length;
    return image.release();
}
