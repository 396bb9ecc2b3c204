#pragma once

#include "utils/ParameterBlock.h"

/// Does to a tree from outside what programs do: copies, compares, searches, measures and saves it.
/// Stops the process when the results contradict each other.
void UseLoadedTree(CParameterBlock const& loaded);
