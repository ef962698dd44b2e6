#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/tarn/Interrupt.h"
#include "host/MachineMemory.h"
#include "host/engine/NamedFields.h"
#include "host/table/FieldDescriptor.h"
#include "host/table/Table.h"
#include "host/table/TableLoader.h"
#include "host/table/TableReading.h"

namespace tarn {

/// What the user typed about the table, the same for every command that reads one.
struct TableOptions {
    std::string dataPath;
    std::string fieldsPath;  ///< empty: every column is inferred
    std::optional<std::string> weightField;
    std::vector<std::string> nominal;
    std::vector<std::string> ordinal;
    std::vector<std::string> continuous;
    ReadingOptions reading;
    std::size_t memory = HalfOfMachine();  ///< bytes that a table and a run may take
    unsigned threads = 0;                  ///< that may work at a time; 0: as many as the machine has
};

/// The descriptor that was typed; one that says nothing where there is none. Throws an `InputError`.
TableDescriptor DescriptorOf(const TableOptions& options);

/// Reads the table with all of its numbers. Throws an `InputError`, and a `LoadCancelled` after an interrupt.
Table LoadWholeTable(const TableOptions& options, const TableDescriptor& descriptor, const Interrupt& interrupt);

/// Reads the table for an analysis of these fields. `excludeUserMissing`: whether the user-missing values of its fields
/// are missing. `nominalByDefault`: a field that is nominal unless its level is given. Throws an `InputError`, and a
/// `LoadCancelled` after an interrupt.
Table LoadTableOf(const TableOptions& options, const NamedFields& fields, bool excludeUserMissing,
                  const Interrupt& interrupt, const std::optional<std::string>& nominalByDefault = std::nullopt,
                  const std::vector<FieldOrder>& orders = {});

}  // namespace tarn
