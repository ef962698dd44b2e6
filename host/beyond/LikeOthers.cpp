#include "host/beyond/LikeOthers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <numeric>
#include <span>

#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

// ---- Names and numbers ----

constexpr std::string_view kReservedInR[] = {
    "if",   "else", "repeat", "while", "function", "for",         "next",     "break",         "TRUE",       "FALSE",
    "NULL", "Inf",  "NaN",    "NA",    "in",       "NA_integer_", "NA_real_", "NA_character_", "NA_complex_"};
constexpr std::string_view kReservedInPython[] = {
    "False", "None",     "True",  "and",    "as",   "assert", "async",  "await",    "break",
    "class", "continue", "def",   "del",    "elif", "else",   "except", "finally",  "for",
    "from",  "global",   "if",    "import", "in",   "is",     "lambda", "nonlocal", "not",
    "or",    "pass",     "raise", "return", "try",  "while",  "with",   "yield"};
/// Names that the calls use.
constexpr std::string_view kTakenInPython[] = {"df", "np", "scipy"};

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool Contains(std::span<const std::string_view> list, std::string_view name) {
    return std::ranges::find(list, name) != list.end();
}

/// The shortest text that reads back as the number; whole numbers without an exponent, which would not be whole there.
std::string NumberText(double number) {
    constexpr std::size_t kLongest = 32;
    constexpr double kLargestWhole = 0x1p53;
    if (std::abs(number) <= kLargestWhole && number == std::trunc(number)) return std::to_string(std::llround(number));
    std::array<char, kLongest> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), end.ptr};
}

std::string Joined(const std::vector<std::string>& parts, std::string_view separator = ", ") {
    std::string whole;
    for (const std::string& part : parts) {
        if (!whole.empty()) whole += separator;
        whole += part;
    }
    return whole;
}

std::vector<std::string> NumberTexts(const std::vector<double>& numbers) {
    std::vector<std::string> texts;
    for (const double number : numbers) texts.push_back(NumberText(number));
    return texts;
}

// ---- Calls ----

/// A call of a function, argument by argument.
class Call {
 public:
    Call(OtherSystem system, std::string_view name) : system_(system), text_(name) { text_ += '('; }

    Call& Add(std::string_view argument) {
        if (!isEmpty_) text_ += ", ";
        isEmpty_ = false;
        text_ += argument;
        return *this;
    }
    Call& Add(std::string_view name, std::string_view value) {
        return Add(std::string(name) + (system_ == OtherSystem::kR ? " = " : "=") + std::string(value));
    }
    Call& AddFlag(std::string_view name, bool value) {
        if (system_ == OtherSystem::kR) return Add(name, value ? "TRUE" : "FALSE");
        return Add(name, value ? "True" : "False");
    }
    std::string Text() const { return text_ + ')'; }

 private:
    OtherSystem system_;
    std::string text_;
    bool isEmpty_ = true;
};

/// What a question becomes in the words of a system.
class Words {
 public:
    Words(OtherSystem system, const LikeQuestion& question) : system_(system), question_(question) {}

