#include "host/report/CountTable.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

std::vector<std::vector<std::string>> RowsOf(const ResultTable& table) {
    std::vector<std::vector<std::string>> rows;
    for (const std::string& line : table.lines) rows.push_back(SplitList(line));
    return rows;
}

/// The table "TwoClassComparison": two classes observed and expected, categories, or fields.
CountTable ReadClasses(const TestResult& test, const ResultTable& content, const ResultDocument& document) {
    CountTable counts;
    counts.rows = RowsOf(content);
    counts.rowTitles = content.lineNames;
    if (test.name == Tests::kBinomial.resultName) {
        counts.rowTitles = {"observed %", "expected %"};
        counts.columnTitles = {"first class", "second class"};
    } else if (test.name == Tests::kChiSquare.resultName) {
        const ResultField* const field = test.parameters.empty() ? nullptr : document.FieldAt(test.parameters.front());
        for (std::string& title : counts.rowTitles) {
            if (const std::string* shown = field ? field->CategoryAt(title) : nullptr) title = *shown;
        }
        counts.columnTitles = {"observed", "expected"};
    } else {
        // The columns are the first category and what isn't of its class, whichever is the success. The document cuts
        // the success' share to a whole number and takes the other one from 100.
        counts.corner = "percent, cut";
        const ResultField* const first = counts.rowTitles.empty() ? nullptr : document.FieldAt(counts.rowTitles[0]);
        constexpr std::size_t kClasses = 2;
        const bool areTwo = first != nullptr && first->categories.size() == kClasses;
        counts.columnTitles = {areTwo ? first->categories[0].Shown() + " %" : "first class %",
                               areTwo ? first->categories[1].Shown() + " %" : "second class %"};
        for (std::string& title : counts.rowTitles) {
            if (const ResultField* const field = document.FieldAt(title)) title = field->name;
        }
    }
    return counts;
}

/// The classes of one side of a cross table: those of the success and of the rest where the document lists them, or
/// the categories of the field.
std::vector<std::string> ClassesOf(const ResultField* field, const std::string* successes, const std::string* rest) {
    if (successes != nullptr && rest != nullptr) {
        // Where the success is that of the first record, the lists are empty.
        // A listed category that the other field alone has is -1 here.
        const auto shown = [&](const std::string& list, const char* otherwise) {
            std::vector<std::string> own = SplitList(list);
            std::erase(own, "-1");
            return own.empty() ? otherwise : CategoryNames(JoinList(own, ";"), field);
        };
        return {shown(*successes, "success"), shown(*rest, "other")};
    }
    std::vector<std::string> classes;
    if (field == nullptr) return classes;
    for (const ResultCategory& category : field->categories) classes.push_back(category.Shown());
    return classes;
}

/// The table "CategoryFieldsComparison": how often the classes of two fields met, the first field in the rows.
CountTable ReadCrossTable(const ResultTable& fields, const ResultTable& cells, const ResultDocument& document) {
    CountTable counts;
    const auto fieldOf = [&](const std::string& side) { return document.FieldAt(fields.Value(side + "Names")); };
    const auto classes = [&](const std::string& side) {
        return ClassesOf(fieldOf(side), fields.Find(side + "SuccessList"), fields.Find(side + "FailList"));
    };
    if (fieldOf("Row") != nullptr && fieldOf("Column") != nullptr) {
        counts.corner = fieldOf("Row")->name + " \\ " + fieldOf("Column")->name;
    }
    counts.rows = RowsOf(cells);
    counts.rowTitles = classes("Row");
    counts.columnTitles = classes("Column");
    return counts;
}

}  // namespace

CountTable ReadCounts(const TestResult& test, const ResultDocument& document) {
    const ResultTable* const classes = test.content.Table("TwoClassComparison");
    const ResultTable* const content = classes == nullptr ? nullptr : classes->Table("Content");
    if (content != nullptr) return ReadClasses(test, *content, document);
    const ResultTable* const fields = test.content.Table("CategoryFieldsComparison");
    const ResultTable* const cells = fields == nullptr ? nullptr : fields->Table("Content");
    return cells == nullptr ? CountTable() : ReadCrossTable(*fields, *cells, document);
}

}  // namespace tarn
