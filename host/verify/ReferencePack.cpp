#include "host/verify/ReferencePack.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/ByteSource.h"
#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "host/NearestNames.h"
#include "host/TestNames.h"
#include "host/verify/JsonKeys.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

std::string CellText(const Json& cell, const std::string& place) {
    if (cell.is_null()) return "";
    if (cell.is_string()) return cell.get<std::string>();
    if (cell.is_number()) return cell.dump();
    throw InputError(place + ": expected numbers, texts or null");
}

std::vector<ReferenceColumn> ColumnsOf(const Json& data, const std::string& place) {
    std::vector<ReferenceColumn> columns;
    for (const Json::Member& member : data.items()) {
        const std::string here = place + "." + member.name;
        if (!member.value.is_array()) throw InputError(here + ": expected a list of cells");
        ReferenceColumn& column = columns.emplace_back();
        column.name = member.name;
        for (const Json& cell : member.value) column.cells.push_back(CellText(cell, here));
        if (column.cells.size() != columns.front().cells.size()) {
            throw InputError(here + ": " + std::to_string(column.cells.size()) + " cells; expected " +
                             std::to_string(columns.front().cells.size()) + ", as many as in the first column");
        }
    }
    if (columns.empty()) throw InputError(place + ": no columns");
    return columns;
}

/// Of a number that its source vouches for to fewer digits than it prints, those alone count.
void KeepDigits(PrintedNumber& printed, const Json& digits, const std::string& place) {
    if (!digits.is_number_unsigned() || digits == 0 ||
        digits.get<std::uint64_t>() >= static_cast<std::uint64_t>(printed.digits)) {
        throw InputError(place + ": " + digits.dump() + "; expected a whole number from 1 to below the " +
                         std::to_string(printed.digits) + " that are printed");
    }
    const auto kept = digits.get<int>();
    printed.decimals -= printed.digits - kept;
    printed.digits = kept;
}

Expectation ExpectationOf(const Json& json, const std::string& place) {
    const JsonKeys keys(json, place,
                        {"quantity", "of", "printed", "digits", "source", "differs", "right", "as_defined"});
    Expectation expectation;
    expectation.quantity = keys.Text("quantity");
    expectation.of = keys.Text("of", false);
    expectation.printed = ReadPrintedNumber(keys.Text("printed"), keys.PlaceOf("printed"));
    if (keys.Has("digits")) KeepDigits(expectation.printed, json["digits"], keys.PlaceOf("digits"));
    expectation.source = keys.Text("source", false);
    expectation.differs = keys.Text("differs", false);
    if (expectation.Differs() != keys.Has("right")) {
        throw InputError(place +
                         ": \"differs\" says why a printed number isn't right and \"right\" what is; expected "
                         "both or none");
    }
    if (expectation.Differs()) expectation.right = ReadPrintedNumber(keys.Text("right"), keys.PlaceOf("right"));
    if (keys.Has("as_defined")) {
        expectation.asDefined = ReadPrintedNumber(keys.Text("as_defined"), keys.PlaceOf("as_defined"));
    }
    return expectation;
}

std::vector<std::string> WordsOf(const Json& list, const std::string& place) {
    std::vector<std::string> words;
    for (const Json& word : list) {
        if (!word.is_string()) throw InputError(place + ": expected a list of texts, as they are typed");
        words.push_back(word.get<std::string>());
    }
    return words;
}

/// The data of a case: its own columns, or those of a case before it.
std::vector<ReferenceColumn> DataOf(const JsonKeys& keys, const Json& json, const ReferencePack& pack) {
    if (!json.contains("data") || !json["data"].is_string()) {
        return ColumnsOf(keys.Object("data"), keys.PlaceOf("data"));
    }
    const std::string name = keys.Text("data");
    const auto found = std::ranges::find(pack.cases, name, &ReferenceCase::name);
    if (found == pack.cases.end()) {
        throw InputError(keys.PlaceOf("data") + ": " + Quoted(name) +
                         "; expected columns, or the name of a case that stands before this one");
    }
    return found->columns;
}

