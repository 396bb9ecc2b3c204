#pragma once

/// \file
/// Tells a process that hangs from one that has ended: while it lives, it holds a mark on a
/// shared-memory object of its own. Any other process of the same user can look for the mark.

/// Marks an object as held by this process, until the mark or the process ends. Without effect
/// where the platform refuses it.
class CHolderMark {
public:
    /// The object is known by its name, without a leading slash, and open under a descriptor that
    /// stays open as long as the mark.
    CHolderMark(const char* szName, int nDescriptor) noexcept;
    ~CHolderMark();
    CHolderMark(CHolderMark const&) = delete;
    CHolderMark& operator=(CHolderMark const&) = delete;

private:
    int m_nLocked;
};

/// Whether a process that lives, this one included, holds a mark on the object.
bool IsHeldByAProcess(const char* szName, int nDescriptor) noexcept;
