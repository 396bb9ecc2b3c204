#include "platform/SegmentUsers.h"

// The system neither tells who maps a shared-memory object nor renames one.

CExclusiveUse::CExclusiveUse(int nDescriptor) noexcept
    : m_nDescriptor(nDescriptor), m_others(OtherUsers::Unknown) {}

CExclusiveUse::~CExclusiveUse() = default;

std::optional<std::vector<MappingThread>> ThreadsThatMap(int) {
    return std::nullopt;
}

bool RenameSharedMemory(const char*, const char*) noexcept {
    return false;
}
