#include "host/beyond/explain/SubsetSteps.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "host/TextList.h"
#include "host/beyond/NamePlaces.h"
#include "host/beyond/explain/RankBlocks.h"

namespace tarn {

namespace {

enum class Decision { kHomogeneous, kInside, kDiffer, kUntestable };

/// A run of positions in the order of the search, both ends included.
struct Range {
    std::size_t first = 0;
    std::size_t last = 0;

    std::size_t Size() const { return last - first + 1; }
    bool Contains(const Range& other) const { return first <= other.first && last >= other.last; }
    bool operator==(const Range&) const = default;
};

struct TestedRange {
    std::size_t step = 0;
    Range range;
    WorkedSubset subset;
    double adjusted = 0;
    Decision decision = Decision::kHomogeneous;

    bool IsFound() const { return decision == Decision::kHomogeneous || decision == Decision::kUntestable; }
};

// ---- The search ----

/// The step-down search over samples in their order, step by step. Each step tests a run from each sample on; one that
/// differs loses its last sample and is tested again in the next step.
class SubsetSearch {
 public:
    /// Borrows `rule`. `order`: places among the view's samples. `level`: that of the run.
    SubsetSearch(const SubsetRule& rule, std::vector<std::size_t> order, double level)
        : rule_(rule), order_(std::move(order)), level_(level) {}

    void Run();
    /// Tests one run outside of any search, as a subset that is known.
    void Take(const Range& range) {
        TestedRange& one = tested_.emplace_back(Test(range));
        one.decision = one.subset.isTestable ? Decision::kHomogeneous : Decision::kUntestable;
    }

    /// In the order of the tests.
    const std::vector<TestedRange>& Tested() const { return tested_; }
    std::size_t SampleCount() const { return order_.size(); }
    /// Whether the search ends with that run as a subset, of one sample, too.
    bool IsSubset(const Range& range) const;

 private:
    TestedRange Test(const Range& range) const;
    void Step(std::vector<Range>& candidates, std::size_t step);
    bool IsHomogeneous(const TestedRange& range) const {
        return rule_.isByPlainP ? range.subset.p >= level_ : !(level_ > range.adjusted);
    }
    bool IsInside(const Range& range) const {
        return std::ranges::any_of(found_, [&](const Range& other) { return other.Contains(range); });
    }

