#pragma once

#include <vector>

#include "lum/core/store/ArrayView.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// The number of the run that each position stands in, or the number of runs where it stands behind
/// the last. `runEnds` are the positions behind the runs, in their order.
/// Cost: O(1) a position that stands in the run of the one before, else O(log runs).
std::vector<unsigned> FindRuns(const std::vector<lumsize_t>& runEnds,
                               ArrayView<const unsigned> positions);

}  // namespace lum::core
