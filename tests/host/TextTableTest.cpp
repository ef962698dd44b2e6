#include "host/TextTable.h"

#include <gtest/gtest.h>

namespace {

using tarn::Alignment;

TEST(TextTable, AlignsItsColumnsAndEndsLinesWithoutBlanks) {
    tarn::TextTable table({{"name"}, {"n", Alignment::kRight}, {"last"}});
    table.AddRow({"a", "10", "x"});
    table.AddRow({"longer", "7", ""});
    EXPECT_EQ(table.ToText(),
              "name     n  last\n"
              "a       10  x\n"
              "longer   7\n");
}

TEST(TextTable, CountsCharactersNotBytes) {
    tarn::TextTable table({{"k"}, {"v"}});
    table.AddRow({"größe", "1"});
    table.AddRow({"abcde", "2"});
    EXPECT_EQ(table.ToText(),
              "k      v\n"
              "größe  1\n"
              "abcde  2\n");
}

TEST(TextTable, WithoutRowsIsItsHeader) {
    EXPECT_EQ(tarn::TextTable({{"a"}, {"b"}}).ToText(), "a  b\n");
}

}  // namespace
