#pragma once

/// The keys and fixed texts of the result elements: the tests write them, the component renumbers fields by them, a
/// presenting program reads them. They are data, so their spelling is part of the format, slips included.

/// Elements and attributes.
namespace Element {
inline constexpr const char* kAlgorithm = "Algorithm";
inline constexpr const char* kAttribute = "Attribute";
inline constexpr const char* kStructuredTable = "StructuredTable";
inline constexpr const char* kSimpleTable = "SimpleTable";
/// Of the vocabulary, though no test writes one.
inline constexpr const char* kComplexTable = "ComplexTable";
inline constexpr const char* kRowNames = "RowNames";
inline constexpr const char* kColumnNames = "ColumnNames";
inline constexpr const char* kRow = "Row";
inline constexpr const char* kFieldInfos = "FieldInfos";
inline constexpr const char* kFieldInfo = "FieldInfo";
}  // namespace Element

namespace ElementAttribute {
inline constexpr const char* kName = "name";
inline constexpr const char* kValue = "value";
inline constexpr const char* kType = "type";
inline constexpr const char* kClassification = "classification";
inline constexpr const char* kDecision = "decision";
inline constexpr const char* kVarIndex = "varIndex";
/// Of a test, or of the descriptives of a field, that came out otherwise than as defined, with what is so:
/// `ArithmeticWay`, joined by a blank.
inline constexpr const char* kArithmetic = "arithmetic";
}  // namespace ElementAttribute

/// In what a test came out otherwise than as defined (see `Arithmetic`): a number was wider, or a statistic has the
/// textbook's form.
namespace ArithmeticWay {
inline constexpr const char* kExtended = "extended";
inline constexpr const char* kTextbook = "textbook";
}  // namespace ArithmeticWay

/// Names of tables.
namespace TableName {
inline constexpr const char* kCondition = "Condition";
inline constexpr const char* kWarningMessages = "WarningMessages";
inline constexpr const char* kMessage = "Message";
inline constexpr const char* kStatisticsResult = "StatisticsResult";
inline constexpr const char* kContinuousDistribution = "ContinuousDistribution";
inline constexpr const char* kCategoricalDistribution = "CategoricalDistribution";
inline constexpr const char* kInterval = "Interval";
inline constexpr const char* kUnknownCategories = "ValsNotInTheCategoreis";
inline constexpr const char* kUnknownRowCategories = "RowValsNotInTheCategoreis";
inline constexpr const char* kUnknownColumnCategories = "ColValsNotInTheCategoreis";
inline constexpr const char* kCategoryFieldsComparison = "CategoryFieldsComparison";
inline constexpr const char* kRunsParameters = "RunsParameters";
inline constexpr const char* kTwoClassComparison = "TwoClassComparison";
inline constexpr const char* kContent = "Content";
inline constexpr const char* kAsymptotic = "Asymptotic";
inline constexpr const char* kMostExtremeDifferences = "MostExtremeDifferences";
inline constexpr const char* kMinimumPossible = "MinimumPossible";
inline constexpr const char* kMaximumPossible = "MaximumPossible";
/// Followed by the number of the group.
inline constexpr const char* kGroup = "Group";
inline constexpr const char* kBoxPlotInfo = "BoxPlotInfo";
inline constexpr const char* kBox = "Box";
inline constexpr const char* kOutliers = "Outliers";
inline constexpr const char* kObservedControlGroup = "ObservedControlGroup";
inline constexpr const char* kTrimmedControlGroup = "TrimmedControlGroup";
/// Followed by the position of the field.
inline constexpr const char* kVariableInformation = "VariableInformation";
inline constexpr const char* kPairwiseResult = "PairwiseResult";
inline constexpr const char* kPairwiseInfo = "PairwiseInfo";
inline constexpr const char* kStepwiseResult = "StepwiseResult";
inline constexpr const char* kStepwiseInfo = "StepwiseInfo";
inline constexpr const char* kYatesContinuityCorrection = "YatesContinuityCorrection";
}  // namespace TableName

