#include "host/report/PartsReport.h"

#include <algorithm>
#include <cmath>

#include "host/Json.h"
#include "host/NumberText.h"
#include "host/TextTable.h"
#include "host/report/CsvReport.h"
#include "host/report/JsonReport.h"
#include "host/report/JsonValues.h"
#include "host/report/RecordFacts.h"

namespace tarn {

namespace {

/// The significances on which the conclusions rest, of all parts one after the other, and the same adjusted for their
/// number; NaN for a test that has none.
struct PartsPValues {
    explicit PartsPValues(const std::vector<ResultPart>& parts) {
        for (const ResultPart& part : parts) {
            if (!part.result) continue;
            const std::vector<double> ofPart = ConclusivePValues(*part.result);
            own.insert(own.end(), ofPart.begin(), ofPart.end());
        }
        holm = Adjusted(own, Adjustment::kHolm);
    }

    std::vector<double> own;
    std::vector<double> holm;
};

std::string SummaryTable(const std::vector<ResultPart>& parts) {
    TextTable table({{parts.front().field},
                     {"Test"},
                     {"Fields"},
                     {"N", Alignment::kRight},
                     {"Statistic", Alignment::kRight},
                     {"p", Alignment::kRight},
                     {"p Holm", Alignment::kRight},
                     {"kind"},
                     {"Decision"}});
    const PartsPValues pValues(parts);
    std::size_t place = 0;
    for (const ResultPart& part : parts) {
        if (!part.result) {
            table.AddRow({part.category, "", "", "", "", "", "", "", "not done"});
            continue;
        }
        std::size_t number = 0;
        for (const TestReading& reading : part.result->tests) {
            SummaryCells cells = SummaryOf(reading, ++number);
            if (const Number& chosen = reading.supplement.chosenP; !chosen.empty()) {
                cells.p = PText(ExactText(chosen.value));
                cells.kind = "chosen";
            }
            const double holm = pValues.holm[place++];
            table.AddRow({part.category, cells.title, cells.fields, cells.n, cells.statistic, cells.p,
                          std::isnan(holm) ? "" : PText(ExactText(holm), cells.isBound), cells.kind, cells.decision});
        }
    }
    return table.ToText();
}

/// A row of CSV and where the next one begins; line breaks within quotes belong to the row.
std::string TakeRow(const std::string& csv, std::size_t& place) {
    const std::size_t begin = place;
    bool isQuoted = false;
    while (place < csv.size() && (isQuoted || csv[place] != '\n')) {
        if (csv[place++] == '"') isQuoted = !isQuoted;
    }
    ++place;
    return csv.substr(begin, place - begin);
}

}  // namespace

const RunRecord* RecordOfAny(const std::vector<ResultPart>& parts) {
    const auto recorded =
        std::ranges::find_if(parts, [](const ResultPart& part) { return part.result && part.result->record; });
    return recorded == parts.end() ? nullptr : recorded->result->record.get();
}

std::string PartsText(const std::vector<ResultPart>& parts, const MessageCatalogue& texts, const TextStyle& style,
                      const std::vector<std::string>& notes) {
    std::string text = SummaryTable(parts);
    for (const ResultPart& part : parts) {
        text += "\n" + (style.hasColour ? "\033[1m" + part.Name() + "\033[0m" : "== " + part.Name()) + "\n\n";
        if (!part.result) {
            text += "not done: " + part.mistake + "\n";
            continue;
        }
        text += TextOfTests(*part.result, texts, style, part.notes);
        if (part.result->record) text += RecordText(DataFacts(*part.result->record));
    }
    for (const std::string& note : notes) text += (&note == &notes.front() ? "\nNote: " : "Note: ") + note + "\n";
    const RunRecord* const record = RecordOfAny(parts);
    return record == nullptr ? text : text + RecordText(ProgramFacts(*record));
}

std::string PartsJson(const std::vector<ResultPart>& parts, const MessageCatalogue& texts,
                      const std::vector<std::string>& notes) {
    Json json{{"format", "tarn-parts-1"},
              {"split", parts.front().field},
              {"notes", notes},
              {"summary", Json::array()},
              {"parts", Json::array()}};
    const RunRecord* const record = RecordOfAny(parts);
    json["record"] = record == nullptr ? Json(nullptr) : ProgramJson(*record);
    const PartsPValues pValues(parts);
    std::size_t place = 0;
    for (const ResultPart& part : parts) {
        json["parts"].push_back({{"category", part.category},
                                 {"notes", part.notes},
                                 {"mistake", part.mistake.empty() ? Json(nullptr) : Json(part.mistake)},
                                 {"result", part.result ? JsonOf(*part.result, texts, part.notes) : Json(nullptr)}});
        if (!part.result) continue;
        for (std::size_t i = 0; i < part.result->tests.size(); ++i) {
            const TestReading& reading = part.result->tests[i];
            const double own = pValues.own[place];
            const double holm = pValues.holm[place++];
            json["summary"].push_back(
                {{"category", part.category},
                 {"test", reading.name},
                 {"fields", reading.fields},
                 {"n", NumberJson(reading.n)},
                 {"p", std::isnan(own) ? Json(nullptr) : Json(own)},
                 {"p_holm", std::isnan(holm) ? Json(nullptr) : Json(holm)},
                 {"decision", reading.decision.empty() ? Json(nullptr) : Json(reading.decision)}});
        }
    }
    return Written(json);
}

std::string PartsCsv(const std::vector<ResultPart>& parts, const MessageCatalogue& texts) {
    std::string header = "row\n";
    std::string rows;
    for (const ResultPart& part : parts) {
        const std::string name = CsvCell(part.field) + "," + CsvCell(part.category) + ",";
        if (!part.result) continue;
        const std::string csv = CsvReport(*part.result, texts);
        std::size_t place = 0;
        header = TakeRow(csv, place);
        while (place < csv.size()) rows += name + TakeRow(csv, place);
    }
    // A row as long as the header, whose first column is what kind of row it is.
    const auto commas = static_cast<std::size_t>(std::count(header.begin(), header.end(), ','));
    for (const ResultPart& part : parts) {
        if (part.result) continue;
        rows += CsvCell(part.field) + "," + CsvCell(part.category) + ",mistake" + std::string(commas, ',') + "\n";
    }
    return "split_field,split_category," + header + rows;
}

}  // namespace tarn
