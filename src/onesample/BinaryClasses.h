#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNPlan.h"
#include "contract/TARNPlanBuilder.h"
#include "platform/common/QKMV.h"
#include "platform/common/QKSettings.h"
#include "platform/common/QKStatus.h"
#include "support/CategorySet.h"
#include "support/ResultElements.h"
#include "support/UnivariateResults.h"

/// What the binomial test and the intervals of a proportion share: the division of one field into two classes, by a
/// cut point, by a list of categories, or by the two categories that the field has.

/// The codes of such a test.
struct BinaryCodes {
    long nameMissing;
    long unknownField;
    long listMissing;
    long cutPointMissing;
    long noMeasureLevel;
    long continuousWithoutCut;
    long categoricalWithCut;
    long noFrequencies;
    long tooManyCategories;
    long noCategory;
};

/// The keys of the table "Condition" by the way in which the classes are made.
struct BinaryConditionKeys {
    const char* fromData;
    const char* givenList;
    const char* cutPoint;
};

/// The plan of the two classes, in steps, between which a test reads keys of its own. A step does nothing once the
/// builder has failed.
class BinaryClassesPlan {
 public:
    /// Borrows all three for its life.
    BinaryClassesPlan(TARNPlanBuilder& planBuilder, TARNPlan& thePlan, const BinaryCodes& theCodes)
        : builder(planBuilder), plan(thePlan), codes(theCodes) {}

    /// Resolves "variableName" and requests what the classes need of the field.
    void ResolveField();
    /// Reads how the classes are formed.
    void ReadFormation();
    /// Whether that fits the field; then the given categories become indices of the field's.
    void FinishClasses();

 private:
    void ReadCategoryList();
    void ReadCutPoint();
    void WriteCategories();

    TARNPlanBuilder& builder;
    TARNPlan& plan;
    const BinaryCodes& codes;
    int field = -1;
    int measureLevel = 0;
    std::string formation;
    bool isCutPoint = false;  // what the test will be given; the formation's text may be another one
    std::vector<std::string> givenTexts;
};

/// The two classes of a field, and how many records are in each.
class BinaryClasses {
 public:
    /// Reads "classFormation", "variableIndex" and "weightVariableIndex".
    void ReadFormation(const QKSettings& settings);
    void ReadMeasureLevel(const QKSettings& settings);
    /// Sets the classes up for a pass. Not OK: an error that the test is to raise.
    [[nodiscard]] QKStatus Begin(const QKSettings& settings, const UnivariateResults* univariateResults,
                                 const BinaryCodes& codes, const Arithmetic& arithmetic);
    /// Takes records of the pass.
    void Add(ColumnBatch& batch);

    int GetVariableIndex() const { return variableIndex; }
    /// Sums of weights.
    std::int64_t GetFirstCount() const { return firstCount; }
    std::int64_t GetSecondCount() const { return secondCount; }

    const char* ConditionKey(const BinaryConditionKeys& keys) const;
    /// The parameters of "Condition": the field; the first class or the cut point; the second class, which only
    /// formations other than a cut point have.
    std::string FieldParameter() const;
    std::string FirstClassParameter() const;
    std::string SecondClassParameter() const;
    bool HasCutPoint() const { return classFormation == Formation::kCutPoint; }
    /// The table of given categories that the field doesn't know.
    void AddUnknownCategories(ResultElement& element) const;

 private:
    enum class Formation { kFromData = 0, kGivenCategoryList = 1, kCutPoint = 2 };

    void ReadCutPoint(const QKSettings& settings, const UnivariateResults* univariateResults);
    QKStatus TakeClassesOfData(const std::map<int, std::int64_t>& frequencies, const BinaryCodes& codes,
                               const Arithmetic& arithmetic);
    void ReadGivenClasses(const QKSettings& settings);
    void AddClasses(const std::uint32_t* areFirst, const std::int32_t* weights, std::size_t count);
    void OrderClassesByFirstRecord(double value);

    Formation classFormation = Formation::kFromData;
    int measureLevel = 0;
    double cutPoint = QKMV::Missing();
    std::vector<double> givenCategories;
    std::vector<double> notUsedCategories;
    std::vector<std::string> originalGivenCategories;
    CategorySet firstClass;
    int variableIndex = -1;
    int weightVariableIndex = -1;
    std::int64_t firstCount = 0;
    std::int64_t secondCount = 0;
    bool firstRecord = true;
};