ReferenceCase CaseOf(const Json& json, const std::string& place, const ReferencePack& pack) {
    const JsonKeys keys(json, place, {"name", "title", "kind", "source", "note", "data", "request", "expect"});
    ReferenceCase found;
    found.name = keys.Text("name");
    found.title = keys.Text("title");
    found.kind = keys.Text("kind");
    if (std::ranges::find(kKindsOfSource, found.kind) == kKindsOfSource.end()) {
        throw InputError(keys.PlaceOf("kind") + ": " + Quoted(found.kind) + "; expected " +
                         Alternatives(kKindsOfSource));
    }
    found.source = keys.Text("source");
    found.note = keys.Text("note", false);
    found.columns = DataOf(keys, json, pack);
    found.request = WordsOf(keys.List("request"), keys.PlaceOf("request"));
    const Json& expectations = keys.List("expect");
    for (std::size_t i = 0; i < expectations.size(); ++i) {
        found.expectations.push_back(
            ExpectationOf(expectations[i], keys.PlaceOf("expect") + "[" + std::to_string(i) + "]"));
    }
    if (found.expectations.empty()) throw InputError(keys.PlaceOf("expect") + ": no number to compare with");
    return found;
}

void AddCasesOf(const std::string& path, ReferencePack& pack, std::set<std::string>& names) {
    ByteSource source(path);
    const Json json = ReadJson(source);
    const JsonKeys keys(json, path, {"format", "test", "cases"});
    if (keys.Text("format") != kPublishedFormat) {
        throw InputError(keys.PlaceOf("format") + ": expected " + Quoted(kPublishedFormat));
    }
    const std::string test = keys.Text("test");
    if (Tests::OfResult(test) == nullptr) {
        throw InputError(keys.PlaceOf("test") + ": " + Quoted(test) +
                         "; expected a test as documents name it, like IMannWhitneyU");
    }
    const Json& cases = keys.List("cases");
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const std::string place = keys.PlaceOf("cases") + "[" + std::to_string(i) + "]";
        ReferenceCase found = CaseOf(cases[i], place, pack);
        found.test = test;
        if (!names.insert(found.name).second)
            throw InputError(place + ".name: " + Quoted(found.name) + " stands twice");
        pack.cases.push_back(std::move(found));
    }
}

/// A cell as it stands between commas.
std::string CsvCell(const std::string& text) {
    if (text.find_first_of(",\"\n\r") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + "\"";
}

}  // namespace

std::string ReferenceCase::Csv() const {
    std::string csv;
    for (std::size_t i = 0; i < columns.size(); ++i) csv += (i > 0 ? "," : "") + CsvCell(columns[i].name);
    csv += "\n";
    for (std::size_t row = 0; row < columns.front().cells.size(); ++row) {
        for (std::size_t i = 0; i < columns.size(); ++i) csv += (i > 0 ? "," : "") + CsvCell(columns[i].cells[row]);
        csv += "\n";
    }
    return csv;
}

std::vector<const ReferenceCase*> ReferencePack::Named(const std::string& name) const {
    std::vector<const ReferenceCase*> found;
    std::vector<std::string_view> known;
    for (const ReferenceCase& each : cases) {
        const std::string_view userName = Tests::OfResult(each.test)->userName;
        if (each.name == name || each.test == name || userName == name) found.push_back(&each);
        known.push_back(each.name);
        if (!userName.empty() && std::ranges::find(known, userName) == known.end()) known.push_back(userName);
    }
    if (!found.empty()) return found;
    const std::vector<std::string_view> nearest = NearestNames(name, known);
    throw InputError(Quoted(name) + " is neither a case nor a test of the pack" +
                     (nearest.empty() ? "; tarn verify without a name shows them all" : DidYouMean(nearest)));
}

std::vector<std::string> JsonFilesIn(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code unreadable;
    for (const auto& entry : std::filesystem::directory_iterator(folder, unreadable)) {
        if (entry.path().extension() == ".json") files.push_back(entry.path().string());
    }
    if (unreadable || files.empty()) {
        throw InputError(folder + ": no reference data; expected a folder with files *.json as tarn is installed with");
    }
    std::ranges::sort(files);
    return files;
}

ReferencePack ReadReferencePack(const std::string& folder) {
    ReferencePack pack;
    std::set<std::string> names;
    for (const std::string& file : JsonFilesIn(folder)) AddCasesOf(file, pack, names);
    return pack;
}

}  // namespace tarn
