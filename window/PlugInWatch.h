#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

/// Ends this process soon after the plug-in has gone, or its workstation, also while the window
/// waits for the host. From a thread of its own; `nDescriptor` is the socket to the plug-in.
void EndWithPlugIn(int nDescriptor, std::int64_t nWorkstation);

/// Closes the window for a main thread that waits for the host: when `turns` has stood still for a
/// second and `isAsked` says yes, calls `say` and ends this process. All of it from a thread of its
/// own, for which both are kept.
void CloseWithoutTurns(std::atomic<unsigned> const& turns, std::function<bool()> isAsked,
                       std::function<void()> say);
