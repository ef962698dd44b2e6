#include "support/StepwiseComparison.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "support/TextMakers.h"
#include "vocabulary/StatusCodes.h"

std::vector<OrderedSample> OrderSamples(const std::vector<double>& orderValues) {
    std::vector<OrderedSample> samples;
    samples.reserve(orderValues.size());
    for (std::size_t i = 0; i < orderValues.size(); ++i) {
        samples.push_back({static_cast<std::int32_t>(i), orderValues[i]});
    }
    std::stable_sort(samples.begin(), samples.end(),
                     [](const OrderedSample& a, const OrderedSample& b) { return a.orderValue < b.orderValue; });
    return samples;
}

double AdjustForSubset(double sig, std::size_t size, std::size_t sampleCount, const Arithmetic& arithmetic) {
    if (size == sampleCount || size + 1 == sampleCount) return sig;
    const double exponent = static_cast<double>(sampleCount) / static_cast<double>(size);
    return arithmetic.UpperTail([=] { return std::pow(1 - sig, exponent); },
                                [=] { return -std::expm1(exponent * std::log1p(-sig)); });
}

namespace {

SubsetRecord MakeSubset(std::size_t firstPosition, std::size_t lastPosition) {
    SubsetRecord subset;
    subset.firstPosition = static_cast<std::uint32_t>(firstPosition);
    subset.lastPosition = static_cast<std::uint32_t>(lastPosition);
    subset.sums.assign(subset.Size(), 0.0);
    return subset;
}

void DropLastSample(SubsetRecord& subset) {
    --subset.lastPosition;
    subset.sums.assign(subset.Size(), 0.0);
    subset.tieTerm = 0;
}

template <typename Iterator>
Iterator At(Iterator first, std::size_t position) {
    return first + static_cast<std::ptrdiff_t>(position);
}

}  // namespace

TestMessage LoneSampleWarning(const SubsetRecord& subset) {
    return {QKStatus(StatusCode::kSampleInNoSubset),
            MessageKind::kWarning,
            {},
            {{"group", SizeToString(subset.firstPosition) + ";" + SizeToString(subset.lastPosition)}}};
}

void RemoveContainedSubsets(std::vector<SubsetRecord>& subsets) {
    const std::vector<SubsetRecord> found = subsets;
    for (std::size_t i = 0; i < subsets.size(); ++i) {
        // The subset itself is among those that contain it.
        const auto containing = std::count_if(found.begin(), found.end(),
                                              [&](const SubsetRecord& other) { return other.Contains(subsets[i]); });
        if (containing > 1) subsets.erase(At(subsets.begin(), i));
    }
}

void StepwiseComparison::Begin(std::size_t positionCount, std::size_t sampleCount) {
    positionCount_ = positionCount;
    sampleCount_ = sampleCount;
    candidates.clear();
    finalSubsets.clear();
    displayOrder.clear();
    isDone = false;
    for (std::size_t first = 0; first + 1 < positionCount; ++first) {
        candidates.push_back(MakeSubset(first, positionCount - (first == 0 ? 2 : 1)));
    }
}

std::vector<TestMessage> StepwiseComparison::EndPass(double sigLevel, const Compute& compute) {
    if (!WalkCandidates(sigLevel, compute) || !candidates.empty()) return {};
    std::vector<TestMessage> warnings = AddLeftOver();
    displayOrder.resize(finalSubsets.size());
    for (std::size_t i = 0; i < displayOrder.size(); ++i) displayOrder[i] = i;
    if (rules.leftOver == LeftOver::kIsTidied) Tidy();
    isDone = true;
    return warnings;
}

/// False if the test fell into error.
bool StepwiseComparison::WalkCandidates(double sigLevel, const Compute& compute) {
    std::size_t position = 0;
    const auto erase = [&] { candidates.erase(At(candidates.begin(), position)); };
    while (position < candidates.size()) {
        SubsetRecord& candidate = candidates[position];
        if (rules.contained == Contained::kIsSkipped && IsCovered(candidate)) {
            erase();
            continue;
        }
        const Outcome outcome = compute(candidate);
        if (outcome == Outcome::kFailed) return false;
        candidate.untestable = outcome == Outcome::kUntestable;
        if (candidate.untestable) {
            // Added even if it lies inside another one.
            finalSubsets.push_back(candidate);
            erase();
            continue;
        }
        candidate.adjSig = AdjustForSubset(candidate.sig, candidate.Size(), sampleCount_, *arithmetic_);
        if (!IsHomogeneous(candidate, sigLevel)) {
            DropLastSample(candidate);
            if (!candidate.HasOneSample()) {
                ++position;
                continue;
            }
            if (rules.lastSample == LastSample::kIsDropped) {
                erase();
                continue;
            }
        }
        if (!IsCovered(candidate)) finalSubsets.push_back(candidate);
        if (rules.followers == Followers::kEndWithIt && candidate.firstPosition != 0) {
            // They lie inside what has just been settled, or begin later in it.
            candidates.erase(At(candidates.begin(), position), candidates.end());
            break;
        }
        erase();
    }
    return true;
}

bool StepwiseComparison::IsHomogeneous(const SubsetRecord& subset, double sigLevel) const {
    return rules.decides == Decides::kSig ? subset.sig >= sigLevel : !(sigLevel > subset.adjSig);
}

bool StepwiseComparison::LeaveOtherTraces(const SubsetRecord& candidate, double statistic, double other,
                                          double sigLevel, const std::function<double(double)>& sigOf) const {
    if (statistic == other) return false;
    const auto isHomogeneous = [&](double value) {
        SubsetRecord subset = candidate;
        subset.sig = sigOf(value);
        subset.adjSig = AdjustForSubset(subset.sig, subset.Size(), sampleCount_, *arithmetic_);
        return IsHomogeneous(subset, sigLevel);
    };
    return isHomogeneous(statistic) || isHomogeneous(other);
}

bool StepwiseComparison::IsCovered(const SubsetRecord& subset) const {
    return std::any_of(finalSubsets.begin(), finalSubsets.end(),
                       [&](const SubsetRecord& found) { return found.Contains(subset); });
}

std::vector<TestMessage> StepwiseComparison::AddLeftOver() {
    std::vector<TestMessage> warnings;
    for (std::size_t position = 0; position < positionCount_; ++position) {
        SubsetRecord alone = MakeSubset(position, position);
        if (IsCovered(alone)) continue;
        if (rules.leftOver == LeftOver::kIsWarnedOf) warnings.push_back(LoneSampleWarning(alone));
        finalSubsets.push_back(std::move(alone));
    }
    return warnings;
}

/// Removes subsets inside others and puts the rest into the order of their first positions.
void StepwiseComparison::Tidy() {
    RemoveContainedSubsets(finalSubsets);
    displayOrder.resize(finalSubsets.size());
    std::stable_sort(displayOrder.begin(), displayOrder.end(), [&](std::size_t a, std::size_t b) {
        return finalSubsets[a].firstPosition < finalSubsets[b].firstPosition;
    });
}
