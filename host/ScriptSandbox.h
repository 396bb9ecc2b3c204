#pragma once

struct lua_State;

/// Builds the world of a script in a new interpreter: the allowed functions, the host functions and
/// `print`, and nothing else. The run must have been set; what is on the stack goes. Raises a
/// script error when memory runs out, so it is called under protection.
void BuildSandbox(lua_State* pState);
