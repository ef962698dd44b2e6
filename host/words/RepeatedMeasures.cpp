#include "host/words/RepeatedMeasures.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "host/InputError.h"
#include "host/NumberText.h"
#include "host/TextList.h"

namespace tarn {

namespace {

constexpr std::size_t kMostConditions = 100;
constexpr std::size_t kMostNamed = 10;

std::size_t IndexOf(const Table& table, const std::string& field) {
    return static_cast<std::size_t>(table.FindColumn(field));
}

double MissingCell(const Column& column) {
    return column.IsCategorical() ? kMissingCategory : kMissingNumber;
}

class Widening {
 public:
    Widening(const Table& table, const RepeatedMeasures& measures)
        : table_(table),
          measures_(measures),
          value_(IndexOf(table, measures.value)),
          condition_(IndexOf(table, measures.condition)),
          subject_(IndexOf(table, measures.subject)) {}

    WideTable Make() {
        CheckFields();
        NumberSubjects();
        ChooseConditions();
        WideTable wide;
        for (const std::size_t category : conditions_) wide.fields.push_back(NameOf(category));
        wide.table = Table(Columns(wide.fields));
        Fill(wide.table);
        wide.notes = Notes(wide.table);
        wide.placeless = placeless_;
        CheckPairs();
        return wide;
    }

 private:
    const Column& Of(std::size_t index) const { return table_.Columns()[index]; }

    std::string NameOf(std::size_t category) const {
        return measures_.condition + "=" + ShownCategory(Of(condition_), Of(condition_).categories[category]);
    }

    std::string SubjectAt(std::size_t row) const {
        const double cell = table_.Cells(subject_)[row];
        const Column& column = Of(subject_);
        return column.IsCategorical() ? ShownCategory(column, column.categories[static_cast<std::size_t>(cell)])
                                      : ExactText(cell);
    }

    void CheckFields() const {
        if (value_ == condition_ || value_ == subject_ || condition_ == subject_) {
            throw InputError("repeated measures: " + Quoted(Of(value_ == condition_ ? value_ : subject_).name) +
                             " stands twice; expected a value, a condition and a subject");
        }
    }

    bool HasPlace(std::size_t row) const {
        return table_.Cells(subject_)[row] != MissingCell(Of(subject_)) &&
               table_.Cells(condition_)[row] != kMissingCategory;
    }

    void NumberSubjects() {
        std::unordered_map<double, std::size_t> numbers;
        for (std::size_t row = 0; row < table_.RowCount(); ++row) {
            std::size_t number = kNoSubject;
            if (HasPlace(row)) {
                const auto found = numbers.try_emplace(table_.Cells(subject_)[row], firstRows_.size());
                if (found.second) firstRows_.push_back(row);
                number = found.first->second;
            } else {
                ++placeless_;
            }
            subjectOf_.push_back(number);
        }
    }

    /// The categories that have records.
    void ChooseConditions() {
        std::vector<bool> occurs(Of(condition_).categories.size(), false);
        for (std::size_t row = 0; row < table_.RowCount(); ++row) {
            if (HasPlace(row)) occurs[static_cast<std::size_t>(table_.Cells(condition_)[row])] = true;
        }
        placeOf_.assign(occurs.size(), 0);
        for (std::size_t category = 0; category < occurs.size(); ++category) {
            placeOf_[category] = conditions_.size();
            if (occurs[category]) conditions_.push_back(category);
        }
        const std::string& name = Of(condition_).name;
        const std::string has = Quoted(name) + " has " + std::to_string(conditions_.size()) +
                                (conditions_.size() == 1 ? " value" : " different values");
        if (conditions_.size() < 2)
            throw InputError("repeated measures: " + has + "; expected at least two conditions");
        if (conditions_.size() > kMostConditions) {
            throw InputError("repeated measures: " + has + ", too many for a condition; expected " +
                             Quoted(measures_.value + " ~ CONDITION | SUBJECT"));
        }
    }

    std::vector<Column> Columns(const std::vector<std::string>& fields) const {
        std::vector<Column> columns;
        for (const std::string& field : fields) {
            Column column = Of(value_);
            column.name = field;
            column.title.clear();
            columns.push_back(std::move(column));
        }
        columns.push_back(Of(subject_));
        const auto weight = static_cast<std::size_t>(table_.WeightIndex());
        if (table_.WeightIndex() == Table::kNoColumn) return columns;
        if (weight == value_ || weight == subject_ || weight == condition_) {
            throw InputError("repeated measures: " + Quoted(Of(weight).name) + " is the field of the weights, too");
        }
        columns.push_back(Of(weight));
        return columns;
    }

