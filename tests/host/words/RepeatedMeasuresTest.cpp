#include "host/words/RepeatedMeasures.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/host/InputErrorOf.h"
#include "tests/host/words/TableOfText.h"

namespace tarn {
namespace {

using Texts = std::vector<std::string>;
using Cells = std::vector<double>;

WideTable Widen(const std::string& csv, const std::string& weight = "") {
    LoadOptions options;
    options.nominalByDefault = "cond";
    if (!weight.empty()) options.weightField = weight;
    return WidenBySubject(TableOfText(csv, "{}", options), {"score", "cond", "who"});
}

Cells CellsOf(const Table& table, std::size_t column) {
    const auto cells = table.Cells(column);
    return Cells(cells.begin(), cells.end());
}

TEST(RepeatedMeasuresInLongForm, BecomeAFieldForEachCondition) {
    const WideTable wide = Widen("who,cond,score\ns2,b,4\ns1,a,1\ns2,a,3\ns1,b,2\n");
    EXPECT_EQ(wide.fields, (Texts{"cond=a", "cond=b"}));
    EXPECT_EQ(CellsOf(wide.table, 0), (Cells{3, 1})) << "subjects stand in the order of their first records";
    EXPECT_EQ(CellsOf(wide.table, 1), (Cells{4, 2}));
    EXPECT_EQ(wide.notes, Texts{"score of 2 subjects (who) at 2 conditions (cond): 2 complete"});
}

TEST(RepeatedMeasuresInLongForm, NameWhoIsIncomplete) {
    const WideTable wide = Widen("who,cond,score\n1,10,1\n2,10,3\n2,9,4\n3,9,NA\n3,10,5\n,9,1\n4,,1\n");
    EXPECT_EQ(wide.fields, (Texts{"cond=9", "cond=10"})) << "numbers ascend";
    EXPECT_EQ(CellsOf(wide.table, 0), (Cells{kMissingNumber, 4, kMissingNumber}));
    EXPECT_EQ(wide.notes,
              (Texts{"score of 3 subjects (who) at 2 conditions (cond): 1 complete; incomplete: 1 (no cond=9), 3 (no "
                     "cond=9)",
                     "2 records that miss who or cond are left out"}));
}

TEST(RepeatedMeasuresInLongForm, NameTenOfManyIncompleteSubjects) {
    std::string csv = "who,cond,score\nx,b,1\nx,a,1\n";
    for (int i = 0; i < 13; ++i) csv += "s" + std::to_string(i) + ",a,1\n";
    const std::string note = Widen(csv).notes.front();
    EXPECT_NE(note.find("s9 (no cond=b) and 3 more"), std::string::npos) << note;
    EXPECT_EQ(note.find("s10"), std::string::npos) << note;
}

TEST(RepeatedMeasuresInLongForm, KeepTheLevelOfTheValue) {
    const WideTable wide = Widen("who,cond,score\n1,a,yes\n1,b,no\n");
    EXPECT_EQ(wide.table.Columns()[0].level, FieldLevel::kNominal);
    EXPECT_EQ(wide.table.Columns()[0].categories, wide.table.Columns()[1].categories);
}

TEST(RepeatedMeasuresInLongForm, BringTheirWeights) {
    const WideTable wide = Widen("who,cond,score,n\n1,a,1,2\n1,b,2,2\n2,b,2,3\n", "n");
    EXPECT_EQ(CellsOf(wide.table, static_cast<std::size_t>(wide.table.WeightIndex())), (Cells{2, 3}));
    EXPECT_EQ(InputErrorOf([] { Widen("who,cond,score,n\n1,a,1,2\n1,b,2,3\n", "n"); }),
              "repeated measures: the subject \"1\" of who has different weights; expected one in all its records");
}

TEST(RepeatedMeasuresInLongForm, RefuseASubjectThatIsThereTwice) {
    EXPECT_EQ(InputErrorOf([] { Widen("who,cond,score\ns1,a,1\ns1,b,1\ns1,b,2\n"); }),
              "repeated measures: the subject \"s1\" of who has two records for cond=b; expected one, or --split who "
              "to test each by itself");
}

TEST(RepeatedMeasuresInLongForm, RefuseGroupsOfDifferentSubjects) {
    EXPECT_EQ(InputErrorOf([] { Widen("who,cond,score\ns1,a,1\ns2,b,1\n"); }),
              "repeated measures: no subject of who has records for two conditions of cond; for groups of different "
              "subjects type 'score ~ cond'");
}

TEST(RepeatedMeasuresInLongForm, RefuseOneCondition) {
    EXPECT_EQ(InputErrorOf([] { Widen("who,cond,score\ns1,a,1\n"); }),
              "repeated measures: \"cond\" has 1 value; expected at least two conditions");
}

}  // namespace
}  // namespace tarn
