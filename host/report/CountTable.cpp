#include "host/report/CountTable.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

constexpr std::size_t kMostColumns = 200;

/// Between what the rows and what the columns are, and between the names of a row and of a column.
constexpr const char* kBySide = " \\ ";

std::string TitleAt(const std::vector<std::string>& titles, std::size_t place) {
    return place < titles.size() ? titles[place] : std::string();
}

/// The table "TwoClassComparison": two classes observed and expected, categories, or fields.
CountTable ReadClasses(const TestResult& test, const ResultTable& content, const ResultDocument& document) {
    CountTable counts;
    counts.lines = content.lines;
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
        counts.corner = fieldOf("Row")->name + kBySide + fieldOf("Column")->name;
    }
    counts.lines = cells.lines;
    counts.rowTitles = classes("Row");
    counts.columnTitles = classes("Column");
    return counts;
}

}  // namespace

std::size_t CountTable::ColumnCount() const {
    std::size_t most = 0;
    for (const std::string& line : lines) {
        const auto separators = static_cast<std::size_t>(std::ranges::count(line, ';'));
        most = std::max(most, line.empty() ? 0 : separators + 1);
    }
    return most;
}

bool CountTable::IsWide() const {
    return ColumnCount() > kMostColumns;
}

CountTable CountTable::Listed() const {
    CountTable list{corner, {"cases"}, {}, {}};
    for (std::size_t row = 0; row < lines.size(); ++row) {
        std::size_t column = 0;
        ForEachInList(lines[row], [&](std::string_view cell) {
            const std::size_t place = column++;
            if (cell == "0") return;
            list.rowTitles.push_back(TitleAt(rowTitles, row) + kBySide + TitleAt(columnTitles, place));
            list.lines.emplace_back(cell);
        });
    }
    return list;
}

CountTable ReadCounts(const TestResult& test, const ResultDocument& document) {
    const ResultTable* const classes = test.content.Table("TwoClassComparison");
    const ResultTable* const content = classes == nullptr ? nullptr : classes->Table("Content");
    if (content != nullptr) return ReadClasses(test, *content, document);
    const ResultTable* const fields = test.content.Table("CategoryFieldsComparison");
    const ResultTable* const cells = fields == nullptr ? nullptr : fields->Table("Content");
    return cells == nullptr ? CountTable() : ReadCrossTable(*fields, *cells, document);
}

}  // namespace tarn
