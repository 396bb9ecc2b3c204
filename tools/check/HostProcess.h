#pragma once

#include <set>
#include <string>

/// The process of the host under judgement, looked at from outside.
class CHostProcess {
public:
    /// Finds it: the one that has left its id in the link's directory, or whoever keeps the
    /// directory mapped.
    CHostProcess();

    /// Whether it was found, and has ended since.
    bool HasEnded() const noexcept;

    /// "process 4711".
    std::string Text() const;

private:
    std::set<int> m_processes;
};
