#include <new>

#include "utils/ParameterReader.h"

using CReader = CParameterReader<std::vector<std::string>>;

unsigned long CParameterBlock::Load(std::vector<std::string> const* names, unsigned long size,
                                    unsigned char const* data) try {
    CReader reader(*this, names, size, data);
    reader.ReadOwnName();
    Clear();
    return reader.ReadList() ? size - reader.Rest() : ~0UL;
} catch (std::bad_alloc const&) {
    return ~0UL;
}

long CParameterBlock::LoadBlock(std::vector<std::string> const* names, unsigned long size,
                                void const* data) try {
    Clear();
    CReader reader(*this, names, size, static_cast<unsigned char const*>(data));
    return reader.ReadList() ? static_cast<long>(size - reader.Rest()) : -1;
} catch (std::bad_alloc const&) {
    return -1;
}
