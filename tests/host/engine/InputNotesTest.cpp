#include "host/engine/InputNotes.h"

#include <gtest/gtest.h>

#include <string>

namespace tarn {
namespace {

Table Load(const std::string& csv, LoadOptions options) {
    ByteSource data = ByteSource::FromMemory("data.csv", csv);
    return LoadTable(data, TableDescriptor(), options);
}

std::string NoteOnWeights(const std::string& weights, WeightRule rule) {
    LoadOptions options;
    options.weightField = "w";
    return WeightNote(Load("x,w\n" + weights, options), rule);
}

constexpr const char* kWeights = "1,1\n2,2.5\n3,0.3\n4,NA\n5,-1\n6,0\n7,1.2\n";

// Rounded: 1, 3, 0, -, -, 0, 1; they stand for 1 + 2.5 + 0.3 - 1 + 0 + 1.2 = 4.
TEST(WeightNote, CountsWhatIsRoundedAndDropped) {
    EXPECT_EQ(
        NoteOnWeights(kWeights, WeightRule::kRounded),
        "weights of w: 2 records rounded to whole numbers, 1 record rounded to 0, 1 record of weight 0, 1 record "
        "with a negative weight left out, 1 record without a weight left out, of 7 in all; the weights add up to 4 "
        "and count as 5");
}

// Cut: 1, 2, 0, missing, -1, 0, 1. The engine subtracts what is below 0 and has no missing weight.
TEST(WeightNote, CountsWhatIsCut) {
    EXPECT_EQ(
        NoteOnWeights(kWeights, WeightRule::kCut),
        "weights of w: 2 records cut to whole numbers, 1 record cut to 0, 1 record of weight 0, 1 record with a "
        "negative weight, which is subtracted, 1 record without a weight, which the engine takes for -2147483648, "
        "so that no count with it is right, of 7 in all; the weights add up to 4 and count as 3");
}

TEST(WeightNote, IsNotThereWhereEveryWeightCountsAsItStands) {
    EXPECT_EQ(NoteOnWeights("1,1\n2,20\n", WeightRule::kRounded), "");
    EXPECT_EQ(WeightNote(Load("x\n1\n", {}), WeightRule::kCut), "");
}

TEST(RepeatedCasesNote, CountsIdentifiersAndRecords) {
    const Table table = Load("id,x\na,1\nb,2\na,3\na,4\nNA,5\nNA,6\nb,7\nc,8\n", {});
    EXPECT_EQ(RepeatedCasesNote(table, "id", {"x"}),
              "2 of 3 values of id occur more than once (5 records in all), while x is tested as if every record were "
              "another case; for repeated measurements give each of them a field of its own, one row a case, and use "
              "--related");
    EXPECT_EQ(RepeatedCasesNote(table, "id", {}), "");
    EXPECT_EQ(RepeatedCasesNote(table, "x", {"x"}), "");
    EXPECT_EQ(RepeatedCasesNote(table, "unknown", {"x"}), "");
}

TEST(UnusedCategoryNotes, NameCategoriesThatNoRecordHas) {
    LoadOptions options;
    options.orders = {{"x", {"l", "m", "h"}}, {"y", {"n", "y"}}};
    const Table table = Load("x,y\nl,n\nm,y\n", options);
    EXPECT_EQ(UnusedCategoryNotes(table, options.orders),
              std::vector<std::string>{"no record has h in x, which the order of its categories names"});
}

// By hand: of 5 cases 1, 1, 2, 4, 4 four share their value; a record of weight 2 has company in itself. Weight 0.4 is
// rounded to no case, and a negative one drops its record.
TEST(TiesNote, CountsCasesWhereRecordsAreWeighted) {
    constexpr const char* kRest =
        " of x share their value with another one, while the significance of moses holds for different values only; "
        "equal values can make it far too small";
    EXPECT_EQ(TiesNote(Load("x\n1\n1\n2\n", {}), "x", "moses"), std::string("2 records") + kRest);
    LoadOptions options;
    options.weightField = "w";
    const Table weighted = Load("x,w\n1,1\n1,1\n2,1\n4,2\n2,0.4\n2,-1\nNA,9\n", options);
    EXPECT_EQ(TiesNote(weighted, "x", "moses"), std::string("4 cases") + kRest);
    EXPECT_EQ(TiesNote(Load("x,w\n1,1\n2,1\n", options), "x", "moses"), "");
}

}  // namespace
}  // namespace tarn
