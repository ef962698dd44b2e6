#include "host/analysis/AnalysisNotes.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "host/TestNames.h"
#include "host/engine/InputNotes.h"

namespace tarn {

namespace {

const std::vector<std::string>& FieldsOf(TestFamily family, const AnalysisOptions& analysis) {
    return family == TestFamily::kOneSample ? analysis.oneSample
           : family == TestFamily::kRelated ? analysis.related
                                            : analysis.independent;
}

/// The fields of all families and the groups, each once.
std::vector<std::string> FieldsAsked(const AnalysisOptions& analysis) {
    std::vector<std::string> fields;
    for (const auto* list : {&analysis.oneSample, &analysis.related, &analysis.independent}) {
        fields.insert(fields.end(), list->begin(), list->end());
    }
    if (!analysis.group.empty()) fields.push_back(analysis.group);
    std::vector<std::string> once;
    std::unordered_set<std::string> known;
    for (const std::string& field : fields) {
        if (known.insert(field).second) once.push_back(field);
    }
    return once;
}

}  // namespace

std::vector<std::string> NotesOn(const Table& table, const AnalysisOptions& options) {
    std::vector<std::string> asIndependent = options.independent;
    asIndependent.insert(asIndependent.end(), options.oneSample.begin(), options.oneSample.end());
    std::vector<std::string> notes = UnusedCategoryNotes(table, options.orders);
    const std::string missing = MissingTextsNote(table, FieldsAsked(options));
    if (!missing.empty()) notes.push_back(missing);
    for (const std::string& field : FieldsAsked(options)) {
        const int index = table.FindColumn(field);
        if (index == Table::kNoColumn) continue;
        for (std::string& note : CategoryNotes(table.Columns()[static_cast<std::size_t>(index)])) {
            notes.push_back(std::move(note));
        }
    }
    const auto isNamed = [&](const char* test) {
        return std::ranges::find(options.tests, test) != options.tests.end();
    };
    for (const std::string& field : options.independent) {
        const std::string note = isNamed("moses") ? TiesNote(table, field, "moses") : "";
        if (!note.empty()) notes.push_back(note);
    }
    const auto isCategorical = [&](const std::string& field) {
        const int index = table.FindColumn(field);
        return index != Table::kNoColumn && table.Columns()[static_cast<std::size_t>(index)].IsCategorical();
    };
    if (options.probability && options.success.empty() && std::ranges::any_of(options.oneSample, isCategorical)) {
        notes.emplace_back(
            "--probability is taken for the share of the category of the first record, as the null hypothesis says; "
            "--success names another one");
    }
    if (options.descending && !options.compare.empty()) {
        notes.emplace_back(
            "--descending is for the pairs and subsets of jonckheere, whose significances are those of falling values; "
            "that of the whole test is two-tailed");
    } else if (options.descending) {
        notes.emplace_back(
            "--descending changes nothing without --compare: the significance of jonckheere is two-tailed");
    }
    const std::string repeated = RepeatedCasesNote(table, options.caseId, asIndependent);
    if (!repeated.empty()) notes.push_back(repeated);
    return notes;
}

AskedOrder OrderOf(const AnalysisOptions& options) {
    AskedOrder order;
    for (const TestFamily family : options.familyOrder) {
        order.families.push_back({FamilyNameOf(family), FieldsOf(family, options)});
    }
    for (const std::string& name : options.tests) {
        for (const TestName& test : TestNames()) {
            if (test.name == name) order.tests.emplace_back(test.resultName);
        }
    }
    return order;
}

}  // namespace tarn