    bool IsR() const { return system_ == OtherSystem::kR; }
    Call Begin(std::string_view inR, std::string_view inSciPy) const {
        return IsR() ? Call(system_, inR) : Call(system_, "scipy.stats." + std::string(inSciPy));
    }
    std::string Name(std::string_view name) const { return IsR() ? NameInR(name) : NameInPython(name); }
    std::string Field(std::size_t i) const { return i < question_.fields.size() ? Name(question_.fields[i]) : ""; }
    std::vector<std::string> Fields() const {
        std::vector<std::string> names;
        for (const std::string& field : question_.fields) names.push_back(Name(field));
        return names;
    }
    std::string Group() const { return Name(question_.groupField); }
    std::string GroupValue(std::size_t i) const {
        return question_.groupsAreTexts ? QuotedText(question_.groups[i]) : question_.groups[i];
    }
    /// The values of a group: len[supp == "OJ"].
    std::string Sample(std::size_t i) const {
        if (i >= question_.groups.size()) return "";
        return Field(0) + "[" + Group() + " == " + GroupValue(i) + "]";
    }
    std::vector<std::string> Samples() const {
        std::vector<std::string> samples;
        for (std::size_t i = 0; i < question_.groups.size(); ++i) samples.push_back(Sample(i));
        return samples;
    }
    /// Which groups the test has: c("OJ", "VC").
    std::string GroupValues() const {
        std::vector<std::string> values;
        for (std::size_t i = 0; i < question_.groups.size(); ++i) values.push_back(GroupValue(i));
        return "c(" + Joined(values) + ")";
    }
    /// Whether a case is of the first class or a success, for each one.
    std::string IsSuccess(std::string_view field) const {
        if (question_.cutPoint) return std::string(field) + " <= " + NumberText(*question_.cutPoint);
        std::vector<std::string> values;
        for (const std::string& value : question_.successes) {
            values.push_back(question_.successesAreTexts ? QuotedText(value) : value);
        }
        if (values.size() == 1) return std::string(field) + " == " + values.front();
        if (IsR()) return std::string(field) + " %in% c(" + Joined(values) + ")";
        return "np.isin(" + std::string(field) + ", [" + Joined(values) + "])";
    }
    /// How many cases meet a condition.
    std::string CountOf(const std::string& condition) const {
        if (!IsR()) return "np.sum(" + condition + ")";
        return "sum(" + condition + (question_.hasMissing ? ", na.rm = TRUE)" : ")");
    }
    void AddAlternative(Call& call) const {
        if (question_.alternative == Alternative::kTwoSided) return;
        call.Add("alternative", question_.alternative == Alternative::kLess ? "\"less\"" : "\"greater\"");
    }
    void AddMissing(Call& call) const {
        if (!IsR() && question_.hasMissing) call.Add("nan_policy", "\"omit\"");
    }

 private:
    OtherSystem system_;
    const LikeQuestion& question_;
};

LikeSetting NoCall(std::string_view reason) {
    LikeSetting setting;
    setting.reason = reason;
    return setting;
}

LikeSetting WithCall(const Call& call) {
    LikeSetting setting;
    setting.hasCall = true;
    setting.call = call.Text();
    return setting;
}

double SizeAt(const LikeQuestion& question, std::size_t i) {
    return i < question.sizes.size() ? question.sizes[i] : 0;
}

/// Adds the choice of the distribution where the analyst made one.
void AddMethod(const LikeQuestion& question, const Words& words, std::string_view asymptotic, Call& call) {
    if (!question.exact) return;
    if (words.IsR()) {
        call.AddFlag("exact", *question.exact);
    } else {
        call.Add("method", QuotedText(*question.exact ? "exact" : asymptotic));
    }
}

/// The level that both systems take of their own accord.
constexpr double kUsualLevel = 0.95;

// ---- Rank sums and signed ranks ----

constexpr double kExactBelowInR = 50;

bool IsRankSumExact(const LikeQuestion& question, bool isR) {
    constexpr double kExactUpToInSciPy = 8;
    const double smaller = std::min(SizeAt(question, 0), SizeAt(question, 1));
    const double larger = std::max(SizeAt(question, 0), SizeAt(question, 1));
    if (isR) return question.exact.value_or(larger < kExactBelowInR) && !question.hasTies;
    return question.exact.value_or(smaller <= kExactUpToInSciPy && !question.hasTies);
}

LikeSetting LikeMannWhitney(const LikeQuestion& question, const Words& words) {
    Call call = words.Begin("wilcox.test", "mannwhitneyu");
    const double shift = question.testValue.value_or(0);
    const std::string first = words.Sample(0);
    call.Add(words.IsR() || shift == 0 ? first : first + " - " + NumberText(shift)).Add(words.Sample(1));
    words.AddAlternative(call);
    if (words.IsR() && shift != 0) call.Add("mu", NumberText(shift));
    AddMethod(question, words, "asymptotic", call);
    if (!question.continuity.value_or(true)) call.AddFlag(words.IsR() ? "correct" : "use_continuity", false);
    words.AddMissing(call);
    LikeSetting setting = WithCall(call);
    setting.isExact = IsRankSumExact(question, words.IsR());
    setting.ignoresTies = setting.isExact && question.hasTies;
    setting.continuity = !setting.isExact && question.continuity.value_or(true);
    return setting;
}

