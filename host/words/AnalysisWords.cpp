#include "host/words/AnalysisWords.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/InputError.h"
#include "host/NearestNames.h"
#include "host/TextList.h"
#include "host/table/TableParts.h"
#include "host/words/FieldNames.h"
#include "host/words/RepeatedMeasures.h"

namespace tarn {

namespace {

constexpr std::size_t kMostParts = 200;
/// Whole numbers up to so many different ones may be codes of groups.
constexpr std::size_t kMostCodes = 20;
/// More than a few codes have some records each.
constexpr std::size_t kFewCodes = 5;
constexpr std::size_t kRecordsOfCode = 5;

/// Fails for options that say what the formula says, too.
void CheckAlone(const AnalysisOptions& options, const AnalysisWords& words) {
    const std::pair<const char*, bool> others[] = {{"--one-sample", !options.oneSample.empty()},
                                                   {"--related", !options.related.empty()},
                                                   {"--independent", !options.independent.empty()},
                                                   {"--group", !options.group.empty()},
                                                   {"--within", !words.within.empty()},
                                                   {"--id", !words.subject.empty()}};
    for (const auto& other : others) {
        if (!other.second) continue;
        throw InputError("formula " + Quoted(words.formula) + ": says which fields, and so does " + other.first +
                         "; expected one of them");
    }
}

std::vector<std::string> TextsOf(const std::vector<Word>& words) {
    std::vector<std::string> texts;
    for (const Word& word : words) texts.push_back(word.text);
    return texts;
}

/// "12 of 40 records", "1 of 1 record"
std::string Share(std::size_t some, std::size_t all) {
    return std::to_string(some) + " of " + std::to_string(all) + (all == 1 ? " record" : " records");
}

}  // namespace

WordedAnalysis::WordedAnalysis(AnalysisWords words, AnalysisOptions options)
    : words_(std::move(words)), options_(std::move(options)) {
    if (!words_.where.empty()) where_.emplace(words_.where);
    if (!words_.formula.empty()) {
        CheckAlone(options_, words_);
        formula_ = ParseFormula(words_.formula);
        const std::vector<std::string> values = TextsOf(formula_->values);
        switch (formula_->kind) {
            case FormulaKind::kOneSample:
                options_.oneSample = values;
                options_.familyOrder = {TestFamily::kOneSample};
                break;
            case FormulaKind::kGroups:
                options_.independent = values;
                options_.group = formula_->by.text;
                options_.familyOrder = {TestFamily::kIndependent};
                break;
            case FormulaKind::kRepeated:
                options_.related = values;
                options_.familyOrder = {TestFamily::kRelated};
                words_.within = formula_->by.text;
                words_.subject = formula_->subject.text;
                break;
        }
    }
    // Pairs are compared one by one, or there would be none to choose from.
    if (!options_.against.empty() && options_.compare.empty()) options_.compare = "pairwise";
    if (words_.within.empty() != words_.subject.empty()) {
        throw InputError(words_.subject.empty()
                             ? "--within: no subjects; expected --id with the field that names them"
                             : "--id: no conditions; expected --within with the field that has them (--case-id names "
                               "the cases of other analyses)");
    }
    if (words_.within.empty()) return;
    if (options_.related.size() != 1 || !options_.oneSample.empty() || !options_.independent.empty()) {
        throw InputError("--within: expected --related with the one field that was measured, and no other fields");
    }
}

std::vector<std::string> WordedAnalysis::Names() const {
    std::vector<std::string> names;
    const auto add = [&names](const std::vector<std::string>& more) {
        names.insert(names.end(), more.begin(), more.end());
    };
    add(options_.oneSample);
    add(options_.related);
    add(options_.independent);
    for (const std::string* field :
         {&options_.group, &options_.caseId, &words_.split, &words_.within, &words_.subject}) {
        if (!field->empty()) names.push_back(*field);
    }
    if (where_) add(where_->Names());
    return names;
}

NamedFields WordedAnalysis::Fields() const {
    NamedFields fields;
    for (const std::string& name : Names()) fields.AddLike(name);
    return fields;
}

std::optional<std::string> WordedAnalysis::NominalByDefault() const {
    const std::string& field = words_.within.empty() ? options_.group : words_.within;
    return field.empty() ? std::nullopt : std::optional(field);
}

// ---- The words beside a table ----

class WordedAnalysis::Resolution {
 public:
    Resolution(const WordedAnalysis& asked, Table table, const std::vector<std::string>& levels)
        : asked_(asked),
          words_(asked.words_),
          options_(asked.options_),
          levels_(levels),
          table_(std::move(table)),
          names_(table_) {}

