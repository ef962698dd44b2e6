#pragma once

#include <string>
#include <vector>

#include "support/QKVecValue.h"
#include "tests/harness/EntryRun.h"

/// One test of a pair of fields over a small table.
namespace pairs {

using harness::Columns;
using harness::Number;
using harness::ResultOf;
using harness::Rows;
using harness::RunEntry;
using harness::Texts;

/// The entry of a test: "variableName" and nothing else.
inline QKSettings Entry(const std::vector<std::string>& names) {
    QKSettings entry;
    AddVecSetting(entry, "variableName", names, false);
    return entry;
}

}  // namespace pairs