/// Names of rows. A name means the same kind of thing in every test.
namespace RowName {
inline constexpr const char* kConditionKey = "ConditionKey";

inline constexpr const char* kCode = "code";
inline constexpr const char* kType = "type";
inline constexpr const char* kParamNum = "paramNum";

inline constexpr const char* kTotalN = "TotalN";
inline constexpr const char* kTestStatistic = "TestStatistic";
inline constexpr const char* kStandardError = "StandardError";
inline constexpr const char* kStandardTestStatistic = "StandardTestStatistic";
inline constexpr const char* kDegreeOfFreedom = "DegreeOfFreedom";
inline constexpr const char* kAsymptoticSig2Tailed = "AsymptoticSig2Tailed";
inline constexpr const char* kAsymptoticSig1Tailed = "AsymptoticSig1Tailed";
inline constexpr const char* kExactSig2Tailed = "ExactSig2Tailed";
inline constexpr const char* kExactSig1Tailed = "ExactSig1Tailed";

inline constexpr const char* kHypotheticalMedian = "HypotheticalMedian";
inline constexpr const char* kObservedMedian = "ObservedMedian";

inline constexpr const char* kAbsolute = "Absolute";
inline constexpr const char* kPositive = "Positive";
inline constexpr const char* kNegative = "Negative";

inline constexpr const char* kNegativeDifferences = "NegativeDifferences";
inline constexpr const char* kTies = "Ties";
inline constexpr const char* kPositiveDifferences = "PositiveDifferences";

inline constexpr const char* kRowNames = "RowNames";
inline constexpr const char* kRowSuccessList = "RowSuccessList";
inline constexpr const char* kRowFailList = "RowFailList";
inline constexpr const char* kColumnNames = "ColumnNames";
inline constexpr const char* kColumnSuccessList = "ColumnSuccessList";
inline constexpr const char* kColumnFailList = "ColumnFailList";

inline constexpr const char* kGroupIndex = "GroupIndex";
inline constexpr const char* kGroupFieldIndex = "GroupFieldIndex";
inline constexpr const char* kGroupCount = "GroupCount";
inline constexpr const char* kN = "N";
inline constexpr const char* kMeanOfRank = "MeanOfRank";
inline constexpr const char* kMannWhitneyU = "MannWhitneyU";
inline constexpr const char* kWilcoxonW = "WilcoxonW";
inline constexpr const char* kFieldIndex = "fieldIndex";
inline constexpr const char* kKendallsW = "KendallsW";
inline constexpr const char* kOutliersTrimmed = "OutliersTrimmedFromEachEnd";

inline constexpr const char* kMedian = "Median";
inline constexpr const char* kGrandMedian = "GrandMedian";
inline constexpr const char* kGreaterThanMedian = "GTMedian";
inline constexpr const char* kNotGreaterThanMedian = "STMedian";
inline constexpr const char* kChiSquare = "ChiSquare";
inline constexpr const char* kFisherExactSig = "FisherExactSig";
inline constexpr const char* kObservedRunNumber = "ObservedRunNumber";

inline constexpr const char* kEstimate = "Estimate";
inline constexpr const char* kLower = "Lower";
inline constexpr const char* kUpper = "Upper";

inline constexpr const char* kMin = "Min";
inline constexpr const char* kMax = "Max";
inline constexpr const char* kMean = "Mean";
inline constexpr const char* kStdDev = "StdDev";
}  // namespace RowName

/// Fixed texts that stand as values.
namespace Literal {
/// A condition's parameter that has no value.
inline constexpr const char* kMissingParameter = "__MISSING__";
/// The two rows of an interval table.
inline constexpr const char* kCountAndValue = "count;value";
/// The columns of a box plot's box and the rows of its outliers.
inline constexpr const char* kBoxColumns = "smallestNonOutlier;25perc;50perc;75perc;largestNonOutlier";
inline constexpr const char* kOutlierRows = "Values;CaseID";
/// The two rows of compared samples, and the columns of compared pairs and of homogeneous subsets.
inline constexpr const char* kIndexOrderAndValue = "IndexOrder;Value";
inline constexpr const char* kPairColumns =
    "Sample1;Sample2;TestStatistic;StandardError;StandardTestStatistic;Sig;AdjSig";
inline constexpr const char* kSubsetColumns =
    "FirstPosition;LastPosition;TestStatistic;StandardError;StandardTestStatistic;Sig;AdjSig";
/// The columns of a comparison of counts or shares: the observed one and the expected one, or those of two classes.
inline constexpr const char* kTwoColumns = "0;1";
}  // namespace Literal
