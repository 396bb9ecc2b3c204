#pragma once

#include <string>
#include <vector>

/// While one of these lives, calls of its thread that a real-time thread must not make are noted:
/// memory, locks, waiting, files. For programs that are linked with RealTimeTrap.cpp.
class CRealTimeTrap {
public:
    CRealTimeTrap();
    ~CRealTimeTrap();
    CRealTimeTrap(CRealTimeTrap const&) = delete;
    CRealTimeTrap& operator=(CRealTimeTrap const&) = delete;

    /// The names of the calls since it was made, at most 16.
    std::vector<std::string> Calls() const;
};
