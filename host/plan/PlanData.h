#pragma once

#include "host/table/Table.h"
#include "platform/common/QKVarList.h"
#include "platform/common/Record.h"

namespace tarn {

/// The columns of a table as the fields of a run, in file order, with the counts of a run in which no host dropped
/// anything and weights stand as they are.
QKVarList MakeVarList(const Table& table);

/// The rows of a table as a stream of records, which are views of the table. Borrows the table.
class TableRecords : public MultiPassRecordIter {
 public:
    explicit TableRecords(Table& table) : table_(table) {}

    bool HasMore() override { return next_ < table_.RowCount(); }
    Record* Next() override;
    int GetState() override { return HasMore() ? 0 : 1; }
    int Rewind() override;

 private:
    Table& table_;
    std::size_t next_ = 0;
    Record current_;
};

}  // namespace tarn
