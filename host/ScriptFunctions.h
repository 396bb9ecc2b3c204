#pragma once

struct lua_State;

// Functions that the interpreter calls. None keeps anything with a destructor on its stack while it
// may raise an error (see CScriptRun).

/// print(…): adds a line to the reply.
int ScriptPrint(lua_State* pState);

/// setmetatable(table, metatable): with a checked copy of the metatable.
int ScriptSetMetatable(lua_State* pState);

/// table.concat(list, separator, first, last), without metamethods.
int ScriptConcatenate(lua_State* pState);

/// table.unpack(list, first, last), without metamethods.
int ScriptUnpack(lua_State* pState);

/// string.find(text, pattern, from, plain)
int ScriptFind(lua_State* pState);

/// string.match(text, pattern, from)
int ScriptMatch(lua_State* pState);

/// scan(text, pattern, from, last, anchors): the next match at `from` or later that does not end
/// just before `last`. Returns its first place, the place behind it and its captures, or nothing.
int ScriptScan(lua_State* pState);

/// string.rep(text, count, separator)
int ScriptRepeat(lua_State* pState);

/// Calls the host function whose address is the closure's first value.
int ScriptCallHost(lua_State* pState);