/// SciPy goes through all signs where there are ties or zeros and so few differences.
constexpr double kAllSignsUpTo = 13;

bool IsSignedRankExact(const LikeQuestion& question, bool isR) {
    constexpr double kExactUpToInSciPy = 50;
    const bool isPlain = !question.hasTies && !question.hasZeros;
    const double size = SizeAt(question, 0);
    if (isR) return question.exact.value_or(size < kExactBelowInR) && isPlain;
    return question.exact.value_or(size <= (isPlain ? kExactUpToInSciPy : kAllSignsUpTo));
}

void AddZeroMethod(ZeroMethod zeros, Call& call) {
    if (zeros != ZeroMethod::kDrop) call.Add("zero_method", zeros == ZeroMethod::kPratt ? "\"pratt\"" : "\"zsplit\"");
}

/// The differences of a signed rank test: a field less the value, or the second field less the first.
void AddDifferences(const LikeQuestion& question, const Words& words, bool isPaired, Call& call) {
    const double value = question.testValue.value_or(0);
    if (words.IsR()) {
        call.Add(words.Field(isPaired ? 1 : 0));
        if (isPaired) call.Add(words.Field(0)).AddFlag("paired", true);
        words.AddAlternative(call);
        if (value != 0) call.Add("mu", NumberText(value));
        return;
    }
    if (isPaired && value == 0) {
        call.Add(words.Field(1)).Add(words.Field(0));
    } else {
        const std::string start = isPaired ? words.Field(1) + " - " + words.Field(0) : words.Field(0);
        call.Add(value == 0 ? start : start + " - " + NumberText(value));
    }
    words.AddAlternative(call);
}

LikeSetting LikeSignedRank(const LikeQuestion& question, const Words& words, bool isPaired) {
    const ZeroMethod zeros = question.zeros.value_or(ZeroMethod::kDrop);
    if (words.IsR() && zeros != ZeroMethod::kDrop) return NoCall("likeNoZeroMethod");
    const bool continuity = question.continuity.value_or(words.IsR());
    Call call = words.Begin("wilcox.test", "wilcoxon");
    AddDifferences(question, words, isPaired, call);
    AddZeroMethod(zeros, call);
    AddMethod(question, words, "asymptotic", call);
    if (continuity != words.IsR()) call.AddFlag(words.IsR() ? "correct" : "correction", continuity);
    words.AddMissing(call);
    LikeSetting setting = WithCall(call);
    setting.isExact = IsSignedRankExact(question, words.IsR());
    setting.ignoresTies = question.exact.value_or(false) && setting.isExact && (question.hasTies || question.hasZeros);
    setting.continuity = !setting.isExact && continuity;
    setting.zeros = zeros;
    return setting;
}

void AddInterval(const LikeQuestion& question, Call& call) {
    call.AddFlag("conf.int", true);
    if (question.confidenceLevel != kUsualLevel) call.Add("conf.level", NumberText(question.confidenceLevel));
}

LikeSetting LikeHodgesLehmann(const LikeQuestion& question, const Words& words, bool isPaired) {
    if (!words.IsR()) return NoCall("likeNoCall");
    Call call = words.Begin("wilcox.test", "");
    if (isPaired) {
        call.Add(words.Field(1)).Add(words.Field(0)).AddFlag("paired", true);
    } else {
        call.Add(words.Sample(0)).Add(words.Sample(1));
    }
    words.AddAlternative(call);
    AddMethod(question, words, "", call);
    if (!question.continuity.value_or(true)) call.AddFlag("correct", false);
    AddInterval(question, call);
    LikeSetting setting = WithCall(call);
    setting.isExact = isPaired ? IsSignedRankExact(question, true) : IsRankSumExact(question, true);
    setting.continuity = !setting.isExact && question.continuity.value_or(true);
    return setting;
}

// ---- Counts ----

constexpr double kOneHalf = 0.5;

