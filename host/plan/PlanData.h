#pragma once

#include "host/table/Table.h"
#include "platform/common/QKVarList.h"
#include "platform/common/Record.h"

namespace tarn {

/// The columns of a table as the fields of a run, in file order, with the counts of a run in which no host dropped
/// anything and weights stand as they are.
QKVarList MakeVarList(const Table& table);

/// The rows of a table as a stream of records, which are gathered one by one, and its columns for whoever takes them as
/// they are. Borrows the table.
class TableRecords : public MultiPassRecordIter, public ColumnSource {
 public:
    explicit TableRecords(const Table& table) : table_(table), current_(table.ColumnCount()) {}

    bool HasMore() override { return next_ < table_.RowCount(); }
    Record* Next() override;
    int GetState() override { return HasMore() ? 0 : 1; }
    int Rewind() override;

    std::size_t RecordCount() const override { return table_.RowCount(); }
    std::size_t FieldCount() const override { return table_.ColumnCount(); }
    const double* Column(std::size_t field) const override { return table_.Cells(field).data(); }

 private:
    const Table& table_;
    std::size_t next_ = 0;
    Record current_;
};

}  // namespace tarn
