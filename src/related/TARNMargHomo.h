#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "platform/common/QKVarList.h"
#include "related/SquareTable.h"

/// The categories of fields that mean the same: a row per category of the field that was added first, in its order.
/// Later fields have the same categories, by text or by number, though not always in that order. Borrows the fields,
/// which outlive every test.
class TARNCategoryTable {
 public:
    explicit TARNCategoryTable(const QKVarList& fields) : varList(&fields) {}

    /// 220006: the field is not there or not categorical, or its categories are not those of the first field.
    QKStatus AddField(int field);

    /// The row of a field's category, which is the index of the same category in the first field; -1 for none.
    int FindAligned(int field, int category) const;
    /// The rows of all categories of a field that was added.
    std::vector<int> RowsOf(int field) const;

    /// The number of a row: the value of its category, its index where categories are texts.
    double ScoreOf(int row) const;

 private:
    struct Column {
        int field;
        std::vector<int> rowOfCategory;
    };
    const Column* Find(int field) const;
    int FindRow(const IQKVariable& variable, int category) const;

    const QKVarList* varList;
    std::vector<Column> columns;
    bool isText = true;
};

/// The test of marginal homogeneity of one pair of ordered categorical fields, setting "RMarginalHomogeneity".
class TARNMargHomo : public ColumnTest {
 public:
    /// Reads from its settings "variablePairFirstIndex", "variablePairSecondIndex", "weightVariableIndex", "sigLevel",
    /// and "scoreList" or "numberOfCategories". The table may be null; then no scores can be made.
    TARNMargHomo(std::unique_ptr<QKSettings> testSettings, std::unique_ptr<TARNCategoryTable> alignedCategories)
        : ColumnTest(std::move(testSettings)), categoryTable(std::move(alignedCategories)) {}

    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override;
    QKStatus ProcessColumns(ColumnBatch& batch) override;
    bool NeedsAnotherPass() override { return false; }
    QKStatus EndPass() override;
    void GetUsedVariables(std::vector<int>& fieldIndices) override;
    QKXML::XMLElement* MakeResultElement() override;

 private:
    bool ReadScores();
    void PlaceColumns();
    template <typename Visit>
    void ForEachCell(Visit visit) const;
    template <typename Sum, typename Term>
    Sum SumOverChanges(Term term) const;
    void ComputeStatistic();

    int weightVariableIndex = -1;
    int firstVariableIndex = -1;
    int secondVariableIndex = -1;
    std::int64_t totalN = 0;
    std::vector<double> scores;
    /// Joint counts: a row per category of the first field, a column per the same category of the second, and one more
    /// of each for the records that have no cell.
    SquareTable cells;
    /// Per category of the second field its column.
    std::vector<std::uint32_t> columnOfCategory;
    double sigLevel = kDefaultSigLevel;
    double testStatistic = 0;
    double asymptoticSig = 0;
    double standardError = 0;
    double standardTestStatistic = 0;
    std::unique_ptr<TARNCategoryTable> categoryTable;
};

/// The plan builder of "RMarginalHomogeneity". Key: "variableName", the two fields.
void PlanMargHomo(const QKSettings& entry, TARNPlan& plan);
