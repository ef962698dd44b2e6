#pragma once

#include <string>
#include <vector>

#include "host/Json.h"
#include "host/table/FieldDescriptor.h"
#include "host/table/Table.h"

namespace tarn {

/// What someone who sees a table for the first time should know of a field, each in a few words.
struct FieldLook {
    std::string name;
    std::string kind;                  ///< "number", "3 words"
    std::string values;                ///< "2.1 to 9.7, median 5.9", "placebo 107, low 106"
    std::vector<std::string> remarks;  ///< what is missing, what is odd, which option may be wanted
};

struct TableLook {
    std::string title;  ///< how large the table is, and how it is written
    std::vector<FieldLook> fields;
    /// What stands behind the name of the table in calls of `tarn analyze` that can be made, at most three.
    std::vector<std::string> calls;
};

/// Looks at a table that was read with all of its numbers. `name` is what its notes call it.
TableLook LookAt(const Table& table, const std::string& name);

/// A table as a descriptor that reads it in the same way again, for a user to go on from. `given` is the one that it
/// was read with.
Json DescriptorOf(const Table& table, const TableDescriptor& given);

/// A word of a command line, in quotes where a shell would see more than a word in it.
std::string ShellWord(const std::string& word);

}  // namespace tarn
