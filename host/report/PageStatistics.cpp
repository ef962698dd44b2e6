#include "host/report/PageStatistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "host/TextList.h"
#include "host/report/PageNumbers.h"
#include "host/report/SupplementText.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

constexpr const char* kChiSquare = "chi2";

/// How the statistic of a test is written.
struct StatisticForm {
    const TestFacts* test;
    const char* symbol;
    bool hasSides;  ///< whether its significance is of one side or of two
};
constexpr std::array kForms{
    StatisticForm{&Tests::kMannWhitney, "U", true},
    StatisticForm{&Tests::kKolmogorovSmirnovTwoSample, "D", true},
    StatisticForm{&Tests::kKolmogorovSmirnov, "D", false},
    StatisticForm{&Tests::kWaldWolfowitz, "R", true},
    StatisticForm{&Tests::kMoses, "span", true},
    StatisticForm{&Tests::kKruskalWallis, "H", false},
    StatisticForm{&Tests::kJonckheereTerpstra, "J", true},
    StatisticForm{&Tests::kSign, "S", true},
    StatisticForm{&Tests::kWilcoxonPairs, "T", true},
    StatisticForm{&Tests::kWilcoxonOneSample, "T", true},
    StatisticForm{&Tests::kCochran, "Q", false},
    StatisticForm{&Tests::kMarginalHomogeneity, "sum of scores", true},
    StatisticForm{&Tests::kBinomial, "X", true},
    StatisticForm{&Tests::kRuns, "R", true},
};

/// Figures of the document that a reader wants beside the statistic. All others stand in tables or in the statistic.
constexpr std::array<std::string_view, 7> kShownFigures{"Median",   "OutliersTrimmedFromEachEnd", "Positive",
                                                        "Negative", "PositiveDifferences",        "NegativeDifferences",
                                                        "Ties"};

PageFigure FigureOf(std::string key, std::string symbol, std::string text, const Number& number,
                    std::string remark = "") {
    PageFigure figure;
    figure.key = std::move(key);
    figure.symbol = std::move(symbol);
    figure.relation = std::isnan(number.value) ? "" : "=";
    figure.text = std::move(text);
    figure.number = number;
    figure.remark = std::move(remark);
    return figure;
}

class Lines {
 public:
    Lines(const TestReading& reading, const std::vector<std::string>& classes) : reading_(reading), classes_(classes) {
        const auto form = std::ranges::find_if(
            kForms, [&](const StatisticForm& each) { return each.test->resultName == reading.name; });
        symbol_ = form == kForms.end() ? kChiSquare : form->symbol;
        hasSides_ = form != kForms.end() && form->hasSides;
        for (const StatisticSet& set : reading.statistics) pCount_ += set.pValues.size();
        pCount_ += reading.supplement.pValues.size();
    }

    std::vector<PageLine> All() const {
        std::vector<PageLine> lines;
        if (reading_.isEstimate || reading_.statistics.empty()) return lines;
        const SuppliedPValue* const chosen = Chosen();
        if (chosen != nullptr) lines.push_back(ChosenLine(*chosen));
        // The last set decides.
        for (auto set = reading_.statistics.rbegin(); set != reading_.statistics.rend(); ++set) AddSet(*set, lines);
        for (const SuppliedPValue& p : reading_.supplement.pValues) {
            if (&p != chosen) lines.push_back({"", SuppliedFigures(p)});
        }
        if (PageLine others = OtherFigures(); !others.figures.empty()) lines.push_back(std::move(others));
        return lines;
    }

 private:
    bool Is(const TestFacts& test) const { return reading_.name == test.resultName; }

    const Figure* Find(std::string_view key) const {
        const auto found = std::ranges::find(reading_.figures, key, &Figure::key);
        return found == reading_.figures.end() || found->value.empty() ? nullptr : &*found;
    }

    /// The significance by the user's choices; null for none.
    const SuppliedPValue* Chosen() const {
        const Supplement& supplement = reading_.supplement;
        if (supplement.chosenP.empty()) return nullptr;
        const auto found = std::ranges::find(supplement.pValues, supplement.chosenP, &SuppliedPValue::value);
        return found == supplement.pValues.end() ? nullptr : &*found;
    }

    static std::string BeyondRange(std::string remark) {
        return (remark.empty() ? "" : std::move(remark) + " ") + "(beyond the engine's range)";
    }
    std::string Marked(Quantity quantity, std::string remark) const {
        return reading_.IsBeyondRange(quantity) ? BeyondRange(std::move(remark)) : remark;
    }

