// Cells of somebody else in a table: whoever reads finds them where they are, whoever writes writes to a copy.

#include "host/table/Table.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace tarn {

namespace {

Table TableOf(std::size_t rows) {
    std::vector<Column> columns(2);
    columns[0].name = "own";
    columns[1].name = "lent";
    Table table(std::move(columns));
    table.Resize(rows);
    return table;
}

using Memory = std::vector<double>;

}  // namespace

TEST(LentCells, AreReadWhereTheyAre) {
    const auto memory = std::make_shared<Memory>(Memory{1, 2, 3});
    Table table = TableOf(3);
    table.Lend(1, memory->data(), memory);
    EXPECT_EQ(std::as_const(table).Cells(1).data(), memory->data());
    EXPECT_EQ(std::as_const(table).Cells(1).size(), 3U);
    EXPECT_FALSE(table.AreZeroFrom(1, 0));
    const Table moved = std::move(table);
    EXPECT_EQ(moved.Cells(1).data(), memory->data());
}

TEST(LentCells, AreCopiedBeforeSomebodyWrites) {
    const auto memory = std::make_shared<Memory>(Memory{1, 2, 3});
    Table table = TableOf(3);
    table.Lend(1, memory->data(), memory);
    table.Cells(1)[0] = 9;
    EXPECT_EQ(*memory, (Memory{1, 2, 3}));
    EXPECT_EQ(std::as_const(table).Cells(1)[0], 9);
    EXPECT_EQ(std::as_const(table).Cells(1)[2], 3);
    EXPECT_EQ(memory.use_count(), 1);
}

TEST(LentCells, AreCopiedWhenTheTableGrows) {
    const auto memory = std::make_shared<Memory>(Memory{1, 2, 3});
    Table table = TableOf(3);
    table.Lend(1, memory->data(), memory);
    table.Resize(5);
    EXPECT_EQ(table.Cells(1).size(), 5U);
    EXPECT_EQ(table.Cells(1)[2], 3);
}

TEST(LentCells, AreHeldAsLongAsTheyAreNeeded) {
    auto memory = std::make_shared<Memory>(Memory{1, 2, 3});
    const std::weak_ptr<Memory> watched = memory;
    {
        Table table = TableOf(3);
        table.Lend(1, memory->data(), memory);
        memory.reset();
        EXPECT_FALSE(watched.expired());
        EXPECT_EQ(std::as_const(table).Cells(1)[1], 2);
        table.KeepColumns(1);
        EXPECT_TRUE(watched.expired());
    }
}

}  // namespace tarn
