#pragma once

/// Sends away whoever still waits in the message segment that a dead host left under a host id, for
/// up to a second, so that nobody waits for ever for a host that will not come back to it. Does
/// nothing when there is no such segment or nobody is in it.
///
/// Who waits for the request lock finds the segment closed. Who waits for a reply gets an empty one
/// and an error text that says that the host ended first.
void SendAwayFromLeftover(int nId);
