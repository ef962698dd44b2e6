#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/Json.h"
#include "host/table/DataHash.h"
#include "host/table/RecordSelection.h"
#include "host/table/WeightCounts.h"

namespace tarn {

/// What a test could take of the records of the analysis. It may leave out others by its own definition, such as
/// differences of zero.
struct RecordedTest {
    std::string name;  ///< as in the document
    std::vector<std::string> fields;
    std::string group;              ///< "" for none
    std::size_t withoutWeight = 0;  ///< left out for a weight that is missing, negative or 0
    std::size_t missing = 0;        ///< left out of the others for a missing value
    std::size_t complete = 0;       ///< those that are left
};

/// What it takes to make a result again, and to know that it is the same.
struct RunRecord {
    std::string version;  ///< of the program
    std::string commit;   ///< of its sources; "" where nobody knows
    /// The libraries that numbers and tables go through, with their versions.
    std::vector<std::pair<std::string, std::string>> libraries;
    Json request;              ///< what was asked for; null where nobody knows
    std::string requestWords;  ///< the same as it is typed; "" for none

    std::string file;  ///< of the table, as it was named; "" for none
    RecordSelection selection;
    std::size_t records = 0;  ///< of the analysis; subjects, of repeated measures in long form
    std::optional<WeightCounts> weights;
    std::optional<DataHash> data;  ///< none where the data is no longer what was analysed
    std::vector<RecordedTest> tests;
};

/// The object `record` of parts in JSON: what those of all parts have in common.
Json ProgramJson(const RunRecord& record);

/// The object `record` of a result in JSON. `arithmetic` is the name of its mode; "" for none.
Json RecordJson(const RunRecord& record, const std::string& arithmetic);

}  // namespace tarn
