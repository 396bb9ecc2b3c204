#include "platform/ExceptionGuard.h"

namespace {

struct CGuarded {
    std::function<void()> const& action;
    std::optional<std::string> strText;
};

CGuarded& Guarded(void* context) {
    return *static_cast<CGuarded*>(context);
}

}  // namespace

std::optional<std::string> ExceptionIn(std::function<void()> const& action) {
    CGuarded guarded{action, std::nullopt};
    RunCatching([](void* context) { Guarded(context).action(); },
                [](void* context, char const* szText) { Guarded(context).strText = szText; },
                &guarded);
    return guarded.strText;
}