/// The test of a proportion, or the interval that its exact form gives.
LikeSetting LikeBinomial(const LikeQuestion& question, const Words& words, bool isInterval) {
    const bool isExact = question.exact.value_or(true) || isInterval;
    if (!isExact && !words.IsR()) return NoCall("likeNoCall");
    Call call = words.Begin(isExact ? "binom.test" : "prop.test", "binomtest");
    call.Add(words.CountOf(words.IsSuccess(words.Field(0))));
    if (words.IsR()) {
        call.Add(question.hasMissing ? "sum(!is.na(" + words.Field(0) + "))" : "length(" + words.Field(0) + ")");
    } else {
        call.Add(question.hasMissing ? NumberText(SizeAt(question, 0)) : words.Field(0) + ".size");
    }
    const bool isUsual = question.confidenceLevel == kUsualLevel;
    if (!isInterval) {
        const double expected = question.testValue.value_or(kOneHalf);
        if (expected != kOneHalf) call.Add(NumberText(expected));
        words.AddAlternative(call);
    } else if (words.IsR() && !isUsual) {
        call.Add("conf.level", NumberText(question.confidenceLevel));
    }
    const bool continuity = !isExact && question.continuity.value_or(true);
    if (!isExact && !continuity) call.AddFlag("correct", false);
    LikeSetting setting = WithCall(call);
    setting.isExact = isExact;
    setting.continuity = continuity;
    if (isInterval && words.IsR()) setting.call += "$conf.int";
    if (isInterval && !words.IsR()) {
        setting.call += ".proportion_ci(";
        setting.call += isUsual ? ")" : "confidence_level=" + NumberText(question.confidenceLevel) + ")";
    }
    return setting;
}

LikeSetting LikeSign(const LikeQuestion& question, const Words& words) {
    const bool isExact = question.exact.value_or(true);
    if (!isExact && !words.IsR()) return NoCall("likeNoCall");
    const double shift = question.testValue.value_or(0);
    const std::string one = shift == 0 ? words.Field(1) : words.Field(1) + " - " + words.Field(0);
    const std::string other = shift == 0 ? words.Field(0) : NumberText(shift);
    const std::string above = words.CountOf(one + " > " + other);
    const std::string below = words.CountOf(one + " < " + other);
    Call call = words.Begin(isExact ? "binom.test" : "prop.test", "binomtest");
    if (words.IsR() && isExact) {
        call.Add("c(" + above + ", " + below + ")");
    } else {
        call.Add(above).Add(above + " + " + below);
    }
    words.AddAlternative(call);
    const bool continuity = !isExact && question.continuity.value_or(true);
    if (!isExact && !continuity) call.AddFlag("correct", false);
    LikeSetting setting = WithCall(call);
    setting.isExact = isExact;
    setting.continuity = continuity;
    return setting;
}

LikeSetting LikeMcNemar(const LikeQuestion& question, const Words& words) {
    if (!words.IsR() || question.exact.value_or(false)) return NoCall("likeNoCall");
    Call call = words.Begin("mcnemar.test", "");
    // Of other categories R makes a test of symmetry, or none.
    const auto classes = [&](std::size_t i) {
        const std::string field = words.Field(i);
        return question.areSameTwoClasses ? field : "factor(" + words.IsSuccess(field) + ", c(FALSE, TRUE))";
    };
    call.Add(classes(0)).Add(classes(1));
    const bool continuity = question.continuity.value_or(true);
    if (!continuity) call.AddFlag("correct", false);
    LikeSetting setting = WithCall(call);
    setting.continuity = continuity;
    return setting;
}

LikeSetting LikeChiSquare(const LikeQuestion& question, const Words& words) {
    Call call = words.Begin("chisq.test", "chisquare");
    if (words.IsR()) {
        call.Add("table(" + words.Field(0) + ")");
        if (!question.expected.empty()) {
            call.Add("p", "c(" + Joined(NumberTexts(question.expected)) + ")").AddFlag("rescale.p", true);
        }
        return WithCall(call);
    }
    if (question.hasMissing) return NoCall("likeMissing");
    call.Add("np.unique(" + words.Field(0) + ", return_counts=True)[1]");
    if (!question.expected.empty()) {
        std::vector<double> counts = question.expected;
        const double sum = std::accumulate(counts.begin(), counts.end(), 0.0);
        for (double& count : counts) count *= SizeAt(question, 0) / sum;
        call.Add("[" + Joined(NumberTexts(counts)) + "]");
    }
    return WithCall(call);
}

