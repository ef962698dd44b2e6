#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/engine/Requirements.h"
#include "host/table/Table.h"
#include "machine/LargeArray.h"

namespace tarn {

/// What became of the records.
struct RecordCounts {
    std::uint64_t totalCount = 0;  ///< records of the table
    double totalFreq = 0;          ///< sum of their weights as used; 1 each without a weight field
    std::uint64_t droppedCount = 0;
    double droppedFreq = 0;
    std::uint64_t badWeightCount = 0;  ///< weights as used that are missing, negative or 0
};

/// A field of the execution: a column of the table under its own or another name, in the form the engine reads.
struct PreparedField {
    std::string name;
    const Column* column = nullptr;  ///< borrowed from the table
    /// A continuous field has the numbers of its cells, those of the categories where the column is categorical.
    FieldLevel level = FieldLevel::kContinuous;
    bool isWeight = false;
};

/// The records as the engine's requirements ask for them.
struct PreparedData {
    std::vector<PreparedField> fields;
    /// For each field the values of all records. What is the same in the table is borrowed from there.
    std::vector<const double*> columns;
    std::size_t recordCount = 0;
    RecordCounts counts;
    std::vector<LargeArray<double>> made;  ///< those of the columns that differ from the table
};

/// Weighs, drops and encodes the records of a table. The result borrows the table. A required field that the table
/// lacks is left out. Throws an `InputError` for a table in which a field bears the name that the engine gives to the
/// copy of another one.
PreparedData PrepareData(const Table& table, const Requirements& requirements);

}  // namespace tarn
