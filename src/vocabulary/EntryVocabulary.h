#pragma once

/// The literals of the entries that selection writes for the plan builders, each once. Spelling is part of the format.

/// The tests, as a request and the execution settings name them.
namespace TestName {
inline constexpr const char* kBinomial = "OBinomial";
inline constexpr const char* kConfidenceInterval = "OEstimateConfidenceInterval";
inline constexpr const char* kChiSquare = "OChiSquare";
inline constexpr const char* kRuns = "ORuns";
inline constexpr const char* kKolmogorovSmirnovNormal = "OKolmogorovSmirnovNormal";
inline constexpr const char* kKolmogorovSmirnovUniform = "OKolmogorovSmirnovUniform";
inline constexpr const char* kKolmogorovSmirnovPoisson = "OKolmogorovSmirnovPoisson";
inline constexpr const char* kKolmogorovSmirnovExponential = "OKolmogorovSmirnovExponential";
inline constexpr const char* kWilcoxonOneSample = "OWilcoxonSignedRanks";

inline constexpr const char* kSign = "RSign";
inline constexpr const char* kWilcoxonPairs = "RWilcoxonSignedRanks";
inline constexpr const char* kHodgesLehmannPairs = "RHodgesLehmannEstimatePairs";
inline constexpr const char* kFriedman = "RFriedmansTwoWayByRanks";
inline constexpr const char* kKendall = "RKendallsCoefficient";
inline constexpr const char* kMcNemar = "RMcNemar";
inline constexpr const char* kCochransQ = "RCochransQ";
inline constexpr const char* kMarginalHomogeneity = "RMarginalHomogeneity";

inline constexpr const char* kWaldWolfowitz = "IWaldWolfowitzRuns";
inline constexpr const char* kMoses = "IMoses";
inline constexpr const char* kMannWhitney = "IMannWhitneyU";
inline constexpr const char* kKolmogorovSmirnovTwoSample = "IKolmogorovSmirnov";
inline constexpr const char* kKruskalWallis = "IKruskalWallis";
inline constexpr const char* kJonckheereTerpstra = "IJonckheereTerpstra";
// A request knows these two by names of its own.
inline constexpr const char* kHodgesLehmannInRequest = "IHodgesLehmannEstimateIndependent";
inline constexpr const char* kHodgesLehmannGroups = "IHodgesLehmannEstimateGroups";
inline constexpr const char* kMedianInRequest = "IKMedian";
inline constexpr const char* kMedian = "IMedian";
}  // namespace TestName

/// The keys of an entry that no header of the plan builders names.
namespace EntryKey {
inline constexpr const char* kAlgorithmName = "AlgorithmName";
/// A proposal of the automatic choice holds its test's name under this key, and stays that way as an entry.
inline constexpr const char* kProposedAlgorithmName = "algorithmName";
inline constexpr const char* kTestIndex = "testIndex";
inline constexpr const char* kGroupVariableName = "groupVariableName";
inline constexpr const char* kCaseIdVariableName = "caseIDVariableName";

// Related and independent samples.
inline constexpr const char* kCategoriesList = "categoriesList";
inline constexpr const char* kUserSpecifyMedian = "userSpecifyMedian";
inline constexpr const char* kMedian = "median";
inline constexpr const char* kUserSpecifyGroupRange = "userSpecifyGroupRange";
inline constexpr const char* kUserSpecifyNumberOfOutliers = "userSpecifyNumberOfOutliers";
inline constexpr const char* kNumberOfOutliers = "NumberOfOutliers";
inline constexpr const char* kOrderOfHypotheses = "orderOfHypotheses";
}  // namespace EntryKey

namespace EntryValue {
inline constexpr const char* kTrue = "true";
}  // namespace EntryValue
