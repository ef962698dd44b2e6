#pragma once

#include <memory>

#include "related/RankedRows.h"

/// The Friedman test of k continuous fields, setting "RFriedmansTwoWayByRanks".
class TARNFriedman : public RankedRows {
 public:
    explicit TARNFriedman(std::unique_ptr<QKSettings> testSettings);

    QKStatus ProcessColumns(ColumnBatch& batch) override;

 protected:
    void AddStatistic(StructuredTable& statistics) const override;
};

/// The plan builder of "RFriedmansTwoWayByRanks". Keys: "variableName", the fields; "typeOfMultipleComparison";
/// "originVariableName", optional.
void PlanFriedman(const QKSettings& entry, TARNPlan& plan);
