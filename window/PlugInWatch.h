#pragma once

#include <cstdint>

/// Ends this process soon after the plug-in has gone, or its workstation, also while the window
/// waits for the host. From a thread of its own; `nDescriptor` is the socket to the plug-in.
void EndWithPlugIn(int nDescriptor, std::int64_t nWorkstation);
