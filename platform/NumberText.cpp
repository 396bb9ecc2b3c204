#include "platform/NumberText.h"

#include <clocale>
#include <cstdlib>

#ifdef __APPLE__
#include <xlocale.h>
#endif

namespace {

locale_t ClassicLocale() noexcept {
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    return classic;
}

}  // namespace

std::int64_t ParseInteger(const char* text) noexcept {
    return strtoll_l(text, nullptr, 10, ClassicLocale());
}

double ParseDouble(const char* text) noexcept {
    return strtod_l(text, nullptr, ClassicLocale());
}
