// What a result says of how it was made. Who was left out is counted by hand in small tables.

#include "host/analysis/Record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/analysis/BuildFacts.h"
#include "host/report/RunRecord.h"
#include "tests/analysis/AnalysisRun.h"

namespace {

using namespace analysis_test;
using tarn::RecordedTest;
using tarn::RunRecord;

/// An analysis of a table with its record.
tarn::ResultReading Recorded(const tarn::Table& table, const tarn::AnalysisOptions& options, unsigned threads = 0) {
    const tarn::AnalysisOutcome outcome = tarn::Analyze(table, options, Environment());
    EXPECT_TRUE(outcome.succeeded);
    tarn::ResultReading result = tarn::ReadAnalysis(outcome.document, options, Environment());
    const tarn::CaseRule rule = tarn::CaseRuleOf(table, options);
    const tarn::RecordSelection selection{table.RowCount(), {}, {}, {}};
    const tarn::Json request{{"command", "analyze"}};
    tarn::AddRecord(result,
                    {table, rule, tarn::WeightRule::kRounded, selection, request, "tarn analyze data.csv", "data.csv"},
                    WorkShare(threads));
    return result;
}

tarn::Table Weighted(const std::string& csv) {
    tarn::LoadOptions load = NominalGroups();
    load.weightField = "w";
    return TableOf(csv, load);
}

//                              left out for:      x      y      g     all that count
constexpr const char* kGaps =
    "x,y,g,w\n"
    "1,5,a,1\n"
    "2,NA,b,2\n"    //                                    1
    "NA,3,a,1\n"    //                             1
    "4,4,,1\n"      //                                           1
    "5,2,b,0\n"     // its weight
    "6,1,a,NA\n"    // its weight
    "7,6,b,-1\n"    // its weight
    "NA,7,b,0.4\n"  // its weight, and nothing else
    "9,8,b,1.6\n"
    "3,9,a,1\n";

TEST(Record, CountsWhoWasLeftOutAndWhy) {
    tarn::AnalysisOptions options;
    options.independent = {"x", "y"};
    options.group = "g";
    options.related = {"x", "y"};
    options.tests = {"mann-whitney", "sign"};
    const tarn::ResultReading result = Recorded(Weighted(kGaps), options);
    ASSERT_TRUE(result.record);
    const RunRecord& record = *result.record;
    EXPECT_EQ(record.records, 10U);
    ASSERT_TRUE(record.weights);
    EXPECT_EQ(record.weights->field, "w");
    EXPECT_EQ(record.weights->missing, 1U);
    EXPECT_EQ(record.weights->negative, 1U);
    EXPECT_EQ(record.weights->zero, 1U);
    EXPECT_EQ(record.weights->vanished, 1U) << "0.4";
    EXPECT_EQ(record.weights->changed, 1U) << "1.6";
    ASSERT_EQ(record.tests.size(), 3U);
    for (const RecordedTest& test : record.tests) {
        EXPECT_EQ(test.withoutWeight, 4U);
        EXPECT_EQ(test.missing, 2U) << test.name;  // of x or of y beside g; of x and of y
        EXPECT_EQ(test.complete, 4U);
    }
}

TEST(Record, CountsListwiseWhoMissesAnyField) {
    tarn::AnalysisOptions options;
    options.independent = {"x", "y"};
    options.group = "g";
    options.tests = {"mann-whitney"};
    options.listwise = true;
    const tarn::ResultReading result = Recorded(Weighted(kGaps), options);
    for (const RecordedTest& test : result.record->tests) {
        EXPECT_EQ(test.missing, 3U);
        EXPECT_EQ(test.complete, 3U);
    }
}

/// Without weights the document counts the same cases as its n.
TEST(Record, AgreesWithTheDocument) {
    const std::string csv = "x,y,g\n1,5,a\n2,NA,b\nNA,3,a\n4,4,\n5,2,b\n6,1,a\n7,6,b\n9,8,b\n3,9,a\n";
    for (const bool listwise : {false, true}) {
        tarn::AnalysisOptions options = GroupTests();
        options.listwise = listwise;
        const tarn::ResultReading result = Recorded(TableOf(csv, NominalGroups()), options);
        ASSERT_EQ(result.record->tests.size(), result.tests.size());
        for (std::size_t i = 0; i < result.tests.size(); ++i) {
            if (result.tests[i].isEstimate) continue;  // whose document has no n
            EXPECT_EQ(static_cast<double>(result.record->tests[i].complete), result.tests[i].n.value)
                << result.tests[i].name << (listwise ? " listwise" : "");
        }
    }
}

TEST(Record, HashesTheFieldsThatTheTestsSawAndNoOthers) {
    tarn::AnalysisOptions options;
    options.independent = {"y"};
    options.group = "g";
    const auto hash = [&](const std::string& csv, bool listwise) {
        options.listwise = listwise;
        return Recorded(TableOf(csv, NominalGroups()), options).record->data->hash;
    };
    const std::string csv = GroupsCsv(40, 1);
    std::string other = csv;
    other.replace(other.find('\n') + 1, other.find(',', other.find('\n')) - other.find('\n') - 1, "77");
    ASSERT_NE(csv, other) << "another x";
    EXPECT_EQ(hash(csv, false), hash(other, false));
    EXPECT_NE(hash(csv, false), hash(GroupsCsv(40, 2), false));
    EXPECT_EQ(hash(csv, false), hash(csv, true)) << "all its fields are those of the test";
}

TEST(Record, KnowsTheProgramAndItsLibraries) {
    const RunRecord record = *Recorded(TableOf(GroupsCsv(40, 1), NominalGroups()), GroupTests()).record;
    EXPECT_EQ(record.version, tarn::BuiltVersion());
    EXPECT_EQ(record.requestWords, "tarn analyze data.csv");
    EXPECT_EQ(record.file, "data.csv");
    std::vector<std::string> names;
    for (const auto& [name, version] : record.libraries) {
        names.push_back(name);
        EXPECT_NE(version.find_first_of("0123456789"), std::string::npos) << name;
    }
    for (const char* const name : {"Boost", "GNU C Library", "pugixml", "zlib", "zstd"}) {
        EXPECT_NE(std::ranges::find(names, name), names.end()) << name;
    }
}

// Data that somebody has written to since is not hashed as if it were what was analysed.
TEST(Record, SaysNothingOfDataThatIsNoLongerThere) {
    const tarn::Table table = TableOf(GroupsCsv(40, 1), NominalGroups());
    const tarn::AnalysisOptions options = GroupTests();
    tarn::ResultReading result =
        tarn::ReadAnalysis(tarn::Analyze(table, options, Environment()).document, options, Environment());
    const tarn::RecordSelection selection{40, {}, {}, {}};
    const tarn::Json request;
    tarn::AddRecord(result, {table, {}, tarn::WeightRule::kRounded, selection, request, "", "", false}, WorkShare());
    EXPECT_FALSE(result.record->data);
    EXPECT_TRUE(result.record->tests.empty());
    EXPECT_EQ(result.record->records, 40U);
}

}  // namespace
