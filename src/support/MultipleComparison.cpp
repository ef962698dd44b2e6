#include "support/MultipleComparison.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "support/Int32.h"
#include "support/Significance.h"
#include "vocabulary/StatusCodes.h"

// ---- Request ----

std::vector<TestMessage> ComparisonRequest::Refuse(const RefusalCodes& codes) {
    std::vector<TestMessage> warnings;
    if (pairwise) warnings.push_back({QKStatus(codes.pairwise), MessageKind::kWarning, {}, {}});
    if (stepwise) warnings.push_back({QKStatus(codes.stepwise), MessageKind::kWarning, {}, {}});
    pairwise = false;
    stepwise = false;
    return warnings;
}

// ---- All pairs ----

double AdjustForPairs(double sig, std::size_t sampleCount) {
    const auto k = static_cast<double>(sampleCount);
    const double adjusted = k * sig * (k - 1) / 2;
    return adjusted > 1 ? 1 : adjusted;
}

double AdjustByPairCount(double sig, std::int32_t sampleCount) {
    const double adjusted = Multiply32(Subtract32(sampleCount, 1), sampleCount) * sig / 2;
    return adjusted > 1 ? 1 : adjusted;
}

PairRecord MakeNormalPair(std::int32_t sample1, std::int32_t sample2, double testStatistic, double standardError,
                          std::size_t sampleCount) {
    PairRecord pair;
    pair.sample1 = sample1;
    pair.sample2 = sample2;
    pair.testStatistic = testStatistic;
    pair.standardError = standardError;
    pair.standardTestStatistic = testStatistic / standardError;
    pair.sig = TwoTailedNormal(pair.standardTestStatistic);
    pair.adjSig = AdjustForPairs(pair.sig, sampleCount);
    return pair;
}

std::vector<PairRecord> CompareNormalPairs(std::size_t sampleCount, double standardError,
                                           const std::function<double(std::size_t, std::size_t)>& difference) {
    std::vector<PairRecord> pairs;
    for (std::size_t i = 0; i < sampleCount; ++i) {
        for (std::size_t j = i + 1; j < sampleCount; ++j) {
            pairs.push_back(MakeNormalPair(static_cast<std::int32_t>(i), static_cast<std::int32_t>(j), difference(i, j),
                                           standardError, sampleCount));
        }
    }
    return pairs;
}

// ---- Step by step ----

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

double AdjustForSubset(double sig, std::size_t size, std::size_t sampleCount) {
    if (size == sampleCount || size + 1 == sampleCount) return sig;
    return 1 - std::pow(1 - sig, static_cast<double>(sampleCount) / static_cast<double>(size));
}

namespace {

/// Says that a subset is a single sample.
TestMessage LoneSampleWarning(const SubsetRecord& subset) {
    return {QKStatus(StatusCode::kSampleInNoSubset),
            MessageKind::kWarning,
            {},
            {{"group", SizeToString(subset.firstPosition) + ";" + SizeToString(subset.lastPosition)}}};
}

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
        candidate.adjSig = AdjustForSubset(candidate.sig, candidate.Size(), sampleCount_);
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

// ---- Result tables ----

namespace {

std::string JoinTexts(std::initializer_list<std::string> texts) {
    std::string joined;
    for (const std::string& text : texts) joined += (&text == texts.begin() ? "" : ";") + text;
    return joined;
}

void AddSamples(StructuredTable& table, const char* name, Labels labels, const ComparedSamples& samples) {
    const bool areRowNames = labels == Labels::kOnRows;
    auto info = MakeSimpleTable(name, areRowNames ? Literal::kIndexOrderAndValue : "",
                                areRowNames ? "" : Literal::kIndexOrderAndValue);
    info->AddChild(MakeRowElement(samples.indices));
    info->AddChild(MakeRowElement(samples.orderValues));
    table.Add(std::move(info));
}

/// The five values of a pair or of a subset.
template <typename Result>
std::string ValuesOf(const Result& result, double statistic, bool isMissing, bool hasErrors) {
    const auto text = [&](double value) { return isMissing ? Literal::kMissingParameter : DoubleToString(value); };
    const auto errorText = [&](double value) { return hasErrors ? text(value) : ""; };
    return JoinTexts({text(statistic), errorText(result.standardError), errorText(result.standardTestStatistic),
                      text(result.sig), text(result.adjSig)});
}

StructuredTable AddComparison(ResultElement& element, const char* name, const ComparedSamples& samples) {
    StructuredTable table = element.AddTable(name);
    if (samples.groupField) table.Row(RowName::kFieldIndex, *samples.groupField);
    return table;
}

}  // namespace

ComparedSamples FieldsInOrder(const std::vector<int>& fields, const std::vector<OrderedSample>& samples) {
    std::vector<std::int32_t> indices;
    std::vector<double> orderValues;
    for (const OrderedSample& sample : samples) {
        indices.push_back(fields[static_cast<std::size_t>(sample.sample)]);
        orderValues.push_back(sample.orderValue);
    }
    return {std::nullopt, JoinValues(indices), JoinValues(orderValues)};
}

void AddPairwiseResult(ResultElement& element, const ComparisonRules& rules, const ComparedSamples& samples,
                       const std::vector<PairRecord>& pairs) {
    StructuredTable table = AddComparison(element, TableName::kPairwiseResult, samples);
    AddSamples(table, TableName::kPairwiseInfo, rules.pairwiseLabels, samples);
    auto content = MakeSimpleTable(TableName::kContent, "", Literal::kPairColumns);
    for (const PairRecord& pair : pairs) {
        const bool hasErrors = rules.errors != Errors::kNone;
        content->AddChild(MakeRowElement(JoinTexts({IntToString(pair.sample1), IntToString(pair.sample2),
                                                    ValuesOf(pair, pair.testStatistic, pair.untestable, hasErrors)})));
    }
    table.Add(std::move(content));
}

std::vector<TestMessage> AddStepwiseResult(ResultElement& element, const StepwiseComparison& search,
                                           const ComparedSamples& samples) {
    const ComparisonRules& rules = search.Rules();
    std::vector<TestMessage> warnings;
    StructuredTable table = AddComparison(element, TableName::kStepwiseResult, samples);
    AddSamples(table, TableName::kStepwiseInfo, rules.stepwiseLabels, samples);
    auto content = MakeSimpleTable(TableName::kContent, "", Literal::kSubsetColumns);
    for (const std::size_t index : search.DisplayOrder()) {
        const SubsetRecord& subset = search.FinalSubsets()[index];
        const bool isAlone = subset.HasOneSample();
        if (isAlone && rules.leftOver == LeftOver::kIsTidied) warnings.push_back(LoneSampleWarning(subset));
        const bool hasErrors = rules.errors == Errors::kOfBoth;
        content->AddChild(
            MakeRowElement(JoinTexts({SizeToString(subset.firstPosition), SizeToString(subset.lastPosition),
                                      ValuesOf(subset, subset.statistic, isAlone || subset.untestable, hasErrors)}) +
                           (isAlone ? rules.endOfLoneRow : "")));
    }
    table.Add(std::move(content));
    return warnings;
}
