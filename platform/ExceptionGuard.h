#pragma once

#include <functional>
#include <optional>
#include <string>

/// \file
/// Catching the exceptions of Objective-C from C++. GCC's Objective-C++ compiles a handler for them
/// and crashes in it, so the handler is in plain Objective-C. Exceptions of C++ pass through.

/// Runs an action. When an Objective-C exception ended it, what the exception says: its reason, or
/// its name when it has none.
std::optional<std::string> ExceptionIn(std::function<void()> const& action);

extern "C" {

/// Calls `action`. When an Objective-C exception ended it, calls `caught` with the exception's
/// reason, or with its name when it has none. Both get the context.
void RunCatching(void (*action)(void* context), void (*caught)(void* context, char const* szText),
                 void* context);
}
