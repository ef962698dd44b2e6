#include "host/plan/PlanData.h"

#include <gtest/gtest.h>

#include <string>

#include "host/table/TableLoader.h"

namespace {

tarn::Table Load(const std::string& csv, const std::string& descriptor = "{}", const std::string& weight = "") {
    tarn::ByteSource data = tarn::ByteSource::FromMemory("data.csv", csv);
    tarn::ByteSource fields = tarn::ByteSource::FromMemory("fields.json", descriptor);
    tarn::LoadOptions options;
    if (!weight.empty()) options.weightField = weight;
    return tarn::LoadTable(data, tarn::ReadTableDescriptor(fields), options);
}

TEST(PlanData, ColumnsBecomeFieldsOfTheirKindInFileOrder) {
    const tarn::Table table = Load("x,g,c,d\n1,b,3,2020-01-02\n2,a,1,1970-01-01\n",
                                   R"({"fields": [{"name": "c", "level": "ordinal", "title": "Class"},
                                                  {"name": "d", "type": "date"}]})");
    const QKVarList fields = tarn::MakeVarList(table);
    ASSERT_EQ(fields.Size(), 4);
    EXPECT_EQ(fields.GetVarAt(0)->GetKind(), FieldKind::kContinuous);
    EXPECT_EQ(fields.GetVarAt(1)->GetKind(), FieldKind::kStringCategories);
    EXPECT_EQ(fields.GetVarAt(1)->GetCategoryText(0), "a");
    EXPECT_FALSE(dynamic_cast<const QKCatVar&>(*fields.GetVarAt(1)).GetOrdinalFlag());
    EXPECT_EQ(fields.GetVarAt(2)->GetKind(), FieldKind::kNumericCategories);
    EXPECT_EQ(fields.GetVarAt(2)->GetLabel(), "Class");
    EXPECT_EQ(fields.GetVarAt(2)->GetCategoryValue(1), 3);
    EXPECT_TRUE(dynamic_cast<const QKCatVar&>(*fields.GetVarAt(2)).GetOrdinalFlag());
    EXPECT_EQ(fields.GetVarAt(3)->GetKind(), FieldKind::kContinuous);
    EXPECT_EQ(fields.GetVarAt(3)->GetDateType(), DateType::kDate);
    EXPECT_EQ(fields.GetFreqWeightIndex(), QKVarList::kNoWeight);
    EXPECT_EQ(fields.GetWeightedCount(), 2);
    EXPECT_EQ(fields.GetUnWeightedCount(), 2u);
}

TEST(PlanData, MissingNegativeAndZeroWeightsAreBadAndAddNothing) {
    const QKVarList fields = tarn::MakeVarList(Load("x,w\n1,0.3\n1,NA\n1,-2\n1,0\n1,4\n", "{}", "w"));
    EXPECT_EQ(fields.GetFreqWeightIndex(), 1);
    EXPECT_EQ(fields.GetWeightedCount(), 0.3 + 4);
    EXPECT_EQ(fields.GetUnWeightedCount(), 5u);
    EXPECT_EQ(fields.GetBadWeightCount(), 3u);
    EXPECT_EQ(fields.GetDroppedCount(), 0u);
    EXPECT_EQ(fields.GetWeightedDroppedCount(), 0);
}

TEST(PlanData, RecordsAreTheRowsAndCanBeReadAgain) {
    tarn::Table table = Load("x,g\n1,b\nNA,a\n");
    tarn::TableRecords records(table);
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(records.Rewind(), 0);
        ASSERT_TRUE(records.HasMore());
        const Record& first = *records.Next();
        EXPECT_EQ(first[0], 1);
        EXPECT_EQ(first[1], 1);  // "b" is the second category
        const Record& second = *records.Next();
        EXPECT_EQ(second[0], tarn::kMissingNumber);
        EXPECT_EQ(second[1], 0);
        EXPECT_FALSE(records.HasMore());
        EXPECT_EQ(records.GetState(), 1);
    }
}

}  // namespace