    const SubsetRule& rule_;
    std::vector<std::size_t> order_;
    double level_;
    std::vector<TestedRange> tested_;
    std::vector<Range> found_;
};

TestedRange SubsetSearch::Test(const Range& range) const {
    const auto at = [&](std::size_t position) { return order_.begin() + static_cast<std::ptrdiff_t>(position); };
    TestedRange one;
    one.range = range;
    one.subset = rule_.of({at(range.first), at(range.last + 1)});
    one.adjusted = AdjustedForSubset(one.subset.p, range.Size(), order_.size());
    return one;
}

void SubsetSearch::Run() {
    std::vector<Range> candidates;
    // All samples together are none: that they differ is why subsets are searched for.
    const std::size_t count = order_.size();
    for (std::size_t first = 0; first + 1 < count; ++first) candidates.push_back({first, count - (first == 0 ? 2 : 1)});
    for (std::size_t step = 1; !candidates.empty(); ++step) Step(candidates, step);
}

/// Leaves those runs that the next step tests.
void SubsetSearch::Step(std::vector<Range>& candidates, std::size_t step) {
    std::vector<Range> left;
    for (Range range : candidates) {
        if (rule_.skipsInside && IsInside(range)) continue;
        TestedRange& one = tested_.emplace_back(Test(range));
        one.step = step;
        if (!one.subset.isTestable) {
            one.decision = Decision::kUntestable;
            found_.push_back(range);
            continue;
        }
        if (!IsHomogeneous(one)) {
            one.decision = Decision::kDiffer;
            --range.last;
            if (range.Size() > 1) {
                left.push_back(range);
                continue;
            }
            if (!rule_.keepsLastSample) continue;
        } else if (IsInside(range)) {
            one.decision = Decision::kInside;
        }
        if (!IsInside(range)) found_.push_back(range);
        // What follows lies inside what has just been settled, or begins later in it.
        if (rule_.endsStep && range.first != 0) break;
    }
    candidates = std::move(left);
}

/// Subsets inside others are left out, but for those without a number; a sample that is in none stands for itself.
bool SubsetSearch::IsSubset(const Range& range) const {
    const auto isUntestable = [&](const TestedRange& one) {
        return one.range == range && one.decision == Decision::kUntestable;
    };
    if (std::ranges::any_of(tested_, isUntestable)) return true;
    const auto isAround = [&](const Range& other) { return other.Contains(range) && other != range; };
    if (std::ranges::any_of(found_, isAround)) return false;
    return range.Size() == 1 || std::ranges::find(found_, range) != found_.end();
}

// ---- What is shown of it ----

std::string MembersText(const std::vector<std::string>& names) {
    constexpr std::size_t kMostInFull = 4;
    if (names.size() <= kMostInFull) return JoinList(names, ", ");
    return names.front() + " .. " + names.back() + " (" + std::to_string(names.size()) + ")";
}

std::string TextOf(Decision decision) {
    switch (decision) {
        case Decision::kHomogeneous:
            return "subset";
        case Decision::kInside:
            return "inside another one";
        case Decision::kUntestable:
            return "can't be tested";
        case Decision::kDiffer:
            break;
    }
    return "differ";
}

/// Of three samples only runs of two are tested, for which p stays as it is.
std::string AdjustmentText(std::size_t count) {
    constexpr std::size_t kFewest = 3;
    if (count <= kFewest) return "p adjusted = p, since m = k - 1 = " + std::to_string(count - 1);
    return "p adjusted = 1 - (1 - p)^(k / m), k = " + std::to_string(count) + ", or p itself for m = k - 1";
}

std::string TitleOf(const SubsetRule& rule, std::size_t count, const Number& level) {
    const std::string decisive = rule.isByPlainP ? "p" : "p adjusted";
    return "Homogeneous subsets: " + rule.words + "; " + AdjustmentText(count) + ". Where " + decisive +
           " >= " + level.text + " samples are a subset, else the last one leaves and the rest is tested in the " +
           "next step.";
}

std::vector<std::string> NamesOf(const std::vector<std::string>& ordered, const Range& range) {
    const auto begin = ordered.begin() + static_cast<std::ptrdiff_t>(range.first);
    return {begin, begin + static_cast<std::ptrdiff_t>(range.Size())};
}

void AddSearchTable(const ExplainedTest& test, const SubsetRule& rule, const SubsetSearch& search) {
    std::vector<ExplanationTable::Column> columns{{"step"}, {"samples", true}};
    columns.insert(columns.end(), rule.columns.begin(), rule.columns.end());
    columns.insert(columns.end(), {{"p"}, {"p adjusted"}, {"decision", true}});
    const Number level(test.view.document->sigLevel);
    ExplanationTable& table = test.steps.Comparison(TitleOf(rule, search.SampleCount(), level), columns);
    AddRows(table, search.Tested().size(), [&](std::size_t row) {
        const TestedRange& one = search.Tested()[row];
        std::vector<std::string> cells = one.subset.cells;
        cells.insert(cells.begin(), {one.step == 0 ? "" : std::to_string(one.step),
                                     MembersText(NamesOf(test.Reading().orderedSamples, one.range))});
        cells.push_back(one.subset.isTestable ? ShortText(one.subset.p) : "");
        cells.push_back(one.subset.isTestable ? ShortText(one.adjusted) : "");
        cells.push_back(TextOf(one.decision));
        return cells;
    });
}

/// The samples with what they are ordered by; whether the result has them in that order.
void AddOrder(const ExplainedTest& test, const SubsetRule& rule, const std::vector<std::size_t>& order) {
    if (rule.orderedBy.empty()) return;
    ExplanationTable& table =
        test.steps.Comparison("Samples in the order of the search", {{"sample", true}, {rule.orderedBy}});
    AddRows(table, order.size(), [&](std::size_t position) {
        const std::size_t place = order[position];
        return std::vector<std::string>{test.view.names[place], CalculatorText(rule.orderValues[place])};
    });
    for (std::size_t i = 1; i < order.size(); ++i) {
        const double before = rule.orderValues[order[i - 1]];
        const double own = rule.orderValues[order[i]];
        if (own < before && !test.steps.Agree(own, before)) {
            test.steps.TellOther(test.view.names[order[i]] + " comes before " + test.view.names[order[i - 1]] +
                                 " here and behind it there");
        }
    }
}

void NoteLoners(const ExplainedTest& test) {
    std::vector<std::string> loners;
    for (const HomogeneousSubset& subset : test.Reading().subsets) {
        if (subset.members.size() == 1) loners.push_back(subset.members.front());
    }
    if (!loners.empty()) test.steps.Note("In no subset with another sample: " + JoinList(loners, ", ") + ".");
}

// ---- Against the document ----

void CompareNumbers(StepWriter& steps, const std::string& name, const TestedRange& ours,
                    const HomogeneousSubset& document, std::size_t sampleCount) {
    if (ours.subset.isTestable == document.p.empty()) {
        return steps.TellOther(name + (document.p.empty() ? " has numbers here alone" : " has no numbers here"));
    }
    if (!ours.subset.isTestable) return;
    const auto compare = [&](const char* what, double value, const Number& theirs) {
        if (!theirs.empty() && !steps.Agree(value, theirs.value)) {
            steps.TellOther(name + ", " + what, value, theirs.value);
        }
    };
    compare("statistic", ours.subset.statistic, document.statistic);
    compare("p", ours.subset.p, document.p);
    const double exponent = static_cast<double>(sampleCount) / static_cast<double>(ours.range.Size());
    if (!document.adjustedP.empty() && !steps.AgreeAdjusted(ours.adjusted, document.adjustedP.value, exponent)) {
        steps.TellOther(name + ", p adjusted", ours.adjusted, document.adjustedP.value);
    }
}

Range RangeOf(const HomogeneousSubset& subset, const NamePlaces& positions) {
    const std::size_t first = positions.Of(subset.members.front());
    return {first, first + subset.members.size() - 1};
}

/// Each subset of the document among the tested ones, number by number.
void CompareSubsets(const ExplainedTest& test, const SubsetSearch& search, const NamePlaces& positions) {
    for (const HomogeneousSubset& subset : test.Reading().subsets) {
        const Range range = RangeOf(subset, positions);
        if (range.Size() == 1) continue;
        const auto isIt = [&](const TestedRange& one) { return one.range == range && one.IsFound(); };
        const auto found = std::ranges::find_if(search.Tested(), isIt);
        const std::string name = MembersText(subset.members);
        if (found == search.Tested().end()) {
            test.steps.TellOther("the subset " + name + " is there and not here");
        } else {
            CompareNumbers(test.steps, name, *found, subset, search.SampleCount());
        }
    }
}

/// Whether both have the same subsets, those of one sample among them.
void CompareFound(const ExplainedTest& test, const SubsetSearch& search, const NamePlaces& positions) {
    const std::vector<std::string>& ordered = test.Reading().orderedSamples;
    std::vector<Range> theirs;
    for (const HomogeneousSubset& subset : test.Reading().subsets) theirs.push_back(RangeOf(subset, positions));
    std::vector<Range> ours;
    for (const TestedRange& one : search.Tested()) ours.push_back(one.range);
    for (std::size_t i = 0; i < ordered.size(); ++i) ours.push_back({i, i});
    for (const Range& range : ours) {
        const bool isThere = std::ranges::find(theirs, range) != theirs.end();
        if (search.IsSubset(range) == isThere) continue;
        test.steps.TellOther("the subset " + MembersText(NamesOf(ordered, range)) +
                             (isThere ? " is there and not here" : " is here and not there"));
    }
}

/// Beyond that a search of all runs takes longer than a reader waits, and has more steps than anybody reads.
bool CanBeSearched(const TestView& view) {
    constexpr std::size_t kMostSamples = 50;
    constexpr double kMostValuesOfAllRuns = 2e7;
    double values = 0;
    for (const AscendingSample& sample : view.samples) values += static_cast<double>(sample.values.size());
    const auto count = static_cast<double>(view.samples.size());
    return view.samples.size() <= kMostSamples && values * count * (count - 1) / 2 <= kMostValuesOfAllRuns;
}

}  // namespace

std::string FewText(const std::vector<std::string>& texts) {
    constexpr std::size_t kMost = 5;
    constexpr std::size_t kFirst = 3;
    if (texts.size() <= kMost) return JoinList(texts, "; ");
    return JoinList(std::vector<std::string>(texts.begin(), texts.begin() + kFirst), "; ") + "; ...; " + texts.back();
}

double AdjustedForSubset(double p, std::size_t size, std::size_t sampleCount) {
    if (size + 1 >= sampleCount) return p;
    const double exponent = static_cast<double>(sampleCount) / static_cast<double>(size);
    return -std::expm1(exponent * std::log1p(-p));
}

void AddSubsets(const ExplainedTest& test, const SubsetRule& rule) {
    const TestReading& reading = test.Reading();
    if (reading.subsets.empty()) return;
    const NamePlaces places(test.view.names);
    std::vector<std::size_t> order;
    for (const std::string& name : reading.orderedSamples) order.push_back(places.Of(name));
    if (order.size() < 2 || std::ranges::max(order) >= test.view.names.size()) return;
    const bool isSearched = CanBeSearched(test.view);
    AddOrder(test, rule, order);
    const NamePlaces positions(reading.orderedSamples);
    SubsetSearch search(rule, std::move(order), Number(test.view.document->sigLevel).value);
    if (isSearched) {
        search.Run();
    } else {
        for (const HomogeneousSubset& subset : reading.subsets) {
            if (subset.members.size() > 1) search.Take(RangeOf(subset, positions));
        }
        test.steps.Note(
            "Of the search the subsets that it found are shown alone, since there are many samples or cases.");
    }
    AddSearchTable(test, rule, search);
    NoteLoners(test);
    CompareSubsets(test, search, positions);
    if (isSearched) CompareFound(test, search, positions);
    test.steps.TellCompared("all those of the subsets");
}

}  // namespace tarn
