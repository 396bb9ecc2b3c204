#include "platform/ThreadLocale.h"

#include <locale.h>
#if __has_include(<xlocale.h>)
#include <xlocale.h>
#endif

struct CPlainThreadLocale::CState {
    locale_t m_Plain;
    locale_t m_Previous;
};

CPlainThreadLocale::CPlainThreadLocale() : m_pState(std::make_unique<CState>()) {
    m_pState->m_Plain = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    if (m_pState->m_Plain) m_pState->m_Previous = uselocale(m_pState->m_Plain);
}

CPlainThreadLocale::~CPlainThreadLocale() {
    if (!m_pState->m_Plain) return;
    uselocale(m_pState->m_Previous);
    freelocale(m_pState->m_Plain);
}
