// Whole runs of the command: each folder beside this file holds a table, a request and the document that it gives.
// The tables are public data sets of statistics courses. The documents were made by an independent implementation of
// the definitions, which was checked against R and SciPy wherever a definition is the standard one. Of each folder
// case.json tells where the table is from, what is asked for, and which numbers of the document R gives, too, by which
// call; verify.py beside this file runs these calls.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/harness/Command.h"
#include "tests/harness/Document.h"

namespace {

using Json = nlohmann::json;

std::vector<std::string> CaseNames() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(harness::SourcePath("tests/cases"))) {
        if (entry.is_directory()) names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class Cases : public testing::TestWithParam<std::string> {
 protected:
    std::string Path(const std::string& file) const {
        return harness::SourcePath("tests/cases/" + GetParam() + "/" + file);
    }
    bool Has(const std::string& file) const { return std::filesystem::exists(Path(file)); }
    /// The name of the field of weights; empty for none.
    std::string WeightField() const {
        return Has("fields.json") ? Json::parse(harness::ReadFile(Path("fields.json"))).value("weightField", "") : "";
    }

    std::vector<std::string> Arguments(const std::string& out) const { return Arguments(out, Path("data.csv")); }
    std::vector<std::string> Arguments(const std::string& out, const std::string& data) const {
        const std::string request = Has("plan.json") ? "plan" : "settings";
        std::vector<std::string> arguments{
            "run", "--strict", "--data", data, "--" + request, Path(request + ".json"), "--quiet", "--out", out};
        if (Has("fields.json")) arguments.insert(arguments.end(), {"--fields", Path("fields.json")});
        return arguments;
    }
};

/// The lines of a table of plain cells in which a field isn't 0.
std::string LinesWithout0(const std::string& csv, const std::string& field) {
    const auto cellsOf = [](const std::string& line) {
        std::vector<std::string> cells;
        std::istringstream text(line);
        for (std::string cell; std::getline(text, cell, ',');) cells.push_back(cell);
        return cells;
    };
    std::istringstream lines(csv);
    std::string line;
    std::getline(lines, line);
    const std::vector<std::string> names = cellsOf(line);
    const auto place = std::find(names.begin(), names.end(), '"' + field + '"') - names.begin();
    std::string kept = line + "\n";
    while (std::getline(lines, line)) {
        if (cellsOf(line).at(static_cast<std::size_t>(place)) != "0") kept += line + "\n";
    }
    return kept;
}

TEST_P(Cases, GiveTheExpectedDocument) {
    const harness::ScratchFolder scratch;
    const harness::CommandResult result = harness::RunTarn(Arguments(scratch.Path("result.xml")));
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(harness::DocumentDifferences(harness::ReadFile(Path("expected.xml")),
                                           harness::ReadFile(scratch.Path("result.xml"))),
              std::vector<std::string>{});
}

/// Takes the elements out of both documents that say in the second one that they came out otherwise than as defined.
void TakeOutMarked(std::string& defined, std::string& extended) {
    pugi::xml_document a;
    pugi::xml_document b;
    ASSERT_TRUE(a.load_string(defined.c_str()));
    ASSERT_TRUE(b.load_string(extended.c_str()));
    for (const char* const name : {"Algorithm", "FieldInfo"}) {
        const std::string path = std::string("//") + name;
        const pugi::xpath_node_set ofDefined = a.select_nodes(path.c_str());
        const pugi::xpath_node_set ofExtended = b.select_nodes(path.c_str());
        ASSERT_EQ(ofDefined.size(), ofExtended.size());
        for (std::size_t i = 0; i < ofExtended.size(); ++i) {
            if (!ofExtended[i].node().attribute("arithmetic")) continue;
            ofDefined[i].node().parent().remove_child(ofDefined[i].node());
            ofExtended[i].node().parent().remove_child(ofExtended[i].node());
        }
    }
    const auto textOf = [](const pugi::xml_document& document) {
        std::ostringstream out;
        document.save(out);
        return out.str();
    };
    defined = textOf(a);
    extended = textOf(b);
}

TEST_P(Cases, GiveTheSameExtendedButForDigitsAndForWhatSaysSo) {
    const harness::ScratchFolder scratch;
    std::vector<std::string> arguments = Arguments(scratch.Path("result.xml"));
    arguments.emplace_back("--extended");
    ASSERT_EQ(harness::RunTarn(arguments).exitStatus, 0);
    std::string defined = harness::ReadFile(Path("expected.xml"));
    std::string extended = harness::ReadFile(scratch.Path("result.xml"));
    if (const std::string weight = WeightField(); !weight.empty()) {
        // Extended, a record of weight 0 isn't there but in the counts of records.
        const std::string data = scratch.Write("data.csv", LinesWithout0(harness::ReadFile(Path("data.csv")), weight));
        ASSERT_EQ(harness::RunTarn(Arguments(scratch.Path("defined.xml"), data)).exitStatus, 0);
        defined = harness::ReadFile(scratch.Path("defined.xml"));
    }
    TakeOutMarked(defined, extended);
    std::vector<std::string> differences = harness::DocumentDifferences(defined, extended);
    // As defined Kolmogorov's limit is cut at both ends and a searched interval ends within 1e-7 of its own; how far
    // off they may be is held by the tests of the catalogue.
    std::erase_if(differences, [&](const std::string& line) {
        const auto has = [&](const char* word) { return line.find(word) != std::string::npos; };
        if (!WeightField().empty() && (has("Counts /@totalCount") || has("Counts /@badWeightCount"))) return true;
        return has("ProfileLikelihood/") || (has("KolmogorovSmirnov") && has("AsymptoticSig2Tailed"));
    });
    EXPECT_EQ(differences, std::vector<std::string>{});
}

/// The keys of an object, each with whether it has to be there.
using Keys = std::map<std::string, bool>;

const Keys kCaseKeys{{"source", true},                        // the data set, its authors and year
                     {"table", true},                         // the expression of R that makes the table
                     {"request", true},                       // what is asked for, and what of it has to fail
                     {"computedBy", true}, {"setup", false},  // statements of R that the calls share
                     {"verified", true}};
const Keys kVerifiedKeys{{"test", true}, {"quantity", true}, {"call", true}, {"within", false}};

void ExpectKeys(const Json& object, const Keys& keys) {
    ASSERT_TRUE(object.is_object()) << object;
    for (const auto& [key, isNeeded] : keys) EXPECT_TRUE(object.contains(key) || !isNeeded) << key;
    for (const auto& [key, value] : object.items()) EXPECT_TRUE(keys.contains(key)) << key;
}

void ExpectText(const Json& value, const std::string& key) {
    ASSERT_TRUE(value.is_string()) << key;
    EXPECT_NE(value.get<std::string>().find_first_not_of(' '), std::string::npos) << key;
}

TEST_P(Cases, TellWhereTheyComeFromAndWhatWasVerified) {
    ASSERT_TRUE(Has("case.json"));
    const Json document = Json::parse(harness::ReadFile(Path("case.json")), nullptr, false);
    ExpectKeys(document, kCaseKeys);
    for (const char* key : {"source", "table", "request", "computedBy"}) ExpectText(document.value(key, Json()), key);
    for (const char* key : {"setup", "verified"}) {
        if (!document.contains(key)) continue;
        EXPECT_TRUE(document[key].is_array() && !document[key].empty()) << key;
    }
    for (const Json& statement : document.value("setup", Json::array())) ExpectText(statement, "setup");
    for (const Json& entry : document.value("verified", Json::array())) {
        ExpectKeys(entry, kVerifiedKeys);
        for (const auto& [key, value] : entry.items()) ExpectText(value, key);
    }
}

std::string TestName(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Folders, Cases, testing::ValuesIn(CaseNames()), TestName);

}  // namespace
