#pragma once

#include "host/HostFunctions.h"

/// Carries a process out, of any length, block by block: reads its inputs, writes the result into
/// the audio directory, puts it as a region on the output track, marks each input's range on its
/// track's first marker track, and registers the process. An APT result starts where the guide
/// starts, a Doubler result where the input starts. A failure leaves the session and the directory
/// as they were.
CSessionId CarryOutProcess(CHostContext& context, CProcess process);