LikeSetting LikeMedianInR(const LikeQuestion& question, const Words& words, bool continuity) {
    const std::string field = words.Field(0);
    const std::string group = words.Group();
    const bool isPart = question.hasMissing || !question.groupsAreAll;
    const std::string shown = isPart ? field + "[is]" : field;
    const std::string median = question.testValue ? NumberText(*question.testValue)
                                                  : "median(" + shown + (question.hasMissing ? ", na.rm = TRUE)" : ")");
    Call call = words.Begin("chisq.test", "");
    call.Add("table(" + shown + " > " + median + ", " + (isPart ? "factor(" + group + "[is])" : group) + ")");
    if (question.groups.size() == 2 && !continuity) call.AddFlag("correct", false);
    LikeSetting setting = WithCall(call);
    if (isPart) setting.call = "with(list(is = " + group + " %in% " + words.GroupValues() + "), " + setting.call + ")";
    return setting;
}

LikeSetting LikeMedian(const LikeQuestion& question, const Words& words) {
    const bool isPair = question.groups.size() == 2;
    const bool continuity = isPair && question.continuity.value_or(true);
    LikeSetting setting;
    if (words.IsR()) {
        setting = LikeMedianInR(question, words, continuity);
    } else {
        Call call = words.Begin("", question.testValue ? "chi2_contingency" : "median_test");
        if (question.testValue) {
            std::vector<std::string> above;
            std::vector<std::string> rest;
            for (const std::string& sample : words.Samples()) {
                above.push_back("np.sum(" + sample + " > " + NumberText(*question.testValue) + ")");
                rest.push_back("np.sum(" + sample + " <= " + NumberText(*question.testValue) + ")");
            }
            call.Add("[[" + Joined(above) + "], [" + Joined(rest) + "]]");
        } else {
            call.Add(Joined(words.Samples()));
        }
        if (isPair && !continuity) call.AddFlag("correction", false);
        if (!question.testValue) words.AddMissing(call);
        setting = WithCall(call);
    }
    setting.continuity = continuity;
    return setting;
}

// ---- Several samples ----

LikeSetting LikeFriedman(const LikeQuestion& question, const Words& words, bool isOfSuccesses) {
    constexpr std::size_t kFewestInSciPy = 3;
    if (!words.IsR() && question.fields.size() < kFewestInSciPy) return NoCall("likeTooFewFields");
    if (!words.IsR() && question.hasMissing && isOfSuccesses) return NoCall("likeMissing");
    std::vector<std::string> columns;
    for (const std::string& field : words.Fields()) {
        columns.push_back(isOfSuccesses ? "1 * (" + words.IsSuccess(field) + ")" : field);
    }
    Call call = words.Begin("friedman.test", "friedmanchisquare");
    if (words.IsR()) {
        const std::string table = "cbind(" + Joined(columns) + ")";
        call.Add(question.hasMissing ? "na.omit(" + table + ")" : table);
    } else {
        call.Add(Joined(columns));
        words.AddMissing(call);
    }
    return WithCall(call);
}

LikeSetting LikeKruskalWallis(const LikeQuestion& question, const Words& words) {
    Call call = words.Begin("kruskal.test", "kruskal");
    if (!words.IsR()) {
        call.Add(Joined(words.Samples()));
        words.AddMissing(call);
    } else if (question.groupsAreAll) {
        call.Add(words.Field(0) + " ~ " + words.Group());
    } else {
        call.Add("list(" + Joined(words.Samples()) + ")");
    }
    return WithCall(call);
}

/// Kendall's tau between the groups as numbers and the values has the significance of Jonckheere's test.
LikeSetting LikeJonckheere(const LikeQuestion& question, const Words& words) {
    if (question.exact.value_or(false)) return NoCall("likeNoCall");
    Call call = words.Begin("cor.test", "kendalltau");
    if (words.IsR()) {
        call.Add("as.integer(factor(" + words.Group() + ", " + words.GroupValues() + "))").Add(words.Field(0));
        words.AddAlternative(call);
        call.Add("method", "\"kendall\"").AddFlag("exact", false);
        return WithCall(call);
    }
    if (question.hasMissing) return NoCall("likeMissing");
    std::vector<double> positions(question.groups.size());
    std::iota(positions.begin(), positions.end(), 1.0);
    call.Add("np.repeat([" + Joined(NumberTexts(positions)) + "], [" + Joined(NumberTexts(question.sizes)) + "])");
    call.Add("np.concatenate([" + Joined(words.Samples()) + "])");
    call.Add("method", "\"asymptotic\"");
    words.AddAlternative(call);
    return WithCall(call);
}

