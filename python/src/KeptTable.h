#pragma once

#include <cstddef>
#include <vector>

#include "host/words/AnalysisWords.h"

namespace tarn {

/// What was analysed, kept as long as its result, which draws its plots from it. Nothing is copied for that: lent cells
/// stay where they are, and whether somebody has written to them since is noticed.
class KeptTable {
 public:
    /// `part`: with its table as the tests see it. `threads`: how many may work at a time, as in `AnalysisEnvironment`.
    KeptTable(AnalysisPart part, unsigned threads);

    const AnalysisPart& Part() const { return part_; }
    unsigned Threads() const { return threads_; }
    /// Whether the table holds what was analysed. Reads all lent cells.
    bool IsUntouched() const;

 private:
    AnalysisPart part_;
    unsigned threads_;
    std::vector<std::size_t> sums_;  // over the bytes of each lent column, when it was analysed
};

}  // namespace tarn
