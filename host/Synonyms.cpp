#include "host/Synonyms.h"

#include <algorithm>
#include <span>
#include <string>

namespace tarn {

namespace {

/// Words, separated by blanks, as small letters and digits; and the names for them.
struct Synonyms {
    std::string_view words;
    std::vector<std::string_view> names;
};

std::span<const Synonyms> OfOptions() {
    static const std::vector<Synonyms> kOptions{
        {"by g groups groupby grouping groupvar factor iv", {"--group"}},
        {"mu median popmean testmedian null value", {"--test-value"}},
        {"paired withinsubjects repeated repeatedmeasures matched dependent", {"--related"}},
        {"condition time visit occasion", {"--within"}},
        {"between betweensubjects unpaired twosample ksample", {"--independent"}},
        {"onesamp single", {"--one-sample"}},
        {"c columns cols vars variables values measure measures dv outcome response x y",
         {"--one-sample", "--related", "--independent"}},
        {"level sig siglevel significance significancelevel alphalevel", {"--alpha"}},
        {"ci conf confint conflevel confidencelevel", {"--confidence"}},
        {"subject subjects participant subjectid block blocks", {"--id", "--case-id"}},
        {"id case rowid", {"--case-id"}},
        {"w weights freq freqs frequency", {"--weight"}},
        {"o output outfile save result", {"--out"}},
        {"posthoc pairs pairwise stepwise multiple comparisons dunn", {"--compare"}},
        {"t test method methods statistic", {"--tests"}},
        {"method", {"--exact", "--monte-carlo"}},
        {"permutations permutation resamples nresamples draws montecarlo simulate simulatepvalue", {"--monte-carlo"}},
        {"randomstate rng setseed", {"--seed"}},
        {"correct correction usecontinuity yates", {"--continuity"}},
        {"zeromethod zero", {"--zeros"}},
        {"padjust padj padjustmethod correctionmethod", {"--adjust"}},
        {"side sided tail tails", {"--alternative"}},
        {"subset filter query select if rows", {"--where"}},
        {"strata stratum stratify stratified facet each bygroup", {"--split"}},
        {"ref baseline control", {"--reference", "--against"}},
        {"list listtests", {"tests"}},
        {"levels categories grouporder", {"--order"}},
        {"p prob proportion share", {"--probability"}},
        {"p probs fexp expectedvalues expectedcounts", {"--expected"}},
        {"cut cutoff threshold", {"--cut-point"}},
        {"dist cdf", {"--distribution"}},
        {"desc decreasing reverse", {"--descending"}},
        {"trim outlier", {"--outliers"}},
        {"na nan naaction nanpolicy narm dropna listwise", {"--missing"}},
        {"event target positive", {"--success"}},
        {"categorical category", {"--nominal"}},
        {"ordered", {"--ordinal"}},
        {"numeric numerical scale interval metric", {"--continuous"}},
        {"types schema descriptor meta", {"--fields"}},
        {"f fmt json csv xml", {"--format"}},
        {"q silent noprogress", {"--quiet"}},
        {"d i in input file table", {"--data"}},
        {"request", {"--settings"}},
        {"pedantic werror", {"--strict"}},
        {"v", {"--version"}},
        {"usage", {"--help"}},
    };
    return kOptions;
}

std::span<const Synonyms> OfWords() {
    static const std::vector<Synonyms> kWords{
        // Tests.
        {"anova oneway foneway onewayanova aov kw h kruskal", {"kruskal-wallis"}},
        {"repeatedmeasures rmanova repeatedmeasuresanova friedmanchisquare", {"friedman"}},
        {"t student", {"wilcoxon", "mann-whitney"}},
        {"ttestind tind unpairedt", {"mann-whitney"}},
        {"ttest1samp ttestonesample", {"wilcoxon"}},
        {"paired pairedt ttestrel", {"wilcoxon", "sign"}},
        {"mw mwu u mannwhitneyu wmw ranksum ranksums wilcoxonmannwhitney wilcoxonranksum unpaired "
         "wilcox wilcoxon",
         {"mann-whitney"}},
        {"signedrank signedranks signrank wilcox wsr", {"wilcoxon"}},
        {"ks ks1samp ks2samp kolmogorov lilliefors normality shapiro", {"kolmogorov-smirnov"}},
        {"chi chi2 chisq chisquared chisquare x2 gof goodnessoffit multinomial", {"chi-square"}},
        {"jt jonckheereterpstra terpstra trend", {"jonckheere"}},
        {"hl shift locationshift", {"hodges-lehmann"}},
        {"q cochranq cochransq", {"cochran"}},
        {"w", {"kendall", "wilcoxon"}},
        {"kendallw kendallsw concordance", {"kendall"}},
        {"prop proportion proportions binom", {"binomial"}},
        {"mood moods brownmood medians", {"median"}},
        {"stuartmaxwell stuart maxwell mh bhapkar", {"marginal-homogeneity"}},
        {"ww wald wolfowitz", {"wald-wolfowitz"}},
        {"run randomness bradley", {"runs"}},
        {"extreme extremereactions mosesextreme", {"moses"}},
        {"change changes symmetry", {"mcnemar"}},
        {"clopperpearson jeffreys wilson proportionci", {"confidence-intervals", "OEstimateConfidenceInterval"}},

        // Values of options.
        {"twosided both unequal ne", {"two-sided"}},
        {"larger more upper right g", {"greater"}},
        {"smaller lower left l", {"less"}},
        {"fdr benjaminihochberg", {"bh"}},
        {"benjaminiyekutieli", {"by"}},
        {"pairs posthoc dunn allpairs", {"pairwise"}},
        {"true yes t 1", {"on"}},
        {"false no f 0", {"off"}},
        {"omit pairwise available", {"analysis"}},
        {"complete completecases", {"listwise"}},

        // Commands.
        {"test analysis", {"analyze"}},
        {"list", {"tests"}},
        {"exec execute batch", {"run"}},
        {"view print report display cat", {"show"}},
        {"what define code", {"explain"}},
        {"describe info summary", {"look", "explain", "show"}},
        {"head glimpse str skim peek preview inspect columns names fields stat stats", {"look"}},
        {"manual", {"man"}},
        {"complete completions", {"completion"}},

        // Keys of a plan and of a request.
        {"alpha level sig significance significancelevel", {"sigLevel"}},
        {"ci conf conflevel confidence", {"confidenceLevel"}},
        {"field fields variable variables vars names columns", {"variableName"}},
        {"groups by grouping groupvariable groupfield", {"groupVariableName"}},
        {"groups by grouping groupvariablename groupfield", {"groupVariable"}},
        {"na nan listwise missingvalues", {"missingTreatment"}},
        {"caseid id caseidfield", {"caseIDVariableName"}},
        {"caseid id caseidvariablename", {"caseIDField"}},
        {"compare comparison posthoc pairs pairwise stepwise", {"typeOfMultipleComparison"}},
        {"selected enabled", {"isSelected"}},
        {"order direction alternative descending", {"orderOfHypotheses"}},
        {"probability p prob", {"testProbability"}},
        {"mu value", {"testValue", "median"}},
        {"sd std sigma", {"stdDev"}},
        {"minimum lower", {"min"}},
        {"maximum upper", {"max"}},
        {"cutoff threshold", {"givenCutPoint", "cutPointValue"}},
        {"success successes categories", {"givenCategoryList", "categoriesList", "successCategoryList"}},
        {"expected probabilities", {"custom"}},
        // A request and a plan have names of their own for two tests, and four for one.
        {"imedian", {"IKMedian"}},
        {"ikmedian", {"IMedian"}},
        {"ihodgeslehmannestimategroups", {"IHodgesLehmannEstimateIndependent"}},
        {"ihodgeslehmannestimateindependent", {"IHodgesLehmannEstimateGroups"}},
        {"okolmogorovsmirnov", {"OKolmogorovSmirnovNormal", "OKolmogorovSmirnovUniform", "OKolmogorovSmirnovPoisson"}},
    };
    return kWords;
}

std::string LettersAndDigits(std::string_view word) {
    std::string plain;
    for (const char c : word) {
        if (c >= 'A' && c <= 'Z') plain += static_cast<char>(c - 'A' + 'a');
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) plain += c;
    }
    return plain;
}

bool Contains(std::string_view words, std::string_view word) {
    for (std::size_t start = 0; start < words.size();) {
        const std::size_t end = std::min(words.find(' ', start), words.size());
        if (words.substr(start, end - start) == word) return true;
        start = end + 1;
    }
    return false;
}

}  // namespace

std::vector<std::string_view> NamesMeantBy(std::string_view word) {
    constexpr std::string_view kTest = "test";
    const bool isOption = word.starts_with('-');
    std::string plain = LettersAndDigits(word);
    std::vector<std::string_view> meant;
    const auto collect = [&] {
        for (const Synonyms& row : isOption ? OfOptions() : OfWords()) {
            if (Contains(row.words, plain)) meant.insert(meant.end(), row.names.begin(), row.names.end());
        }
    };
    collect();
    if (meant.empty() && !isOption && plain.size() > kTest.size() && plain.ends_with(kTest)) {
        plain.resize(plain.size() - kTest.size());
        collect();
    }
    return meant;
}

}  // namespace tarn
