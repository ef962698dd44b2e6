#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "platform/common/QKMV.h"
#include "support/ResultElements.h"

/// One category of the chi-square test.
struct ChiSquareCell {
    std::int32_t category;  ///< its index, -1 for one that the field doesn't know
    std::uint64_t observed;
    double proportion;  ///< expected
    double given;       ///< the same as it was given, whatever the sum of all

    double AboveExpected(long double sumOfGiven, std::int64_t totalN) const;
};

/// The chi-square test of the frequencies of one categorical field, setting "OChiSquare".
class TARNChiSquare : public ColumnTest {
 public:
    /// Reads from its settings "variableIndex", "measureLevel", "sigLevel", "classFormation" and, for expected values,
    /// "givenCategoryList", "originalGivenCategoryList" and "expectedValue".
    explicit TARNChiSquare(std::unique_ptr<QKSettings> testSettings) : ColumnTest(std::move(testSettings)) {}

    /// Borrowed; read in `BeginPass`.
    void SetUnivariateResults(UnivariateResults* results) override { univariateResults = results; }
    QKStatus BeginPass() override;
    /// The frequencies are in the descriptives already.
    QKStatus ProcessColumns(ColumnBatch&) override { return status; }
    bool NeedsAnotherPass() override { return false; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override { fieldIndices.push_back(variableIndex); }
    QKXML::XMLElement* MakeResultElement() override;

 private:
    void ReadSettings();
    void BuildCellsFromData();
    void BuildCellsFromList();
    void BuildCells(const std::vector<double>& categories);
    void AddExpectedCountsMessage(std::size_t below, double smallest);
    void AddComparison(ResultElement& element) const;

    UnivariateResults* univariateResults = nullptr;
    int measureLevel = 0;
    std::int64_t totalN = 0;
    std::vector<ChiSquareCell> cells;
    int variableIndex = -1;
    double asymptoticSig = 0;
    double testStatistic = 0;
    double sigLevel = QKMV::Missing();
    bool useDefaultCategories = true;
    std::vector<std::string> originalGivenCategories;
};

/// The plan builder of "OChiSquare". Keys: "variableName"; "classFormation", "getFromData" or "givenExpectedValue",
/// with the latter "custom", per category "categoryValue" and "expectedValue".
void PlanChiSquare(const QKSettings& entry, TARNPlan& plan);
