#pragma once

#include <memory>

#include "related/RankedRows.h"

/// Kendall's coefficient of concordance over k continuous fields, setting "RKendallsCoefficient".
class TARNKendallsW : public RankedRows {
 public:
    explicit TARNKendallsW(std::unique_ptr<QKSettings> testSettings);

    QKStatus ProcessColumns(ColumnBatch& batch) override;

 protected:
    void AddStatistic(StructuredTable& statistics) const override;
};

/// The plan builder of "RKendallsCoefficient". Keys: those of "RFriedmansTwoWayByRanks".
void PlanKendallsW(const QKSettings& entry, TARNPlan& plan);
