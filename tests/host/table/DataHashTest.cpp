// The hash of what an analysis saw. The expected ones were worked out from the bytes that docs/record.md lists, by
// Python's struct and hashlib.

#include "host/table/DataHash.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "host/ByteSource.h"
#include "host/table/TableLoader.h"

namespace tarn {

namespace {

constexpr const char* kX = "517c331db8426da1aaaa412812e0ed5bb30bc6a99ac4d97dff351b11ce8debb6";
constexpr const char* kG = "01587d68f810c4fe3005808bf40225c473efed9cbcd259d413b0de3f543292c0";
constexpr const char* kW = "96ec7e97db97f0752c03e67382cd22e5be6eb9071f5145aa4e443ac18c14f826";
constexpr const char* kAll = "fbc69d33ccbf240ce58b80c9d78eeb601bd44dcc04381805df97508921c7041b";

Table TableOf(const std::string& csv) {
    ByteSource source = ByteSource::FromMemory("data.csv", csv);
    LoadOptions options;
    options.weightField = "w";
    return LoadTable(source, TableDescriptor(), options);
}

/// Of the columns of these names, whose values count.
DataHash HashOfFields(const Table& table, const std::vector<std::string>& names, unsigned threads = 1) {
    std::vector<HashedColumn> columns;
    for (const std::string& name : names) columns.push_back({static_cast<std::size_t>(table.FindColumn(name)), true});
    return HashOf(table, columns, WorkShare(threads));
}

std::string AllOf(const std::string& csv) {
    return HashOfFields(TableOf(csv), {"x", "g", "w"}).hash;
}

}  // namespace

TEST(DataHash, IsThatOfTheBytesThatThePageLists) {
    const DataHash data = HashOfFields(TableOf("x,g,w\n1.5,b,2\nNA,a,1\n0,,3\n"), {"x", "g", "w"});
    ASSERT_EQ(data.fields.size(), 3U);
    EXPECT_EQ(data.fields[0].hash, kG);
    EXPECT_EQ(data.fields[1].hash, kW);
    EXPECT_EQ(data.fields[2].hash, kX);
    EXPECT_EQ(data.hash, kAll);
    EXPECT_EQ(data.fields[0].missing, 1U);
    EXPECT_EQ(data.fields[2].missing, 1U);
    EXPECT_TRUE(data.fields[1].isWeight);
    EXPECT_FALSE(data.fields[2].isWeight);
    EXPECT_EQ(NameOf(data.fields[0].kind), "texts");
}

TEST(DataHash, OfAFieldThatNobodyReadsSaysWhatItMisses) {
    const HashedColumn column{0, false};
    const std::string missing = "8964ae44629d3ac84c80883e41bfd38e3b95cc76d6998edcc8dc7e09f897e3d5";
    for (const char* const csv : {"x,w\n1.5,1\nNA,1\n0,1\n", "x,w\n7,1\n,1\n8,1\n"}) {
        EXPECT_EQ(HashOf(TableOf(csv), {&column, 1}, WorkShare()).fields[0].hash, missing);
    }
}

TEST(DataHash, HasTheNumberAndTheLabelOfACategory) {
    ByteSource source = ByteSource::FromMemory("data.csv", "c\n2\n1\n");
    TableDescriptor descriptor;
    descriptor.fields.resize(1);
    descriptor.fields[0].name = "c";
    descriptor.fields[0].level = FieldLevel::kOrdinal;
    descriptor.fields[0].categories = {{{"1", 1, "low"}, {"2", 2, "high"}}};
    const Table table = LoadTable(source, descriptor, {});
    EXPECT_EQ(HashOfFields(table, {"c"}).fields[0].hash,
              "0bc6c1c7cf72e2237216ccd39436e5253e7942614a5d09aee33d41ebf48a7fd6");
}

TEST(DataHash, DoesNotDependOnHowTheTableIsWritten) {
    for (const char* const csv : {
             "g,w,x\nb,2,1.5\na,1,NA\n,3,0\n",                    // in another order
             "x,more,g,w\n1.5,u,b,2\nNA,v,a,1\n0,u,,3\n",         // beside another field
             "x,g,w\r\n1.50,\"b\",2\r\nNA,a,1.0\r\n0e5,NA,3\r\n"  // the same values otherwise
         }) {
        EXPECT_EQ(AllOf(csv), kAll) << csv;
    }
    EXPECT_EQ(AllOf("x,g,w\n1.5,b,2\nNA,a,1\n-0,,3\n"), kAll) << "zero has no sign";
}

TEST(DataHash, DependsOnEachValueAndOnItsPlace) {
    for (const char* const csv : {
             "x,g,w\n1.5000000000000002,b,2\nNA,a,1\n0,,3\n",  // the next number
             "x,g,w\n1.5,b,2\n0,a,1\nNA,,3\n",                 // another record misses x
             "x,g,w\n1.5,b,2\nNA,a,2\n0,,3\n",                 // another weight
             "x,g,w\n1.5,b,2\nNA,c,1\n0,,3\n",                 // another word
             "x,g,w\n0,,3\nNA,a,1\n1.5,b,2\n",                 // the records in another order
             "x,g,w\n1.5,b,2\nNA,a,1\n0,,3\n0,,3\n",           // one more
         }) {
        EXPECT_NE(AllOf(csv), kAll) << csv;
    }
    const Table table = TableOf("x,g,w\n1.5,b,2\nNA,a,1\n0,,3\n");
    EXPECT_NE(HashOfFields(table, {"x", "g"}).hash, kAll) << "a field less";
}

// What is no number differs from what is missing.
TEST(DataHash, TellsWhatIsMissingFromWhatIsNoNumber) {
    Table table = TableOf("x,w\n1.5,1\nNA,1\n0,1\n");
    const std::string before = HashOfFields(table, {"x"}).hash;
    table.Cells(0)[1] = std::nan("");
    const std::string after = HashOfFields(table, {"x"}).hash;
    EXPECT_NE(before, after);
    table.Cells(0)[1] = -std::nan("7");
    EXPECT_EQ(HashOfFields(table, {"x"}).hash, after);
}

TEST(DataHash, DoesNotDependOnTheThreads) {
    std::string csv = "x,g,w\n";
    for (int i = 0; i < 20'000; ++i) {  // more than the bytes of one block
        csv += std::to_string(i * 7919 % 1009) + "," + (i % 3 == 0 ? "a" : "b") + "," + std::to_string(i % 5) + "\n";
    }
    const Table table = TableOf(csv);
    const std::string alone = HashOfFields(table, {"x", "g", "w"}, 1).hash;
    for (const unsigned threads : {2U, 4U}) EXPECT_EQ(HashOfFields(table, {"x", "g", "w"}, threads).hash, alone);
}

}  // namespace tarn
