#pragma once

struct lua_State;

// Functions that the interpreter calls. None keeps anything with a destructor on its stack while it
// may raise an error (see CScriptRun).

/// print(…): adds a line to the reply.
int ScriptPrint(lua_State* pState);

/// setmetatable(table, metatable): without `__gc`, which would run where nothing interrupts it.
int ScriptSetMetatable(lua_State* pState);

/// xpcall(function, handler, …): the handler is called after the failed call has been left. Inside
/// of it, it would run where nothing interrupts it.
int ScriptProtectedCall(lua_State* pState);

/// Calls the host function whose address is the closure's first value.
int ScriptCallHost(lua_State* pState);