    std::vector<AnalysisPart> Parts(std::vector<std::string>& notes) {
        // Where other tables are made of it, what there is to know of the one that was read is said for all of them.
        const bool isRemade = asked_.where_ || !words_.split.empty() || !words_.within.empty();
        if (isRemade) notes.insert(notes.end(), table_.Notes().begin(), table_.Notes().end());
        selection_.ofTable = table_.RowCount();
        ResolveNames();
        CheckGroups();
        Arrange();
        ChooseRecords();
        std::vector<AnalysisPart> parts = Split();
        for (AnalysisPart& part : parts) {
            if (words_.within.empty()) continue;
            WideTable wide = WidenBySubject(part.table, {options_.related.front(), words_.within, words_.subject});
            part.table = std::move(wide.table);
            part.options.related = std::move(wide.fields);
            // A condition may be named as its category.
            const std::string field = words_.within + "=" + part.options.against;
            if (std::ranges::find(part.options.related, field) != part.options.related.end())
                part.options.against = field;
            part.options.caseId.clear();
            part.notes.insert(part.notes.end(), wide.notes.begin(), wide.notes.end());
            part.selection.placeless = wide.placeless;
        }
        notes.insert(notes.end(), names_.Notes().begin(), names_.Notes().end());
        notes.insert(notes.end(), notes_.begin(), notes_.end());
        return parts;
    }

 private:
    std::size_t IndexOf(const std::string& field) const { return static_cast<std::size_t>(table_.FindColumn(field)); }

    [[noreturn]] void FailAt(const Word& word, const std::string& mistake) const {
        throw InputError("formula " + Quoted(words_.formula) + ": at column " + std::to_string(word.column) + ": " +
                         mistake);
    }

    /// A field that has to be there.
    void Require(std::string& field, const char* option) {
        if (field.empty()) return;
        const std::string found = names_.Find(field);
        if (found.empty()) throw InputError(std::string(option) + ": " + names_.Mistake(field));
        field = found;
    }
    /// A field whose absence is told with those of the request.
    void Resolve(std::string& field) {
        if (const std::string found = names_.Find(field); !found.empty()) field = found;
    }

    void ResolveNames() {
        if (asked_.formula_) CheckFormula();
        Resolve(options_.group);
        Resolve(options_.caseId);
        Require(words_.split, "--split");
        Require(words_.within, "--within");
        Require(words_.subject, "--id");
        for (FieldOrder& order : options_.orders) Resolve(order.field);
        const auto isTaken = [&](const std::string& field) {
            const bool isWeight = table_.WeightIndex() != Table::kNoColumn &&
                                  IndexOf(field) == static_cast<std::size_t>(table_.WeightIndex());
            return isWeight || field == options_.group || field == options_.caseId || field == words_.split ||
                   field == words_.within || field == words_.subject;
        };
        options_.oneSample = names_.Expand(options_.oneSample, "--one-sample", isTaken);
        options_.related = names_.Expand(options_.related, "--related", isTaken);
        options_.independent = names_.Expand(options_.independent, "--independent", isTaken);
        if (words_.within.empty()) return;
        if (options_.related.size() > 1) {
            throw InputError("--within: " + JoinList(options_.related) +
                             " are several fields; repeated measures are of one at a time");
        }
        Require(options_.related.front(), "--related");
    }

    void CheckFormula() {
        const auto check = [&](const Word& word) {
            if (names_.Find(word.text).empty() && !IsPattern(word.text)) FailAt(word, names_.Mistake(word.text));
        };
        for (const Word& value : asked_.formula_->values) check(value);
        const Formula& formula = *asked_.formula_;
        if (formula.kind != FormulaKind::kOneSample) check(formula.by);
        if (formula.kind == FormulaKind::kRepeated) check(formula.subject);
    }

    bool IsLevelTold(const std::string& field) const {
        return std::ranges::any_of(levels_, [&](const std::string& told) { return AreLike(told, field); });
    }

    void MakeCategories(const std::string& field) {
        const Column& column = table_.Columns()[IndexOf(field)];
        const bool isTold = IsLevelTold(field);
        if (!column.IsCategorical() && !isTold) MakeNominal(table_, IndexOf(field));
    }

    /// 'after ~ before': what looks like a measurement is not cut into groups for every single value.
    void CheckGroups() const {
        if (!asked_.formula_ || asked_.formula_->kind != FormulaKind::kGroups) return;
        const Column& column = table_.Columns()[IndexOf(options_.group)];
        if (IsLevelTold(column.name)) return;
        const bool isNumber = column.isInferred && !column.IsText() && column.listedCount == 0;
        const bool isFraction = std::ranges::any_of(
            column.categories, [](const Category& category) { return category.number != std::floor(category.number); });
        const std::size_t codes = column.categories.size();
        const bool isSparse = codes > kFewCodes && table_.RowCount() < kRecordsOfCode * codes;
        if (!isNumber || (!isFraction && codes <= kMostCodes && !isSparse)) return;
        const std::vector<std::string> pair{column.name, options_.independent.front()};
        FailAt(asked_.formula_->by,
               column.name + " has " + std::to_string(column.categories.size()) +
                   " different numbers, which look like a measurement and not like groups; for a pair of fields type " +
                   "--related " + ForShell(JoinList(pair, ",")) + ", for groups --nominal " + ForShell(column.name) +
                   " beside the formula");
    }

    /// A sample by the name that its pairs have.
    void ResolveAgainst() {
        if (options_.against.empty() || options_.group.empty()) return;
        const int group = table_.FindColumn(options_.group);
        if (group == Table::kNoColumn) return;
        const Column& column = table_.Columns()[static_cast<std::size_t>(group)];
        if (const Category* const category = FindCategory(column, options_.against)) {
            options_.against = ShownCategory(column, *category);
        }
    }

