#include "platform/WindowHolder.h"

#include <stdexcept>

struct CWindowHolder::CDisplay {};

CWindowHolder::CWindowHolder(std::uint64_t /*nParent*/, int /*nWidth*/, int /*nHeight*/) {
    throw std::runtime_error("no program's window can be put into another's here");
}

CWindowHolder::~CWindowHolder() = default;

std::uint64_t CWindowHolder::Id() const {
    return 0;
}
