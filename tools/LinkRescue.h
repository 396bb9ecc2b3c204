#pragma once

#include <string>

/// What became of those who wait for a host.
struct CRescue {
    bool fDone = false;  ///< they were sent away
    std::string strWhy;  ///< why not; empty when it was done
};

/// Sends everybody away from the message segment of a host that is proven dead, as the next host
/// would do it. Proven means that the lock of the link's hosts is free, which is held meanwhile, so
/// that no host begins; that nobody has the directory mapped, as every living host has; and that
/// its heartbeat does not move. Takes a second and a half at most where it is proven, and changes
/// nothing where it is not.
CRescue RescueFromDeadHost(int nHost);
