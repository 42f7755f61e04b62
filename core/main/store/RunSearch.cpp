#include "core/main/store/RunSearch.h"

#include <algorithm>

namespace lum::core {

std::vector<unsigned> FindRuns(const std::vector<lumsize_t>& runEnds,
                               ArrayView<const unsigned> positions) {
    std::vector<unsigned> runs;
    runs.reserve(positions.GetSize());
    // The run of the position before; none at first.
    auto run = static_cast<unsigned>(runEnds.size());
    lumsize_t start = 0;
    lumsize_t end = 0;
    for (const unsigned position : positions) {
        if (position < start || position >= end) {
            const auto found = std::upper_bound(runEnds.begin(), runEnds.end(), position);
            run = static_cast<unsigned>(found - runEnds.begin());
            start = found == runEnds.begin() ? 0 : *(found - 1);
            end = found == runEnds.end() ? start : *found;
        }
        runs.push_back(run);
    }
    return runs;
}

}  // namespace lum::core
