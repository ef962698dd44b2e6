#pragma once

/// The status codes: each once in the table at the end, with what kind of message it makes and who reports it. A code
/// is the whole message: the engine writes it, a host resolves it to a text. A code divided by 100 names the test, by
/// `TestFacts::codeGroup`; those that several places share begin with 2200.
///
/// A test's own codes stand in its source, where they are used, as `220903_error`, `220916_help` or `221413_warning`:
/// that compiles if the table has the code as a message of that kind.

/// What kind of message it is. The kind comes from whoever adds the message, not from its code.
enum class MessageKind { kError = 0, kWarning = 1, kHelpMessage = 2 };

/// Who reports a code.
enum class Reporter {
    kRun,            ///< the engine, of a run as a whole
    kRequest,        ///< the selection of tests, to which a request is left
    kRequirements,   ///< the component, asked what a request requires of the data
    kHostFunctions,  ///< the functions for a host, as the `errorCode` of a call
    kAnyTest,        ///< several tests, in their results
    kTest            ///< the test of the code's group, in its result
};

namespace StatusCode {

inline constexpr long kCancelled = 1;
inline constexpr long kRunNotComplete = 6;

inline constexpr long kNoTestRequested = 220001;
inline constexpr long kAllocationFailed = 220002;
/// The stream was empty; for a test, no case was left for it.
inline constexpr long kNoRecords = 220003;
inline constexpr long kUnknownFieldKind = 220004;
/// No record stream was given, or the sorted view of a field is missing.
inline constexpr long kNoIterator = 220005;
/// A distribution function gave no value.
inline constexpr long kSignificanceFailed = 220007;
/// The only code of a test that stops the whole run.
inline constexpr long kOutOfMemory = 220012;
/// A stepwise comparison found a sample that it could put together with no other.
inline constexpr long kSampleInNoSubset = 220013;
inline constexpr long kWeightTooLarge = 220026;

/// A row of the table: a code has one for each kind and reporter.
struct Row {
    long code;
    MessageKind kind;
    Reporter reporter;
};

inline constexpr Row kTable[] = {
    {kCancelled, MessageKind::kError, Reporter::kRun},
    {kRunNotComplete, MessageKind::kError, Reporter::kRun},
    {kNoTestRequested, MessageKind::kError, Reporter::kRun},
    {kNoTestRequested, MessageKind::kError, Reporter::kRequest},
    {kAllocationFailed, MessageKind::kError, Reporter::kRun},
    {kAllocationFailed, MessageKind::kError, Reporter::kAnyTest},
    {kNoRecords, MessageKind::kError, Reporter::kRun},
    {kNoRecords, MessageKind::kError, Reporter::kAnyTest},
    {kUnknownFieldKind, MessageKind::kError, Reporter::kRun},
    {kNoIterator, MessageKind::kError, Reporter::kRun},
    {220006, MessageKind::kError, Reporter::kAnyTest},
    {kSignificanceFailed, MessageKind::kError, Reporter::kAnyTest},
    {220008, MessageKind::kError, Reporter::kRequirements},
    {220009, MessageKind::kError, Reporter::kRequirements},
    {220010, MessageKind::kError, Reporter::kRequirements},
    {220011, MessageKind::kError, Reporter::kRequirements},
    {kOutOfMemory, MessageKind::kError, Reporter::kRun},
    {kOutOfMemory, MessageKind::kError, Reporter::kHostFunctions},
    {kOutOfMemory, MessageKind::kError, Reporter::kAnyTest},
    {kSampleInNoSubset, MessageKind::kWarning, Reporter::kAnyTest},
    {220014, MessageKind::kWarning, Reporter::kRequest},
    {220015, MessageKind::kWarning, Reporter::kRequest},
    {220016, MessageKind::kWarning, Reporter::kRequest},
    {220017, MessageKind::kWarning, Reporter::kRequest},
    {220018, MessageKind::kWarning, Reporter::kRequest},
    {220019, MessageKind::kWarning, Reporter::kRequest},
    {220020, MessageKind::kWarning, Reporter::kRequest},
    {220021, MessageKind::kWarning, Reporter::kRequest},
    {220022, MessageKind::kWarning, Reporter::kRequest},
    {220023, MessageKind::kWarning, Reporter::kRequest},
    {220024, MessageKind::kWarning, Reporter::kRequest},
    {220025, MessageKind::kWarning, Reporter::kRequest},
    {kWeightTooLarge, MessageKind::kError, Reporter::kRun},
    // Runs test
    {220101, MessageKind::kError, Reporter::kTest},
    {220103, MessageKind::kError, Reporter::kTest},
    {220109, MessageKind::kError, Reporter::kTest},
    {220110, MessageKind::kError, Reporter::kTest},
    {220111, MessageKind::kError, Reporter::kTest},
    {220112, MessageKind::kError, Reporter::kTest},
    // Chi-square test
    {220201, MessageKind::kError, Reporter::kTest},
    {220203, MessageKind::kError, Reporter::kTest},
    {220204, MessageKind::kError, Reporter::kTest},
    {220209, MessageKind::kError, Reporter::kTest},
    {220211, MessageKind::kHelpMessage, Reporter::kTest},
    {220212, MessageKind::kError, Reporter::kTest},
    // Kolmogorov-Smirnov test of one sample
    {220303, MessageKind::kError, Reporter::kTest},
    {220304, MessageKind::kError, Reporter::kTest},
    {220305, MessageKind::kError, Reporter::kTest},
    {220308, MessageKind::kWarning, Reporter::kTest},
    {220309, MessageKind::kHelpMessage, Reporter::kTest},
    {220310, MessageKind::kError, Reporter::kTest},
    {220311, MessageKind::kWarning, Reporter::kTest},
    {220312, MessageKind::kError, Reporter::kTest},
    {220313, MessageKind::kError, Reporter::kTest},
    {220314, MessageKind::kWarning, Reporter::kTest},
    {220315, MessageKind::kError, Reporter::kTest},
    {220316, MessageKind::kError, Reporter::kTest},
    // Mann-Whitney U test
    {220701, MessageKind::kError, Reporter::kTest},
    {220703, MessageKind::kError, Reporter::kTest},
    {220706, MessageKind::kError, Reporter::kTest},
    {220709, MessageKind::kError, Reporter::kTest},
    {220710, MessageKind::kError, Reporter::kTest},
    {220711, MessageKind::kError, Reporter::kTest},
    {220712, MessageKind::kError, Reporter::kTest},
    {220713, MessageKind::kError, Reporter::kTest},
    {220714, MessageKind::kError, Reporter::kTest},
    {220715, MessageKind::kError, Reporter::kTest},
    // Wilcoxon signed rank test
    {220801, MessageKind::kError, Reporter::kTest},
    {220803, MessageKind::kError, Reporter::kTest},
    {220812, MessageKind::kError, Reporter::kTest},
    {220815, MessageKind::kError, Reporter::kTest},
    // Sign test
    {220903, MessageKind::kError, Reporter::kTest},
    {220912, MessageKind::kError, Reporter::kTest},
    {220915, MessageKind::kError, Reporter::kTest},
    {220916, MessageKind::kHelpMessage, Reporter::kTest},
    {220917, MessageKind::kError, Reporter::kTest},
    {220918, MessageKind::kError, Reporter::kTest},
    // Wilcoxon signed rank test of matched pairs
    {221003, MessageKind::kError, Reporter::kTest},
    {221004, MessageKind::kError, Reporter::kTest},
    {221009, MessageKind::kError, Reporter::kTest},
    {221010, MessageKind::kError, Reporter::kTest},
    // Moses test of extreme reactions
    {221101, MessageKind::kError, Reporter::kTest},
    {221103, MessageKind::kError, Reporter::kTest},
    {221106, MessageKind::kError, Reporter::kTest},
    {221109, MessageKind::kError, Reporter::kTest},
    {221110, MessageKind::kError, Reporter::kTest},
    {221111, MessageKind::kError, Reporter::kTest},
    {221112, MessageKind::kError, Reporter::kTest},
    {221113, MessageKind::kError, Reporter::kTest},
    {221114, MessageKind::kError, Reporter::kTest},
    {221115, MessageKind::kError, Reporter::kTest},
    {221116, MessageKind::kError, Reporter::kTest},
    {221117, MessageKind::kWarning, Reporter::kTest},
    // Cochran's Q test
    {221203, MessageKind::kError, Reporter::kTest},
    {221206, MessageKind::kError, Reporter::kTest},
    {221209, MessageKind::kError, Reporter::kTest},
    {221210, MessageKind::kError, Reporter::kTest},
    {221213, MessageKind::kError, Reporter::kTest},
    {221214, MessageKind::kError, Reporter::kTest},
    {221215, MessageKind::kError, Reporter::kTest},
    {221216, MessageKind::kError, Reporter::kTest},
    {221217, MessageKind::kWarning, Reporter::kTest},
    {221218, MessageKind::kWarning, Reporter::kTest},
    {221219, MessageKind::kWarning, Reporter::kTest},
    {221220, MessageKind::kWarning, Reporter::kTest},
    // Binomial test
    {221303, MessageKind::kError, Reporter::kTest},
    {221304, MessageKind::kError, Reporter::kTest},
    {221306, MessageKind::kError, Reporter::kTest},
    {221309, MessageKind::kError, Reporter::kTest},
    {221310, MessageKind::kError, Reporter::kTest},
    {221311, MessageKind::kHelpMessage, Reporter::kTest},
    {221312, MessageKind::kError, Reporter::kTest},
    {221313, MessageKind::kError, Reporter::kTest},
    {221314, MessageKind::kError, Reporter::kTest},
    {221315, MessageKind::kError, Reporter::kTest},
    {221316, MessageKind::kError, Reporter::kTest},
    {221317, MessageKind::kError, Reporter::kTest},
    // Wald-Wolfowitz runs test
    {221401, MessageKind::kError, Reporter::kTest},
    {221403, MessageKind::kError, Reporter::kTest},
    {221404, MessageKind::kError, Reporter::kTest},
    {221406, MessageKind::kError, Reporter::kTest},
    {221409, MessageKind::kError, Reporter::kTest},
    {221410, MessageKind::kError, Reporter::kTest},
    {221411, MessageKind::kError, Reporter::kTest},
    {221412, MessageKind::kError, Reporter::kTest},
    {221413, MessageKind::kWarning, Reporter::kTest},
    // Confidence intervals of a proportion
    {221503, MessageKind::kError, Reporter::kTest},
    {221504, MessageKind::kError, Reporter::kTest},
    {221506, MessageKind::kError, Reporter::kTest},
    {221509, MessageKind::kError, Reporter::kTest},
    {221510, MessageKind::kError, Reporter::kTest},
    {221511, MessageKind::kError, Reporter::kTest},
    {221512, MessageKind::kError, Reporter::kTest},
    {221513, MessageKind::kError, Reporter::kTest},
    {221514, MessageKind::kError, Reporter::kTest},
    {221515, MessageKind::kError, Reporter::kTest},
    // McNemar's test
    {221603, MessageKind::kError, Reporter::kTest},
    {221605, MessageKind::kError, Reporter::kTest},
    {221606, MessageKind::kError, Reporter::kTest},
    {221609, MessageKind::kError, Reporter::kTest},
    {221610, MessageKind::kError, Reporter::kTest},
    {221611, MessageKind::kError, Reporter::kTest},
    {221612, MessageKind::kHelpMessage, Reporter::kTest},
    {221613, MessageKind::kError, Reporter::kTest},
    {221614, MessageKind::kError, Reporter::kTest},
    // Marginal homogeneity test
    {221701, MessageKind::kError, Reporter::kTest},
    {221703, MessageKind::kError, Reporter::kTest},
    {221709, MessageKind::kError, Reporter::kTest},
    {221710, MessageKind::kError, Reporter::kTest},
    {221711, MessageKind::kError, Reporter::kTest},
    // Friedman's two-way analysis of variance by ranks
    {221801, MessageKind::kError, Reporter::kTest},
    {221803, MessageKind::kError, Reporter::kTest},
    {221804, MessageKind::kError, Reporter::kTest},
    {221809, MessageKind::kError, Reporter::kTest},
    {221811, MessageKind::kError, Reporter::kTest},
    {221813, MessageKind::kWarning, Reporter::kTest},
    {221814, MessageKind::kWarning, Reporter::kTest},
    {221815, MessageKind::kWarning, Reporter::kTest},
    {221816, MessageKind::kWarning, Reporter::kTest},
    // Kendall's coefficient of concordance
    {221901, MessageKind::kError, Reporter::kTest},
    {221903, MessageKind::kError, Reporter::kTest},
    {221904, MessageKind::kError, Reporter::kTest},
    {221909, MessageKind::kError, Reporter::kTest},
    {221911, MessageKind::kError, Reporter::kTest},
    {221913, MessageKind::kWarning, Reporter::kTest},
    {221914, MessageKind::kWarning, Reporter::kTest},
    {221915, MessageKind::kWarning, Reporter::kTest},
    {221916, MessageKind::kWarning, Reporter::kTest},
    // Kolmogorov-Smirnov test of two samples
    {222001, MessageKind::kError, Reporter::kTest},
    {222003, MessageKind::kError, Reporter::kTest},
    {222005, MessageKind::kError, Reporter::kTest},
    {222009, MessageKind::kError, Reporter::kTest},
    {222010, MessageKind::kError, Reporter::kTest},
    {222011, MessageKind::kError, Reporter::kTest},
    {222012, MessageKind::kError, Reporter::kTest},
    {222013, MessageKind::kError, Reporter::kTest},
    // Kruskal-Wallis test
    {222101, MessageKind::kError, Reporter::kTest},
    {222103, MessageKind::kError, Reporter::kTest},
    {222109, MessageKind::kError, Reporter::kTest},
    {222110, MessageKind::kError, Reporter::kTest},
    {222111, MessageKind::kHelpMessage, Reporter::kTest},
    {222112, MessageKind::kError, Reporter::kTest},
    {222115, MessageKind::kError, Reporter::kTest},
    {222116, MessageKind::kWarning, Reporter::kTest},
    {222117, MessageKind::kWarning, Reporter::kTest},
    {222118, MessageKind::kWarning, Reporter::kTest},
    {222119, MessageKind::kWarning, Reporter::kTest},
    // Jonckheere-Terpstra test
    {222203, MessageKind::kError, Reporter::kTest},
    {222206, MessageKind::kError, Reporter::kTest},
    {222210, MessageKind::kError, Reporter::kTest},
    {222210, MessageKind::kWarning, Reporter::kTest},  // in a step
    {222215, MessageKind::kError, Reporter::kTest},
    {222216, MessageKind::kError, Reporter::kTest},
    {222217, MessageKind::kError, Reporter::kTest},
    {222218, MessageKind::kError, Reporter::kTest},
    {222220, MessageKind::kError, Reporter::kTest},
    {222221, MessageKind::kWarning, Reporter::kTest},
    {222222, MessageKind::kWarning, Reporter::kTest},
    {222223, MessageKind::kWarning, Reporter::kTest},
    {222224, MessageKind::kWarning, Reporter::kTest},
    // Median test
    {222303, MessageKind::kError, Reporter::kTest},
    {222306, MessageKind::kError, Reporter::kTest},
    {222315, MessageKind::kError, Reporter::kTest},
    {222316, MessageKind::kError, Reporter::kTest},
    {222317, MessageKind::kError, Reporter::kTest},
    {222318, MessageKind::kError, Reporter::kTest},
    {222319, MessageKind::kError, Reporter::kTest},
    {222320, MessageKind::kError, Reporter::kTest},
    {222322, MessageKind::kError, Reporter::kTest},
    {222324, MessageKind::kError, Reporter::kTest},
    {222325, MessageKind::kError, Reporter::kTest},
    {222326, MessageKind::kWarning, Reporter::kTest},
    {222327, MessageKind::kWarning, Reporter::kTest},
    {222328, MessageKind::kWarning, Reporter::kTest},
    {222329, MessageKind::kWarning, Reporter::kTest},
    {222331, MessageKind::kWarning, Reporter::kTest},
    {222332, MessageKind::kWarning, Reporter::kTest},
    {222333, MessageKind::kWarning, Reporter::kTest},
    {222334, MessageKind::kWarning, Reporter::kTest},
    {222335, MessageKind::kWarning, Reporter::kTest},
    {222336, MessageKind::kWarning, Reporter::kTest},
    {222337, MessageKind::kWarning, Reporter::kTest},
    {222338, MessageKind::kWarning, Reporter::kTest},
    // Hodges-Lehmann estimate of matched pairs
    {222403, MessageKind::kError, Reporter::kTest},
    {222404, MessageKind::kError, Reporter::kTest},
    {222409, MessageKind::kError, Reporter::kTest},
    {222410, MessageKind::kError, Reporter::kTest},
    // Hodges-Lehmann estimate of two groups
    {222503, MessageKind::kError, Reporter::kTest},
    {222504, MessageKind::kError, Reporter::kTest},
    {222506, MessageKind::kError, Reporter::kTest},
    {222509, MessageKind::kError, Reporter::kTest},
    {222510, MessageKind::kError, Reporter::kTest},
    {222511, MessageKind::kError, Reporter::kTest},
    // The functions for a host
    {240001, MessageKind::kError, Reporter::kHostFunctions},
    {240002, MessageKind::kError, Reporter::kHostFunctions},
    {240003, MessageKind::kError, Reporter::kHostFunctions},
    {240004, MessageKind::kError, Reporter::kHostFunctions},
    {240005, MessageKind::kError, Reporter::kHostFunctions},
    {240037, MessageKind::kError, Reporter::kHostFunctions},
    {240038, MessageKind::kError, Reporter::kHostFunctions},
};

/// Whether a code may be reported as a message of that kind.
constexpr bool IsKnown(unsigned long long code, MessageKind kind) {
    for (const Row& row : kTable) {
        if (static_cast<unsigned long long>(row.code) == code && row.kind == kind) return true;
    }
    return false;
}

/// The code; no constant, and so no program, for one that the table doesn't have.
consteval long Known(unsigned long long code, MessageKind kind) {
    return IsKnown(code, kind) ? static_cast<long>(code) : throw "the table of status codes has no such row";
}

}  // namespace StatusCode

consteval long operator""_error(unsigned long long code) {
    return StatusCode::Known(code, MessageKind::kError);
}
consteval long operator""_warning(unsigned long long code) {
    return StatusCode::Known(code, MessageKind::kWarning);
}
consteval long operator""_help(unsigned long long code) {
    return StatusCode::Known(code, MessageKind::kHelpMessage);
}