// ---- Kolmogorov and Smirnov ----

LikeSetting LikeKolmogorovTwoSample(const LikeQuestion& question, const Words& words) {
    constexpr double kExactProductBelowInR = 10000;
    constexpr double kExactUpToInSciPy = 10000;
    const double first = SizeAt(question, 0);
    const double second = SizeAt(question, 1);
    Call call = words.Begin("ks.test", "ks_2samp");
    call.Add(words.Sample(0)).Add(words.Sample(1));
    words.AddAlternative(call);
    AddMethod(question, words, "asymp", call);
    words.AddMissing(call);
    LikeSetting setting = WithCall(call);
    setting.isExact = question.exact.value_or(words.IsR() ? first * second < kExactProductBelowInR
                                                          : std::max(first, second) <= kExactUpToInSciPy);
    setting.ignoresTies = setting.isExact && question.hasTies && !words.IsR();
    setting.takesOtherTail =
        words.IsR() && setting.isExact && question.hasTies && question.alternative == Alternative::kLess;
    setting.kolmogorov = words.IsR() ? KolmogorovForm::kLimit : KolmogorovForm::kCorrected;
    return setting;
}

/// The parameters of the theoretical distribution as arguments, as given or of the sample.
std::vector<std::string> DistributionArguments(const LikeQuestion& question, const Words& words) {
    const std::string field = words.Field(0);
    const bool isNormal = question.test == KolmogorovSmirnovSetting::kNormal;
    const bool isUniform = question.test == KolmogorovSmirnovSetting::kUniform;
    const std::vector<std::string> given = NumberTexts(question.parameters);
    const bool hasTwo = given.size() >= 2;
    const std::string nan = question.hasMissing ? "np.nan" : "np.";
    const std::string rest = question.hasMissing ? ", na.rm = TRUE)" : ")";
    const auto ofSample = [&](const std::string& inR, const std::string& inPython) {
        return words.IsR() ? inR + "(" + field + rest : nan + inPython + "(" + field + ")";
    };
    if (isNormal) {
        if (hasTwo) return {given[0], given[1]};
        const std::string deviation = words.IsR() ? ofSample("sd", "") : nan + "std(" + field + ", ddof=1)";
        return {ofSample("mean", "mean"), deviation};
    }
    if (isUniform) {
        const std::string least = hasTwo ? given[0] : ofSample("min", "min");
        const std::string most = hasTwo ? given[1] : ofSample("max", "max");
        return {least, words.IsR() ? most : most + " - " + least};
    }
    const std::string mean = given.empty() ? ofSample("mean", "mean") : given[0];
    if (words.IsR()) return {"1 / " + mean};
    return {"0", mean};
}

LikeSetting LikeKolmogorovOneSample(const LikeQuestion& question, const Words& words) {
    constexpr double kOneSampleExactBelowInR = 100;
    const bool isNormal = question.test == KolmogorovSmirnovSetting::kNormal;
    const bool isUniform = question.test == KolmogorovSmirnovSetting::kUniform;
    if (question.test == KolmogorovSmirnovSetting::kPoisson) return NoCall("likeNoCall");
    Call call = words.Begin("ks.test", "kstest");
    call.Add(words.Field(0));
    const std::string arguments = Joined(DistributionArguments(question, words));
    if (words.IsR()) {
        call.Add(isNormal ? "\"pnorm\"" : isUniform ? "\"punif\"" : "\"pexp\"").Add(arguments);
    } else {
        call.Add(isNormal ? "\"norm\"" : isUniform ? "\"uniform\"" : "\"expon\"").Add("args", "(" + arguments + ")");
    }
    words.AddAlternative(call);
    AddMethod(question, words, "asymp", call);
    words.AddMissing(call);
    LikeSetting setting = WithCall(call);
    const bool isExactByDefault = !words.IsR() || (SizeAt(question, 0) < kOneSampleExactBelowInR && !question.hasTies);
    setting.isExact = question.exact.value_or(isExactByDefault);
    return setting;
}