    void Fill(Table& wide) const {
        const std::size_t subjects = firstRows_.size();
        wide.Reserve(subjects);
        wide.Resize(subjects);
        const std::size_t fields = conditions_.size();
        for (std::size_t i = 0; i < fields; ++i) std::ranges::fill(wide.Cells(i), MissingCell(Of(value_)));
        for (std::size_t subject = 0; subject < subjects; ++subject) {
            wide.Cells(fields)[subject] = table_.Cells(subject_)[firstRows_[subject]];
        }
        std::vector<bool> isFilled(subjects * fields, false);
        for (std::size_t row = 0; row < table_.RowCount(); ++row) {
            if (subjectOf_[row] == kNoSubject) continue;
            const auto category = static_cast<std::size_t>(table_.Cells(condition_)[row]);
            const std::size_t place = placeOf_[category];
            const std::size_t cell = subjectOf_[row] * fields + place;
            if (isFilled[cell]) {
                throw InputError("repeated measures: the subject " + Quoted(SubjectAt(row)) + " of " +
                                 Of(subject_).name + " has two records for " + NameOf(category) +
                                 "; expected one, or --split " + Of(subject_).name + " to test each by itself");
            }
            isFilled[cell] = true;
            wide.Cells(place)[subjectOf_[row]] = table_.Cells(value_)[row];
        }
        FillWeights(wide, fields + 1);
    }

    /// Somebody has to be measured twice, or the conditions are groups of different subjects.
    void CheckPairs() const {
        std::vector<std::size_t> records(firstRows_.size(), 0);
        for (const std::size_t subject : subjectOf_) {
            if (subject != kNoSubject && ++records[subject] > 1) return;
        }
        throw InputError("repeated measures: no subject of " + Of(subject_).name +
                         " has records for two conditions of " + Of(condition_).name +
                         "; for groups of different subjects type '" + measures_.value + " ~ " + measures_.condition +
                         "'");
    }

    void FillWeights(Table& wide, std::size_t column) const {
        if (table_.WeightIndex() == Table::kNoColumn) return;
        const std::span<const double> weights = table_.Cells(static_cast<std::size_t>(table_.WeightIndex()));
        for (std::size_t subject = 0; subject < firstRows_.size(); ++subject) {
            wide.Cells(column)[subject] = weights[firstRows_[subject]];
        }
        for (std::size_t row = 0; row < table_.RowCount(); ++row) {
            if (subjectOf_[row] == kNoSubject || weights[row] == wide.Cells(column)[subjectOf_[row]]) continue;
            throw InputError("repeated measures: the subject " + Quoted(SubjectAt(row)) + " of " + Of(subject_).name +
                             " has different weights; expected one in all its records");
        }
        wide.SetWeightIndex(static_cast<int>(column));
    }

    /// "s3 (no b)"
    std::string Incomplete(const Table& wide, std::size_t subject, const std::vector<std::size_t>& lacking) const {
        std::vector<std::string> names;
        for (const std::size_t place : lacking) names.push_back(wide.Columns()[place].name);
        return SubjectAt(firstRows_[subject]) + " (no " + JoinList(names) + ")";
    }

    std::vector<std::string> Notes(const Table& wide) const {
        std::size_t complete = 0;
        std::vector<std::string> incomplete;
        for (std::size_t subject = 0; subject < firstRows_.size(); ++subject) {
            std::vector<std::size_t> lacking;
            for (std::size_t i = 0; i < conditions_.size(); ++i) {
                if (wide.Cells(i)[subject] == MissingCell(Of(value_))) lacking.push_back(i);
            }
            if (lacking.empty()) {
                ++complete;
            } else if (incomplete.size() < kMostNamed) {
                incomplete.push_back(Incomplete(wide, subject, lacking));
            }
        }
        const std::size_t left = firstRows_.size() - complete - incomplete.size();
        std::string note = measures_.value + " of " + std::to_string(firstRows_.size()) +
                           (firstRows_.size() == 1 ? " subject (" : " subjects (") + measures_.subject + ") at " +
                           std::to_string(conditions_.size()) + " conditions (" + measures_.condition +
                           "): " + std::to_string(complete) + " complete";
        if (!incomplete.empty()) note += "; incomplete: " + JoinList(incomplete);
        if (left > 0) note += " and " + std::to_string(left) + " more";
        std::vector<std::string> notes{std::move(note)};
        if (placeless_ > 0) {
            notes.push_back(std::to_string(placeless_) +
                            (placeless_ == 1 ? " record that misses " : " records that miss ") + measures_.subject +
                            " or " + measures_.condition + (placeless_ == 1 ? " is left out" : " are left out"));
        }
        return notes;
    }

    static constexpr std::size_t kNoSubject = static_cast<std::size_t>(-1);

    const Table& table_;
    const RepeatedMeasures& measures_;
    std::size_t value_;
    std::size_t condition_;
    std::size_t subject_;
    std::vector<std::size_t> firstRows_;   // of each subject
    std::vector<std::size_t> subjectOf_;   // each record
    std::vector<std::size_t> conditions_;  // the categories that have records
    std::vector<std::size_t> placeOf_;     // of each category among them
    std::size_t placeless_ = 0;            // records without a subject or a condition
};

}  // namespace

WideTable WidenBySubject(const Table& table, const RepeatedMeasures& measures) {
    return Widening(table, measures).Make();
}

}  // namespace tarn
