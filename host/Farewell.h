#pragma once

#include <cstddef>

/// \file
/// How whoever is in a message segment gets out of it when no host will answer there any more.
///
/// Who waits for the request lock, or has not sent its request yet, finds the segment closed. Who
/// waits for a reply that is not there gets an empty one, and an error text that says that the host
/// ended first. A reply that is there stays.

/// Sends everybody away from a mapped message segment on which no host works any more, and stays at
/// it until nobody else has the segment, or for a second. Who is halted that long finds the words
/// ready when it goes on. `nDescriptor` is the mapping's own.
void SendEverybodyAway(int nDescriptor, unsigned char* pBytes, std::size_t nSize) noexcept;

/// The same for the message segment that a dead host left under a host id. Does nothing when there
/// is none.
void SendAwayFromLeftover(int nId) noexcept;
