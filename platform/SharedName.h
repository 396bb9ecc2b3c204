#pragma once

/// Names of shared-memory objects, without a leading slash. A name may go from one object to
/// another while the first is still open.

/// Whether the object that is open as `nDescriptor` has the name now.
bool HasSharedName(int nDescriptor, const char* szName) noexcept;

/// Removes the name if that object has it. The object itself stays wherever it is open or mapped.
void RemoveSharedName(int nDescriptor, const char* szName) noexcept;