    // ---- The statistic ----

    std::string StatisticRemark() const {
        const Direction& direction = reading_.direction;
        if (Is(Tests::kMannWhitney)) {
            const Figure* const other = Find("MannWhitneyU");
            if (direction.IsEmpty() || other == nullptr) return "";
            return "for " + direction.first + " (" + CountText(other->value) + " for " + direction.second + ")";
        }
        if (Is(Tests::kWilcoxonPairs) || Is(Tests::kWilcoxonOneSample)) {
            return direction.IsEmpty() ? "" : "for " + direction.Text();
        }
        if (Is(Tests::kBinomial))
            return "of " + CountText(reading_.n) + " " + (classes_.empty() ? "in the first class" : classes_.front());
        if (Is(Tests::kRuns)) {
            const Figure* const expected = Find("Mean");
            return expected == nullptr ? "" : "(" + FixedText(expected->value.value, 1) + " expected)";
        }
        return "";
    }

    std::string Text(const Number& statistic) const {
        const bool isSquare = symbol_ == kChiSquare || symbol_ == "H" || symbol_ == "Q";
        return isSquare ? StatisticText(statistic) : CountText(statistic);
    }

    /// What comes in front of the significance of a set.
    std::vector<PageFigure> StatisticFigures(const StatisticSet& set, const PValue* p) const {
        std::vector<PageFigure> figures;
        if (const Figure* const share = Is(Tests::kKendall) ? Find("KendallsW") : nullptr) {
            figures.push_back(FigureOf("coefficient", "W", ShareText(share->value.value), share->value));
        }
        if (const Figure* const distance = symbol_ == "D" ? Find("Absolute") : nullptr) {
            figures.push_back(FigureOf("statistic", "D", ShareText(distance->value.value), distance->value));
            return figures;
        }
        const Number& statistic = p == nullptr ? set.statistic : set.StatisticOf(*p);
        if (p != nullptr && p->ownStatistic && statistic.empty()) return figures;
        const bool isCorrected = p != nullptr && p->kind == PValueKind::kContinuityCorrected;
        const bool isOneOfTwo = std::ranges::any_of(
            set.pValues, [](const PValue& each) { return each.kind == PValueKind::kContinuityCorrected; });
        PageFigure figure = FigureOf("statistic", symbol_, Text(statistic), statistic,
                                     isCorrected  ? "with continuity correction"
                                     : isOneOfTwo ? "without continuity correction"
                                                  : StatisticRemark());
        figure.df = set.df;
        figure.remark = Marked(Quantity::kStatistic, figure.remark);
        if (Is(Tests::kMoses)) figure.symbol = set.label;
        figures.push_back(std::move(figure));
        return figures;
    }

    PageFigure ZOf(const Number& z, std::string remark) const {
        return FigureOf("z", "z", FixedText(z.value, 2), z, std::move(remark));
    }

    std::string RemarkOnZ() const {
        const bool hasDirection = Is(Tests::kSign) || Is(Tests::kMarginalHomogeneity);
        const std::string remark =
            hasDirection && !reading_.direction.IsEmpty() ? "for " + reading_.direction.Text() : "";
        return Marked(Quantity::kStandardized, remark);
    }

    // ---- Significances ----

    static std::string KindText(PValueKind kind) {
        if (kind == PValueKind::kFisher) return "Fisher's exact test";
        return kind == PValueKind::kContinuityCorrected ? "" : std::string(NameOf(kind));
    }

    /// "two-sided", or in brackets where there is more to say.
    static std::string RemarkOf(const std::vector<std::string>& parts) {
        const std::string joined = JoinList(parts);
        return parts.size() < 2 ? joined : "(" + joined + ")";
    }

    PageFigure PFigure(const Number& value, bool isBound, std::string remark) const {
        const WrittenP written = WriteP(value, isBound);
        PageFigure figure = FigureOf("p", "p", written.text, value, std::move(remark));
        figure.relation = written.relation;
        return figure;
    }

    /// Whether the document's exact significance is as if there were no ties, on which it remarks.
    bool IgnoresTies(const PValue& p) const {
        return Is(Tests::kMannWhitney) && p.kind == PValueKind::kExact && !reading_.remarks.empty();
    }

