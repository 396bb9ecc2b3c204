#include "platform/SharedMemory.h"

// The system neither tells who maps a shared-memory object nor renames one.

CExclusiveUse::CExclusiveUse(int nDescriptor) noexcept
    : m_nDescriptor(nDescriptor), m_others(OtherUsers::Unknown) {}

CExclusiveUse::~CExclusiveUse() = default;

std::optional<std::vector<MappingThread>> ThreadsThatMap(int) {
    return std::nullopt;
}

// Sizing an object takes its memory.
int ReserveSharedMemory(int, std::size_t) noexcept {
    return 0;
}

bool RenameSharedMemory(const char*, const char*) noexcept {
    return false;
}