// ---- All of them ----

using Answer = std::function<LikeSetting(const LikeQuestion&, const Words&)>;

struct LikeTest {
    const TestFacts* facts;
    bool hasAlternative;  ///< the other system's call
    Answer answer;
};

Answer With(LikeSetting (*answer)(const LikeQuestion&, const Words&, bool), bool choice) {
    return
        [answer, choice](const LikeQuestion& question, const Words& words) { return answer(question, words, choice); };
}

/// The tests that R or SciPy have; all others have no call in either.
const std::vector<LikeTest>& LikeTests() {
    static const std::vector<LikeTest> tests{
        {&Tests::kKolmogorovSmirnov, true, LikeKolmogorovOneSample},
        {&Tests::kBinomial, true, With(LikeBinomial, false)},
        {&Tests::kProportionIntervals, false, With(LikeBinomial, true)},
        {&Tests::kChiSquare, false, LikeChiSquare},
        {&Tests::kWilcoxonOneSample, true, With(LikeSignedRank, false)},
        {&Tests::kSign, true, LikeSign},
        {&Tests::kWilcoxonPairs, true, With(LikeSignedRank, true)},
        {&Tests::kHodgesLehmannPairs, true, With(LikeHodgesLehmann, true)},
        {&Tests::kFriedman, false, With(LikeFriedman, false)},
        {&Tests::kKendall, false, With(LikeFriedman, false)},
        {&Tests::kMcNemar, false, LikeMcNemar},
        {&Tests::kCochran, false, With(LikeFriedman, true)},
        {&Tests::kMannWhitney, true, LikeMannWhitney},
        {&Tests::kKolmogorovSmirnovTwoSample, true, LikeKolmogorovTwoSample},
        {&Tests::kHodgesLehmannGroups, true, With(LikeHodgesLehmann, false)},
        {&Tests::kKruskalWallis, false, LikeKruskalWallis},
        {&Tests::kJonckheereTerpstra, true, LikeJonckheere},
        {&Tests::kMedian, false, LikeMedian},
    };
    return tests;
}

}  // namespace

std::optional<OtherSystem> OtherSystemOf(std::string_view name) {
    if (name == "r") return OtherSystem::kR;
    if (name == "scipy") return OtherSystem::kSciPy;
    return std::nullopt;
}

LikeSetting SettingLike(OtherSystem system, const LikeQuestion& question) {
    const TestFacts* const facts = Tests::OfSetting(question.test);
    const auto found = std::ranges::find(LikeTests(), facts, &LikeTest::facts);
    if (facts == nullptr || found == LikeTests().end()) return NoCall("likeNoCall");
    if (question.hasWeights) return NoCall("likeWeights");
    if (question.alternative != Alternative::kTwoSided && !found->hasAlternative) return NoCall("likeNoAlternative");
    return found->answer(question, Words(system, question));
}

std::string NameInR(std::string_view name) {
    const auto isInner = [](char c) { return IsLetter(c) || IsDigit(c) || c == '.' || c == '_'; };
    const bool startsWell =
        !name.empty() && (IsLetter(name[0]) || (name[0] == '.' && !(name.size() > 1 && IsDigit(name[1]))));
    if (startsWell && std::ranges::all_of(name, isInner) && !Contains(kReservedInR, name)) return std::string(name);
    std::string quoted = "`";
    for (const char c : name) {
        if (c == '`' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + '`';
}

std::string NameInPython(std::string_view name) {
    const auto isInner = [](char c) { return IsLetter(c) || IsDigit(c) || c == '_'; };
    const bool isVariable = !name.empty() && !IsDigit(name[0]) && std::ranges::all_of(name, isInner) &&
                            !Contains(kReservedInPython, name) && !Contains(kTakenInPython, name);
    return isVariable ? std::string(name) : "df[" + QuotedText(name) + "]";
}

std::string QuotedText(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        if (c == '\n') {
            quoted += "\\n";
        } else if (c == '\t') {
            quoted += "\\t";
        } else if (c == '\r') {
            quoted += "\\r";
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

}  // namespace tarn