    /// Puts the references first and gives the titles.
    void Arrange() {
        ResolveAgainst();
        for (const auto& [typed, word] : words_.references) {
            std::string field = typed;
            Require(field, "--reference");
            if (field == options_.group) MakeCategories(field);
            const Column& column = table_.Columns()[IndexOf(field)];
            if (!column.IsCategorical()) {
                throw InputError("--reference: " + field + " has no categories; expected --nominal " + ForShell(field));
            }
            if (column.IsOrderTold()) {
                throw InputError(
                    "--reference: the categories of " + field +
                    " have an order already, from the lowest to the highest; expected --order or --reference");
            }
            const Category* const category = FindCategory(column, word);
            if (category == nullptr) FailAtCategory("--reference", column, word);
            PutFirst(table_, IndexOf(field), static_cast<std::size_t>(category - column.categories.data()));
        }
        for (const auto& [typed, word] : words_.labels) {
            std::string field = typed;
            Require(field, "--label");
            table_.ColumnAt(IndexOf(field)).title = word;
        }
    }

    [[noreturn]] static void FailAtCategory(const char* option, const Column& column, const std::string& word) {
        std::vector<std::string> shown;
        for (const Category& category : column.categories) shown.push_back(ShownCategory(column, category));
        const std::vector<std::string_view> known(shown.begin(), shown.end());
        const std::vector<std::string_view> nearest = NearestNames(word, known);
        throw InputError(std::string(option) + ": " + column.name + " has no category " + Quoted(word) +
                         (nearest.empty() ? "; it has " + Alternatives(known, " and ") : DidYouMean(nearest)));
    }

    void ChooseRecords() {
        if (!asked_.where_) return;
        const std::vector<std::size_t> records = asked_.where_->RecordsOf(table_, names_);
        const std::string what = "--where " + Quoted(words_.where, 60);
        if (records.empty()) {
            throw InputError(what + ": is true of none of " + std::to_string(table_.RowCount()) + " records");
        }
        selection_.byCondition = table_.RowCount() - records.size();
        notes_.push_back(what + " keeps " + Share(records.size(), table_.RowCount()));
        table_ = RecordsOf(table_, records);
    }

    std::vector<AnalysisPart> Split() {
        std::vector<AnalysisPart> parts;
        if (words_.split.empty()) {
            parts.push_back({{}, {}, std::move(table_), options_, {}, selection_});
            return parts;
        }
        CheckSplit();
        const std::size_t index = IndexOf(words_.split);
        if (!table_.Columns()[index].IsCategorical()) MakeNominal(table_, index);
        const Column& column = table_.Columns()[index];
        std::vector<std::vector<std::size_t>> records(column.categories.size());
        std::size_t missing = 0;
        for (std::size_t row = 0; row < table_.RowCount(); ++row) {
            const double cell = table_.Cells(index)[row];
            if (cell == kMissingCategory) {
                ++missing;
            } else {
                records[static_cast<std::size_t>(cell)].push_back(row);
            }
        }
        if (records.size() > kMostParts) {
            throw InputError("--split: " + words_.split + " has " + std::to_string(records.size()) +
                             " different values; expected a field with at most " + std::to_string(kMostParts));
        }
        for (std::size_t i = 0; i < records.size(); ++i) {
            if (records[i].empty()) continue;
            const std::string category = ShownCategory(column, column.categories[i]);
            parts.push_back({words_.split, category, RecordsOf(table_, records[i]), options_, {}, selection_});
            parts.back().selection.bySplit = table_.RowCount() - records[i].size();
            parts.back().notes.push_back(Share(records[i].size(), table_.RowCount()));
        }
        if (parts.empty()) throw InputError("--split: " + words_.split + " has no value");
        if (missing > 0) {
            notes_.push_back("--split leaves out " + Share(missing, table_.RowCount()) +
                             (missing == 1 ? ", which misses " : ", which miss ") + words_.split);
        }
        return parts;
    }

    void CheckSplit() const {
        const std::string& split = words_.split;
        if (split == options_.group || split == words_.within) {
            throw InputError("--split: " + split +
                             " has the groups already, and within one of its categories there is "
                             "one group only; expected another field");
        }
        for (const auto* list : {&options_.oneSample, &options_.related, &options_.independent}) {
            if (std::ranges::find(*list, split) == list->end()) continue;
            throw InputError("--split: " + split + " is tested itself; expected another field");
        }
    }

    const WordedAnalysis& asked_;
    AnalysisWords words_;
    AnalysisOptions options_;
    const std::vector<std::string>& levels_;
    Table table_;
    FieldNames names_;
    std::vector<std::string> notes_;
    RecordSelection selection_;
};

std::vector<AnalysisPart> WordedAnalysis::PartsOf(Table table, const std::vector<std::string>& levels,
                                                  std::vector<std::string>& notes) {
    return Resolution(*this, std::move(table), levels).Parts(notes);
}

}  // namespace tarn
