#pragma once

#include <string>
#include <vector>

#include "host/Json.h"
#include "host/beyond/TestCases.h"
#include "host/report/ResultReading.h"
#include "host/table/RecordSelection.h"
#include "host/table/Table.h"
#include "host/table/WeightCounts.h"
#include "machine/WorkShare.h"

namespace tarn {

/// What a record is made from, besides the result. All is borrowed.
struct RecordSource {
    /// That of the analysis, as the tests saw it.
    const Table& table;
    /// Which records the tests saw, besides those that their own fields left them.
    const CaseRule& rule;
    WeightRule weights;
    const RecordSelection& selection;
    const Json& request;            ///< what was asked for; null where nobody knows
    std::string requestWords = {};  ///< the same as it is typed
    std::string file = {};          ///< the name of the table; "" for none
    /// Whether the table still holds what was analysed. Else none of its values is looked at.
    bool isUntouched = true;
};

/// Which columns a record has to have all of by the document of a run that wasn't asked for in the words of an
/// analysis: where missing values are treated listwise, all those of the table on the way of a plan, whose weights are
/// cut, and the fields of the document on that of a request.
CaseRule ListwiseRuleOf(const ResultReading& result, const Table& table, WeightRule way);

/// Says with a result how it was made. Reads all values that the tests saw.
void AddRecord(ResultReading& result, const RecordSource& source, const WorkShare& work);

}  // namespace tarn
