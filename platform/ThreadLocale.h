#pragma once

#include <memory>

/// Gives the calling thread the plain "C" locale for as long as the object lives.
///
/// C library calls that follow the locale (number text, character classes, string order) then give
/// the same result whatever locale the rest of the process runs in. Other threads are not touched.
/// Must be destroyed on the thread that made it; objects nest. When the locale cannot be made the
/// thread keeps the one it had.
class CPlainThreadLocale {
public:
    CPlainThreadLocale();
    ~CPlainThreadLocale();
    CPlainThreadLocale(CPlainThreadLocale const&) = delete;
    CPlainThreadLocale& operator=(CPlainThreadLocale const&) = delete;

private:
    struct CState;
    std::unique_ptr<CState> m_pState;
};
