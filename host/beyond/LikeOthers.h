#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/beyond/Alternative.h"
#include "host/beyond/RankTests.h"
#include "host/beyond/ZeroMethod.h"

namespace tarn {

/// A system whose numbers an analyst wants to meet: R (4.2) with its package stats, or SciPy (1.17).
enum class OtherSystem { kR, kSciPy };

/// That of the name "r" or "scipy".
std::optional<OtherSystem> OtherSystemOf(std::string_view name);

/// A test and what of its data the other system looks at to choose how it works.
struct LikeQuestion {
    std::string test;  ///< the name of its setting in a plan, such as IMannWhitneyU
    Alternative alternative = Alternative::kTwoSided;
    /// The hypothesis: a median, a shift of the first group or of a difference, a probability; for the median test the
    /// median to compare with.
    std::optional<double> testValue;
    std::vector<double> sizes;  ///< of the groups; of a test without groups the cases or complete pairs, zeros included
    bool hasTies = false;       ///< of the differences' magnitudes in a signed rank test
    bool hasZeros = false;      ///< among the differences
    bool hasMissing = false;    ///< values of the fields
    bool hasWeights = false;

    std::vector<std::string> fields;
    std::string groupField;
    std::vector<std::string> groups;  ///< in their order
    bool groupsAreTexts = true;
    bool groupsAreAll = true;  ///< the group field has no other values
    /// The values of the first class or of a success, and whether they are texts; or the cut that ends the first class.
    std::vector<std::string> successes;
    bool successesAreTexts = true;
    bool areSameTwoClasses = true;  ///< both fields of a pair have the same two categories and no other
    std::optional<double> cutPoint;
    /// Of the categories in ascending order, in any unit; empty for equal ones.
    std::vector<double> expected;
    /// Of the distribution of a Kolmogorov-Smirnov test: mean and standard deviation, minimum and maximum, or mean;
    /// empty where they are those of the sample.
    std::vector<double> parameters;
    double confidenceLevel = 0.95;

    // What the analyst wants otherwise than the system would have it.
    std::optional<bool> exact;
    std::optional<bool> continuity;
    std::optional<ZeroMethod> zeros;
};

/// How the other system does a test, so that its numbers can be worked out here.
struct LikeSetting {
    bool hasCall = false;
    bool isExact = false;
    bool ignoresTies = false;  ///< the exact distribution is that of values without ties, though there are some
    bool takesOtherTail =
        false;                ///< the exact significance is that of the other side, which differs where there are ties
    bool continuity = false;  ///< of a test that is not exact
    ZeroMethod zeros = ZeroMethod::kDrop;
    KolmogorovForm kolmogorov = KolmogorovForm::kLimit;
    /// What to type there; fields are variables of their names, in Python columns of `df` where the name is none for a
    /// variable. Empty without a call.
    std::string call;
    /// The key of a sentence that says why there is no call: "likeNoCall", "likeNoAlternative", "likeNoZeroMethod",
    /// "likeTooFewFields", "likeMissing" or "likeWeights". Empty where there is one.
    std::string_view reason;
};

/// The setting of the other system's default call, or of that with the choices asked for. The significance of the call
/// is the one meant; that of Kendall's coefficient, of Cochran's Q and of Jonckheere's test comes from a call of
/// another name, which gives the same number.
LikeSetting SettingLike(OtherSystem system, const LikeQuestion& question);

/// A name as R's variables have it: in backticks unless it is syntactic.
std::string NameInR(std::string_view name);
/// A variable of Python, or a column of `df`.
std::string NameInPython(std::string_view name);
/// A text in double quotes, as both of them read it.
std::string QuotedText(std::string_view text);

}  // namespace tarn
