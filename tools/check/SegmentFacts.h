#pragma once

#include "link/MappedSegment.h"
#include "tools/check/Rule.h"

/// Whether a shared-memory object belongs to this user and has the mode 0600.
Finding PrivateToItsOwner(CMappedSegment const& segment);
