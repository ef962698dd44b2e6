#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/engine/AnalysisRequest.h"
#include "host/engine/NamedFields.h"
#include "host/table/RecordSelection.h"
#include "host/table/Table.h"
#include "host/words/Condition.h"
#include "host/words/Formula.h"

namespace tarn {

/// A field with something that is said of it.
struct FieldWord {
    std::string field;
    std::string word;
};

/// What a user says of an analysis beside its options, which all of it ends in.
struct AnalysisWords {
    std::string formula;
    std::string where;                  ///< a condition on the records
    std::string split;                  ///< the field within whose categories everything is tested
    std::string within;                 ///< the condition of repeated measures in long form
    std::string subject;                ///< their subject
    std::vector<FieldWord> references;  ///< categories that are to stand first
    std::vector<FieldWord> labels;      ///< titles of fields
};

/// An analysis in the words of the engine's host: all records, or those of one category.
struct AnalysisPart {
    std::string field;     ///< that splits the records; "" for none
    std::string category;  ///< of it, as a reader is shown it
    Table table;
    AnalysisOptions options;
    std::vector<std::string> notes;  ///< of this part, as sentences
    RecordSelection selection = {};  ///< of the table's records to those of the part
};

/// An analysis with its words. Mistakes in the words themselves are found before the table is read.
class WordedAnalysis {
 public:
    /// Throws an `InputError` for words that can't be read or that contradict the options.
    WordedAnalysis(AnalysisWords words, AnalysisOptions options);

    /// The names of fields as they were typed, patterns among them, each as often as it stands there.
    std::vector<std::string> Names() const;
    /// The fields that may be read.
    NamedFields Fields() const;
    /// The field that is nominal unless its level is given.
    std::optional<std::string> NominalByDefault() const;

    /// The parts, one without a field that splits. Names are looked up, patterns become fields, records are chosen, and
    /// repeated measures in long form become a field for each condition. `notes` takes what holds for all parts.
    /// `levels`: the fields whose levels were given. Throws an `InputError`.
    std::vector<AnalysisPart> PartsOf(Table table, const std::vector<std::string>& levels,
                                      std::vector<std::string>& notes);

 private:
    class Resolution;

    AnalysisWords words_;
    AnalysisOptions options_;
    std::optional<Formula> formula_;
    std::optional<Condition> where_;
};

}  // namespace tarn
