#include "independent/RunCounter.h"

#include <algorithm>
#include <cmath>

#include "platform/common/QKDistFun.h"
#include "platform/common/QKPower.h"
#include "support/Int32.h"

namespace {

/// The binomial coefficient by log gamma; missing where it overflows.
double Choose(double n, double k) {
    if (n < 0 || k < 0 || k > n) return 0;
    using QKMath::QKDistFun;
    double coefficient = 0;
    const double logarithm =
        QKDistFun::zomrdnlgam(n + 1) - QKDistFun::zomrdnlgam(k + 1) - QKDistFun::zomrdnlgam(n - k + 1);
    constexpr int kOverflow = 2;
    if (QKMath::QKPower::Exponent(logarithm, coefficient) == kOverflow) return QKMV::Missing();
    return coefficient;
}

/// A product of two coefficients, missing if one of them is.
double Product(double a, double b) {
    return QKMV::IsMissing(a) || QKMV::IsMissing(b) ? QKMV::Missing() : a * b;
}

}  // namespace

void RunCounter::Add(double value, std::int32_t weight, std::size_t group) {
    const bool isFirstOfGroup = groupCount[group] == kNoRecordYet;
    groupCount[group] = isFirstOfGroup ? weight : Add32(groupCount[group], weight);
    if (firstRecord) {
        firstRecord = false;
        blockValue = value;
        blockCount[group] = weight;
        return;
    }
    if (value == blockValue) {
        blockCount[group] = isFirstOfGroup ? weight : Add32(blockCount[group], weight);
        return;
    }
    CloseBlock();
    blockValue = value;
    if (!isFirstOfGroup) NoteTie();
    blockCount = {0, 0};
    blockCount[group] = weight;
}

void RunCounter::Finish() {
    CloseBlock();
    NoteTie();
}

void RunCounter::NoteTie() {
    if (blockCount[0] < 1 || blockCount[1] < 1) return;
    tieBlocks = Add32(tieBlocks, 1);
    tieCases = Add32(tieCases, Add32(blockCount[0], blockCount[1]));
}

void RunCounter::CloseBlock() {
    const auto [a, b] = blockCount;
    const std::int32_t difference = Subtract32(a, b);
    const std::int32_t smaller = std::min(a, b);
    if (smaller == 0) {
        if (Multiply32(minSign, difference) < 0) minRuns = Add32(minRuns, 1);
        if (Multiply32(difference, maxSign) < 1) maxRuns = Add32(maxRuns, 1);
        maxSign = minSign = difference;
        return;
    }
    maxRuns = Add32(maxRuns, Multiply32(2, smaller));
    minRuns = std::max(Add32(minRuns, 1), 2);
    if (a != b) {
        if (Multiply32(difference, maxSign) < 1) maxRuns = Add32(maxRuns, 1);
        maxSign = difference;
    }
    minSign = Subtract32(0, minSign);
}

RunStatistics NormalRunStatistics(std::int32_t n1, std::int32_t n2, std::int32_t runs) {
    constexpr double kCorrectedBelow = 50;
    const double n = static_cast<double>(n1) + n2;
    const double t = 2.0 * n1 * n2;
    const double deviation = runs - (t / n + 1);
    const double variance = (t - n) * t / (n * n * (n - 1));
    if (!(variance > 0)) return {};
    RunStatistics statistics;
    statistics.standardError = std::sqrt(variance);
    if (n >= kCorrectedBelow) {
        statistics.z = deviation / statistics.standardError;
    } else {
        // The half is added whatever the sign of the deviation. It looks like a slip; documents depend on it.
        statistics.z = std::fabs(deviation) < 0.5 ? 0 : (deviation + 0.5) / statistics.standardError;
    }
    return statistics;
}

double ExactRunSignificance(std::int32_t n1, std::int32_t n2, std::int32_t runs) {
    double sum = 0;
    for (std::int32_t i = 2; i <= runs; ++i) {
        // An even number of runs has as many of each group; of an odd one either group has one more.
        const double more = i % 2 == 0 ? i / 2 - 1 : (i - 1) / 2;
        const double fewer = i % 2 == 0 ? more : more - 1;
        const double first = Product(Choose(n1 - 1.0, more), Choose(n2 - 1.0, fewer));
        const double second = Product(Choose(n1 - 1.0, fewer), Choose(n2 - 1.0, more));
        if (QKMV::IsMissing(first) || QKMV::IsMissing(second)) return QKMV::Missing();
        sum += first + second;
    }
    const double arrangements = Choose(static_cast<double>(n1) + n2, n1);
    return QKMV::IsMissing(arrangements) ? arrangements : sum / arrangements;
}
