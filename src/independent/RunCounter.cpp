#include "independent/RunCounter.h"

#include <algorithm>

#include "support/Int32.h"

void RunCounter::Add(double value, std::size_t group, std::int32_t weight) {
    const bool isFirstOfGroup = groupCount[group] == kNoRecord;
    groupCount[group] = isFirstOfGroup ? weight : Add32(groupCount[group], weight);
    if (firstRecord) {
        firstRecord = false;
        blockValue = value;
    }
    if (value == blockValue) {
        blockCount[group] = isFirstOfGroup ? weight : Add32(blockCount[group], weight);
        return;
    }
    CloseBlock();
    if (!isFirstOfGroup) CountTies();
    blockValue = value;
    blockCount = {};
    blockCount[group] = weight;
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

void RunCounter::CloseBlock() {
    const std::int32_t difference = Subtract32(blockCount[0], blockCount[1]);
    const std::int32_t smaller = std::min(blockCount[0], blockCount[1]);
    if (smaller == 0) {
        CloseOfOneGroup(difference);
    } else {
        CloseOfBothGroups(smaller, difference);
    }
}

void RunCounter::CloseOfOneGroup(std::int32_t difference) {
    if (Multiply32(minSign, difference) < 0) minRuns = Add32(minRuns, 1);
    if (Multiply32(difference, maxSign) < 1) maxRuns = Add32(maxRuns, 1);
    maxSign = difference;
    minSign = difference;
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
