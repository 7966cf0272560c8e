#include "linerun.h"

#include <algorithm>

LineRuns runsOf(std::vector<int> positions) {
    std::sort(positions.begin(), positions.end());
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
    LineRuns runs;
    for (int p : positions) {
        if (p < 0) continue;
        if (!runs.empty() && runs.back().end() == p)
            ++runs.back().length;
        else
            runs.push_back({p, 1});
    }
    return runs;
}
