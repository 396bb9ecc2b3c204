#pragma once

#include <cstddef>
#include <cstdint>

#include "host/ScriptMemory.h"

struct lua_State;
struct CScriptRun;

/// An interpreter with everything in it that scripts find. It is made once; after each script its
/// memory is put back, so that the next one finds it as the first did. Used by one thread.
class CScriptWorld {
public:
    /// Throws `std::bad_alloc`.
    CScriptWorld();
    CScriptWorld(CScriptWorld const&) = delete;
    CScriptWorld& operator=(CScriptWorld const&) = delete;

    /// The interpreter, ready for a script that may take so much memory. The run must outlive its
    /// use; `nChance` starts the script's random numbers.
    lua_State* Enter(CScriptRun& run, std::size_t nMemoryBytes, std::size_t nChance);

    /// Lets texts about a script be made that has used up its memory.
    void LiftLimit() noexcept { m_Memory.SetLimit(SIZE_MAX); }

    /// Forgets what the script has done to the interpreter.
    void PutBack() noexcept { m_Memory.PutBack(); }

private:
    CScriptMemory m_Memory;
    lua_State* m_pState;
};
