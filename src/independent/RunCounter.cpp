#include "independent/RunCounter.h"

#include <algorithm>

#include "support/Int32.h"

void RunCounter::Add(const double* values, const std::int32_t* groups, const std::int32_t* weights, std::size_t count) {
    RunCounter counter = *this;  // in registers
    for (std::size_t i = 0; i < count; ++i) {
        if (groups[i] >= 0) counter.Add(values[i], static_cast<std::size_t>(groups[i]), weights[i]);
    }
    *this = counter;
}

void RunCounter::Close() {
    CloseBlock();
    CountTies();
}

void RunCounter::CountTies() {
    if (blockCount[0] < 1 || blockCount[1] < 1) return;
    tieBlocks = Add32(tieBlocks, 1);
    tieCases = Add32(tieCases, Add32(blockCount[0], blockCount[1]));
}

void RunCounter::CloseOfBothGroups(std::int32_t smaller, std::int32_t difference) {
    maxRuns = Add32(maxRuns, Multiply32(2, smaller));
    minRuns = std::max(Add32(minRuns, 1), 2);
    if (difference != 0) {
        if (Multiply32(difference, maxSign) < 1) maxRuns = Add32(maxRuns, 1);
        maxSign = difference;
    }
    minSign = Subtract32(0, minSign);  // the block begins with the group before it and ends with the other one
}