    PageFigure FigureOfP(const PValue& p) const {
        std::vector<std::string> parts;
        if (p.tails == 1) parts.emplace_back("one-sided");
        if (p.tails == 2 && hasSides_) parts.emplace_back("two-sided");
        const std::string kind = KindText(p.kind) + (IgnoresTies(p) ? ", ignoring ties" : "");
        const bool tellsKind = pCount_ > 1 || p.kind != PValueKind::kAsymptotic;
        if (tellsKind && !kind.empty()) parts.push_back(kind);
        return PFigure(p.value, p.isBound, Marked(Quantity::kPValue, RemarkOf(parts)));
    }

    void AddSet(const StatisticSet& set, std::vector<PageLine>& lines) const {
        const PValue* const leading = set.Leading();
        PageLine line{set.name, StatisticFigures(set, leading)};
        if (!set.standardized.empty()) line.figures.push_back(ZOf(set.standardized, RemarkOnZ()));
        if (leading != nullptr) line.figures.push_back(FigureOfP(*leading));
        lines.push_back(std::move(line));
        for (const PValue& p : set.pValues) {
            if (&p == leading) continue;
            // A significance of another statistic has it in its line.
            const bool hasOwn = p.ownStatistic.has_value() || leading->ownStatistic.has_value();
            PageLine other{set.name, hasOwn ? StatisticFigures(set, &p) : std::vector<PageFigure>()};
            other.figures.push_back(FigureOfP(p));
            lines.push_back(std::move(other));
        }
    }

    std::vector<PageFigure> SuppliedFigures(const SuppliedPValue& p) const {
        std::vector<PageFigure> figures;
        if (!p.standardized.empty()) figures.push_back(ZOf(p.standardized, ""));
        std::vector<std::string> parts;
        if (p.alternative != "two-sided") parts.emplace_back("one-sided");
        if (p.alternative == "two-sided" && hasSides_) parts.emplace_back("two-sided");
        if (!p.claim.empty()) parts.push_back(p.claim);
        parts.push_back(p.kind == "monte-carlo" ? "Monte Carlo" : p.kind);
        if (!p.method.empty()) parts.push_back(p.method);
        // The method ends with the level of the interval.
        if (!p.lower.empty()) parts.back() += " " + PCellText(p.lower) + " to " + PCellText(p.upper);
        figures.push_back(PFigure(p.value, false, RemarkOf(parts)));
        return figures;
    }

    PageLine ChosenLine(const SuppliedPValue& chosen) const {
        const StatisticSet& set = reading_.statistics.back();
        PageLine line{"", StatisticFigures(set, set.Leading())};
        // The test by choice may count otherwise than the document's.
        const bool hasOwn = !chosen.statistic.empty() && symbol_ != "D" && !line.figures.empty();
        if (hasOwn && chosen.statistic != set.statistic) {
            line.figures.back().text = Text(chosen.statistic);
            line.figures.back().number = chosen.statistic;
            if (Is(Tests::kMannWhitney)) line.figures.back().remark = "for " + reading_.direction.first;
        }
        for (PageFigure& figure : SuppliedFigures(chosen)) line.figures.push_back(std::move(figure));
        return line;
    }

    // ---- What else there is ----

    std::string LabelOf(const Figure& figure) const {
        const Direction& direction = reading_.direction;
        if (direction.IsEmpty()) return figure.label;
        if (figure.key == "PositiveDifferences") return direction.first + " above " + direction.second;
        if (figure.key == "NegativeDifferences") return direction.first + " below " + direction.second;
        return figure.label;
    }

    PageLine OtherFigures() const {
        PageLine line;
        for (const Figure& figure : reading_.figures) {
            const bool isShown = std::ranges::find(kShownFigures, figure.key) != kShownFigures.end();
            if (!isShown || figure.value.empty()) continue;
            const bool isShare = figure.key == "Positive" || figure.key == "Negative";
            // A median is in the unit of its field.
            line.figures.push_back(FigureOf("other", LabelOf(figure),
                                            isShare ? ShareText(figure.value.value) : FewDigits(figure.value),
                                            figure.value));
        }
        return line;
    }

    const TestReading& reading_;
    const std::vector<std::string>& classes_;
    std::string symbol_;
    bool hasSides_ = false;
    std::size_t pCount_ = 0;
};

}  // namespace

std::vector<PageLine> StatisticLines(const TestReading& reading, const std::vector<std::string>& classes) {
    return Lines(reading, classes).All();
}

}  // namespace tarn
