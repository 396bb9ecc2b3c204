#pragma once

/// How often this program has asked the heap for memory through `operator new` so far. Linking the
/// source beside this header replaces that operator.
long CountAllocations() noexcept;
