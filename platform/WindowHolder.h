#pragma once

#include <cstdint>
#include <memory>

/// An empty window inside one of the workstation's, for the window of another program.
class CWindowHolder {
public:
    /// Sizes in pixels. Throws `std::runtime_error` when there is no such thing here.
    CWindowHolder(std::uint64_t nParent, int nWidth, int nHeight);
    ~CWindowHolder();
    CWindowHolder(CWindowHolder const&) = delete;
    CWindowHolder& operator=(CWindowHolder const&) = delete;

    std::uint64_t Id() const;

private:
    struct CDisplay;
    std::unique_ptr<CDisplay> m_pDisplay;
};
