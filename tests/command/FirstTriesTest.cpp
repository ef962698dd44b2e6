// What somebody types first who comes from R, SciPy, csvkit or another command line: it works as it is meant, or the
// answer says what to type. Each answer was written for its try and is checked to the word; none of them works by
// taking a name for something that it does not mean.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/harness/Command.h"

namespace {

struct Try {
    std::vector<std::string> typed;
    std::string said;  ///< the first line of the results, or the answer behind "tarn: "
};

/// Where the tries find d.csv, with groups and a pair, and l.csv, with repeated measures in long form.
class FirstTries : public testing::TestWithParam<Try> {
 protected:
    void SetUp() override {
        folder_.Write("d.csv", Wide());
        folder_.Write("l.csv", Long());
        std::filesystem::current_path(std::filesystem::path(folder_.Path("d.csv")).parent_path());
    }
    void TearDown() override { std::filesystem::current_path(harness::SourcePath(".")); }

 private:
    static std::string Wide() {
        std::string csv = "id,arm,sex,site,before,after,score,answer\n";
        const auto letter = [](const char* letters, int i) { return std::string(1, letters[i]); };
        for (int i = 0; i < 24; ++i) {
            csv += std::to_string(i + 1) + "," + letter("abc", i % 3) + "," + letter("fm", i % 2) + "," +
                   letter("xy", i / 3 % 2) + "," + std::to_string(i * 7 % 11 + 1) + "," +
                   std::to_string(i * 5 % 13 + 2) + "," + std::to_string(i * 3 % 17 + 1) + "," +
                   (i % 5 < 2 ? "yes" : "no") + "\n";
        }
        return csv;
    }
    static std::string Long() {
        std::string csv = "who,cond,score\n";
        for (int who = 1; who <= 6; ++who) {
            for (int i = 0; i < 3; ++i) {
                csv += std::to_string(who) + "," + std::string(1, "pqr"[i]) + "," +
                       std::to_string((who * 5 + i * 3) % 14) + "\n";
            }
        }
        return csv;
    }

    harness::ScratchFolder folder_;
};

using WorkingTries = FirstTries;
using AnsweredTries = FirstTries;

TEST_P(WorkingTries, Work) {
    const harness::CommandResult result = harness::RunTarn(GetParam().typed);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_TRUE(result.out.starts_with(GetParam().said)) << result.out;
}

TEST_P(AnsweredTries, SayWhatToType) {
    const harness::CommandResult result = harness::RunTarn(GetParam().typed);
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "tarn: " + GetParam().said + "\n");
}

// The tests are those that the words mean: of two groups, of several, of a pair, of one field.
const Try kWorking[] = {
    Try{{"d.csv"}, "d.csv: 24 rows, 8 fields"},
    Try{{"analyze", "d.csv", "score ~ arm"}, "Kruskal-Wallis test: score by arm"},
    Try{{"analyze", "d.csv", "score ~ sex", "--tests", "mann-whitney"}, "Mann-Whitney U test: score by sex"},
    Try{{"analyze", "d.csv", "--related", "before,after", "--tests", "wilcoxon"},
        "Wilcoxon signed rank test of matched pairs: before, after"},
    Try{{"analyze", "d.csv", "--independent", "score", "--by", "sex"}, "Mann-Whitney U test: score by sex"},
    Try{{"analyze", "l.csv", "score ~ cond | who"},
        "Friedman's two-way analysis of variance by ranks: cond=p, cond=q, cond=r"},
    Try{{"analyze", "d.csv", "score ~ arm", "--against", "a"}, "Kruskal-Wallis test: score by arm"},
    Try{{"analyze", "d.csv", "--one-sample", "arm", "--tests", "chi-square", "--expected", "a=.2,b=.3,c=.5"},
        "Chi-square test: arm"},
    Try{{"analyze", "d.csv", "score ~ 1", "--tests", "kolmogorov-smirnov", "--mean", "5", "--sd", "2"},
        "Kolmogorov-Smirnov test of one sample: score"},
    Try{{"analyze", "d.csv", "score ~ 1", "--tests", "wilcoxon", "--test-value", "8"},
        "Wilcoxon signed rank test: score"},
    Try{{"analyze", "d.csv", "--related", "be*,after"}, "Wilcoxon signed rank test of matched pairs: before, after"},
    Try{{"analyze", "d.csv", "Score ~ Sex"}, "Mann-Whitney U test: score by sex"},
    Try{{"analyze", "d.csv", "score ~ sex", "--where", "score > 3 and arm in ('a', 'b')"},
        "Mann-Whitney U test: score by sex"},
    Try{{"analyze", "d.csv", "score ~ sex", "--where", "score > 3", "--split", "site"},
        "2 outcomes by sex, Mann-Whitney U test, by parts of site\n"},
    Try{{"analyze", "d.csv", "before + after ~ sex"}, "Mann-Whitney U test: before by sex"},
    Try{{"analyze", "d.csv", "score ~ arm", "--compare", "pairwise"}, "Kruskal-Wallis test: score by arm"},
    Try{{"analyze", "d.csv", "score ~ sex", "--alternative", "greater", "--exact"},
        "Mann-Whitney U test: score by sex"},
    Try{{"analyze", "d.csv", "score ~ sex", "--like", "r", "--tests", "mann-whitney"},
        "Mann-Whitney U test: score by sex"},
    Try{{"analyze", "d.csv", "--related", "before,after", "--tests", "sign", "--alternative", "less"},
        "Sign test: before, after"},
    Try{{"analyze", "d.csv", "score ~ sex", "--where", "arm != \"a\" & score is not missing"},
        "Mann-Whitney U test: score by sex"},
    Try{{"analyze", "d.csv", "--one-sample", "answer", "--tests", "binomial", "--success", "yes", "--probability",
         ".4"},
        "Binomial test: answer"},
};

const Try kAnswered[] = {
    Try{{"analyze", "d.csv", "score", "arm"}, "unknown argument \"arm\"; fields stand in one formula, 'score ~ arm'"},
    Try{{"analyze", "d.csv", "score"},
        "formula \"score\": at column 6: no ~ behind the fields; for one sample type 'score ~ 1', for groups 'score ~ "
        "FIELD'"},
    Try{{"analyze", "d.csv", "score ~ arm", "--tests", "kruskal.test"},
        "--tests: there is no test \"kruskal.test\"; did you mean kruskal-wallis?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--tests", "wilcox.test"},
        "--tests: there is no test \"wilcox.test\"; did you mean mann-whitney?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--tests", "wilcox"},
        "--tests: there is no test \"wilcox\"; did you mean mann-whitney?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--tests", "mannwhitneyu"},
        "--tests: there is no test \"mannwhitneyu\"; did you mean mann-whitney?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--tests", "ranksums"},
        "--tests: there is no test \"ranksums\"; did you mean mann-whitney?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--tests", "ttest_ind"},
        "--tests: there is no test \"ttest_ind\"; did you mean mann-whitney?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--tests", "t.test"},
        "--tests: there is no test \"t.test\"; did you mean mann-whitney?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--tests", "ks_2samp"},
        "--tests: there is no test \"ks_2samp\"; did you mean kolmogorov-smirnov?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--tests", "ks.test"},
        "--tests: there is no test \"ks.test\"; did you mean kolmogorov-smirnov?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--tests", "kruskal"},
        "--tests: there is no test \"kruskal\"; did you mean kruskal-wallis?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--tests", "anova"},
        "--tests: there is no test \"anova\"; did you mean kruskal-wallis?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--tests", "f_oneway"},
        "--tests: there is no test \"f_oneway\"; did you mean kruskal-wallis?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--tests", "median_test"},
        "--tests: there is no test \"median_test\"; did you mean median?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--tests", "mood.test"},
        "--tests: there is no test \"mood.test\"; did you mean median?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--tests", "jonckheere.test"},
        "--tests: there is no test \"jonckheere.test\"; did you mean jonckheere?"},
    Try{{"analyze", "d.csv", "--related", "before,after", "--tests", "ttest_rel"},
        "--tests: there is no test \"ttest_rel\"; did you mean wilcoxon, sign?"},
    Try{{"analyze", "d.csv", "--related", "before,after", "--tests", "sign.test"},
        "--tests: there is no test \"sign.test\"; did you mean sign?"},
    Try{{"analyze", "d.csv", "--related", "before,after", "--tests", "friedmanchisquare"},
        "--tests: there is no test \"friedmanchisquare\"; did you mean friedman?"},
    Try{{"analyze", "d.csv", "--one-sample", "answer", "--tests", "binom.test"},
        "--tests: there is no test \"binom.test\"; did you mean binomial?"},
    Try{{"analyze", "d.csv", "--one-sample", "answer", "--tests", "binomtest"},
        "--tests: there is no test \"binomtest\"; did you mean binomial?"},
    Try{{"analyze", "d.csv", "--one-sample", "answer", "--tests", "prop.test"},
        "--tests: there is no test \"prop.test\"; did you mean binomial?"},
    Try{{"analyze", "d.csv", "--one-sample", "arm", "--tests", "chisq.test"},
        "--tests: there is no test \"chisq.test\"; did you mean chi-square?"},
    Try{{"analyze", "d.csv", "--one-sample", "arm", "--tests", "chisquare"},
        "--tests: there is no test \"chisquare\"; did you mean chi-square?"},
    Try{{"analyze", "d.csv", "--one-sample", "arm", "--tests", "chi2"},
        "--tests: there is no test \"chi2\"; did you mean chi-square?"},
    Try{{"analyze", "d.csv", "--one-sample", "score", "--tests", "kstest"},
        "--tests: there is no test \"kstest\"; did you mean kolmogorov-smirnov?"},
    Try{{"analyze", "d.csv", "--one-sample", "score", "--tests", "shapiro"},
        "--tests: there is no test \"shapiro\"; did you mean kolmogorov-smirnov?"},
    Try{{"analyze", "d.csv", "--related", "before,after", "--tests", "mcnemar.test"},
        "--tests: there is no test \"mcnemar.test\"; did you mean mcnemar?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--mu", "1"}, "unknown argument \"--mu\"; did you mean --test-value?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--paired"}, "unknown argument \"--paired\"; did you mean --related?"},
    Try{{"analyze", "d.csv", "--paired", "before,after"}, "unknown argument \"--paired\"; did you mean --related?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--alternative", "two.sided"},
        "--alternative: \"two.sided\"; did you mean two-sided?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--alternative", "larger"},
        "--alternative: \"larger\"; did you mean greater?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--conf.level", "0.9"},
        "unknown argument \"--conf.level\"; did you mean --confidence?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--conf-level", "0.9"},
        "unknown argument \"--conf-level\"; did you mean --confidence?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--correct"}, "unknown argument \"--correct\"; did you mean --continuity?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--exact", "true"},
        "unknown argument \"true\"; what follows the formula are options"},
    Try{{"analyze", "d.csv", "score ~ sex", "--method", "exact"},
        "unknown argument \"--method\"; did you mean --tests, --exact, --monte-carlo?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--nan_policy", "omit"},
        "unknown argument \"--nan_policy\"; did you mean --missing?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--na.action", "na.omit"},
        "unknown argument \"--na.action\"; did you mean --missing?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--zero_method", "pratt"},
        "unknown argument \"--zero_method\"; did you mean --zeros?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--use_continuity"},
        "unknown argument \"--use_continuity\"; did you mean --continuity?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--subset", "arm == 'a'"},
        "unknown argument \"--subset\"; did you mean --where?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--filter", "arm == 'a'"},
        "unknown argument \"--filter\"; did you mean --where?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--query", "arm == 'a'"},
        "unknown argument \"--query\"; did you mean --where?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--where", "arm == a"},
        "--where \"arm == a\": at column 8: the table has no field \"a\"; a category stands in quotes: arm == \"a\""},
    Try{{"analyze", "d.csv", "score ~ sex", "--where", "is.na(score)"},
        "--where \"is.na(score)\": at column 1: there are no functions; type score is missing"},
    Try{{"analyze", "d.csv", "score ~ sex", "--where", "arm %in% c('a','b')"},
        "--where \"arm %in% c('a','b')\": at column 5: expected in: arm in (\"a\", \"b\")"},
    Try{{"analyze", "d.csv", "score ~ sex", "--where", "arm=a"},
        "--where \"arm=a\": at column 5: the table has no field \"a\"; a category stands in quotes: arm = \"a\""},
    Try{{"analyze", "d.csv", "score ~ sex", "--groupby", "site"},
        "unknown argument \"--groupby\"; did you mean --group?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--strata", "site"},
        "unknown argument \"--strata\"; did you mean --split?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--stratify", "site"},
        "unknown argument \"--stratify\"; did you mean --split?"},
    Try{{"analyze", "d.csv", "--columns", "score", "--group", "sex"},
        "unknown argument \"--columns\"; did you mean --one-sample, --related, --independent?"},
    Try{{"analyze", "d.csv", "-c", "score"},
        "unknown argument \"-c\"; did you mean --one-sample, --related, --independent?"},
    Try{{"analyze", "d.csv", "--by", "sex"},
        "no field to analyse; expected a formula like 'score ~ arm', or --one-sample, --related, or --independent with "
        "--group"},
    Try{{"analyze", "d.csv", "--independent", "score"},
        "--independent: no groups; expected --group with the field whose categories are the groups"},
    Try{{"analyze", "d.csv", "--dv", "score", "--between", "sex"},
        "unknown argument \"--dv\"; did you mean --one-sample, --related, --independent?"},
    Try{{"analyze", "d.csv", "--data", "d.csv"},
        "unknown argument \"--data\"; the table stands by itself: tarn analyze DATA.csv"},
    Try{{"analyze", "--data", "d.csv", "score ~ sex"},
        "unknown argument \"--data\"; the table stands by itself: tarn analyze DATA.csv"},
    Try{{"analyze", "d.csv", "--x", "before", "--y", "after"},
        "unknown argument \"--x\"; did you mean --one-sample, --related, --independent?"},
    Try{{"analyze", "d.csv", "cbind(before, after) ~ arm"},
        "formula \"cbind(before, after) ~ arm\": at column 1: several fields stand with + between them: type 'before + "
        "after ~ arm'"},
    Try{{"analyze", "d.csv", "Pair(before, after) ~ 1"},
        "formula \"Pair(before, after) ~ 1\": at column 1: a pair of fields has no formula: type --related "
        "before,after"},
    Try{{"analyze", "d.csv", "after - before ~ 1"},
        "formula \"after - before ~ 1\": at column 7: a difference of two fields is tested by --related before,after; "
        "a name with signs stands in backticks: `after-before`"},
    Try{{"analyze", "d.csv", "after ~ before"},
        "formula \"after ~ before\": at column 9: before has 11 different numbers, which look like a measurement and "
        "not like groups; for a pair of fields type --related before,after, for groups --nominal before beside the "
        "formula"},
    Try{{"analyze", "d.csv", "score ~ factor(arm)"},
        "formula \"score ~ factor(arm)\": at column 9: there are no functions, and the field on the right is taken for "
        "categories by itself: type 'score ~ arm'"},
    Try{{"analyze", "d.csv", "score ~ C(arm)"},
        "formula \"score ~ C(arm)\": at column 9: there are no functions, and the field on the right is taken for "
        "categories by itself: type 'score ~ arm'"},
    Try{{"analyze", "d.csv", "score ~ arm + sex"},
        "formula \"score ~ arm + sex\": at column 13: one field has the groups; for each sex by itself type 'score ~ "
        "arm' --split sex"},
    Try{{"analyze", "d.csv", "score ~ arm * sex"},
        "formula \"score ~ arm * sex\": at column 13: one field has the groups; for each sex by itself type 'score ~ "
        "arm' --split sex"},
    Try{{"analyze", "d.csv", "score ~ arm | id"},
        "repeated measures: no subject of id has records for two conditions of arm; for groups of different subjects "
        "type 'score ~ arm'"},
    Try{{"analyze", "d.csv", "score ~ arm | site"},
        "repeated measures: the subject \"x\" of site has two records for arm=a; expected one, or --split site to test "
        "each by itself"},
    Try{{"analyze", "l.csv", "score ~ cond + (1|who)"},
        "formula \"score ~ cond + (1|who)\": at column 14: the field of the subjects stands behind |: type 'score ~ "
        "cond | who'"},
    Try{{"analyze", "l.csv", "score ~ cond + Error(who)"},
        "formula \"score ~ cond + Error(who)\": at column 14: the field of the subjects stands behind |: type 'score ~ "
        "cond | who'"},
    Try{{"analyze", "l.csv", "--related", "score", "--within", "cond", "--subject", "who"},
        "unknown argument \"--subject\"; did you mean --id, --case-id?"},
    Try{{"analyze", "l.csv", "--dv", "score", "--within", "cond", "--subject", "who"},
        "unknown argument \"--dv\"; did you mean --one-sample, --related, --independent?"},
    Try{{"analyze", "l.csv", "--values", "score", "--groups", "cond", "--blocks", "who"},
        "unknown argument \"--values\"; did you mean --one-sample, --related, --independent?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--output", "out.xml"},
        "unknown argument \"--output\"; did you mean --out?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--json"}, "unknown argument \"--json\"; did you mean --format json?"},
    Try{{"analyze", "d.csv", "score ~ sex", "--csv"}, "unknown argument \"--csv\"; did you mean --format csv?"},
    Try{{"analyze", "d.csv", "score ~ sex", "-o", "json"}, "unknown argument \"-o\"; did you mean --out?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--posthoc", "dunn"},
        "unknown argument \"--posthoc\"; did you mean --compare?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--p.adjust.method", "holm"},
        "unknown argument \"--p.adjust.method\"; did you mean --adjust?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--p-adjust", "bonferroni"},
        "unknown argument \"--p-adjust\"; did you mean --adjust?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--adjust", "fdr"}, "--adjust: \"fdr\"; did you mean bh?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--adjust", "BH"}, "--adjust: \"BH\"; did you mean bh?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--ref", "a"},
        "unknown argument \"--ref\"; did you mean --reference, --against?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--permutations", "1000"},
        "unknown argument \"--permutations\"; did you mean --monte-carlo?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--n_resamples", "1000"},
        "unknown argument \"--n_resamples\"; did you mean --monte-carlo?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--random_state", "1"},
        "unknown argument \"--random_state\"; did you mean --seed?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--alpha", "5%"},
        "--alpha: \"5%\"; expected a number, percent without a sign: 5"},
    Try{{"analyze", "d.csv", "score ~ arm", "--tests", "all"},
        "--tests: there is no test \"all\"; expected one of mann-whitney, kolmogorov-smirnov, wald-wolfowitz, moses, "
        "hodges-lehmann, kruskal-wallis, jonckheere, median"},
    Try{{"analyze", "d.csv", "score ~ arm", "--baseline", "arm=a"},
        "unknown argument \"--baseline\"; did you mean --reference, --against?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--reference", "a"},
        "--reference: \"a\"; expected a field and its category, like arm=placebo"},
    Try{{"analyze", "d.csv", "score ~ arm", "--control", "a"},
        "unknown argument \"--control\"; did you mean --reference, --against?"},
    Try{{"analyze", "d.csv", "score ~ arm", "--against", "d"},
        "--against: no category \"d\" in arm; expected one of a, b, c"},
    Try{{"analyze", "d.csv", "--one-sample", "arm", "--tests", "chi-square", "--expected", ".5,.3,.2"},
        "--expected: \".5\"; expected each category with its share or its count, like a=.2,b=.8"},
    Try{{"analyze", "d.csv", "--one-sample", "arm", "--tests", "chi-square", "--f_exp", "8,8,8"},
        "unknown argument \"--f_exp\"; did you mean --expected?"},
    Try{{"analyze", "d.csv", "--one-sample", "arm", "--tests", "chi-square", "--p", "a=.2,b=.3,c=.5"},
        "unknown argument \"--p\"; did you mean --probability, --expected?"},
    Try{{"analyze", "d.csv", "score ~ 1", "--tests", "wilcoxon", "--mu", "8"},
        "unknown argument \"--mu\"; did you mean --test-value?"},
    Try{{"analyze", "d.csv", "score ~ 1", "--tests", "wilcoxon"},
        "--tests wilcoxon of one sample: no value to test against; expected --test-value"},
    Try{{"analyze", "d.csv", "score ~ sex", "--tests", "wilcoxon"},
        "--tests: \"wilcoxon\" is a test of one sample; did you mean mann-whitney?"},
    Try{{"analyze", "d.csv", "score ~ gender"},
        "formula \"score ~ gender\": at column 9: the table has no field \"gender\"; expected one of id, arm, sex, "
        "site, before, after, score, answer"},
    Try{{"analyze", "d.csv", "score ~ sex", "--where", "arm is missing"},
        "--where \"arm is missing\": is true of none of 24 records"},
    Try{{"test", "d.csv", "score ~ arm"}, "unknown argument \"test\"; did you mean analyze?"},
    Try{{"wilcoxon", "d.csv"},
        "unknown argument \"wilcoxon\"; a test is asked for by tarn analyze DATA.csv FORMULA --tests wilcoxon"},
    Try{{"kruskal-wallis", "d.csv", "score ~ arm"},
        "unknown argument \"kruskal-wallis\"; a test is asked for by tarn analyze DATA.csv FORMULA --tests "
        "kruskal-wallis"},
    Try{{"mannwhitneyu", "d.csv"},
        "unknown argument \"mannwhitneyu\"; a test is asked for by tarn analyze DATA.csv FORMULA --tests mann-whitney"},
    Try{{"wilcox.test", "d.csv"},
        "unknown argument \"wilcox.test\"; a test is asked for by tarn analyze DATA.csv FORMULA --tests mann-whitney "
        "or wilcoxon"},
    Try{{"help"}, "unknown argument \"help\"; did you mean --help?"},
    Try{{"help", "analyze"}, "unknown argument \"help\"; did you mean --help?"},
    Try{{"--list"}, "unknown argument \"--list\"; did you mean tests?"},
    Try{{"list"}, "unknown argument \"list\"; did you mean tests?"},
    Try{{"version"}, "unknown argument \"version\"; did you mean --version?"},
};

INSTANTIATE_TEST_SUITE_P(Typed, WorkingTries, testing::ValuesIn(kWorking));
INSTANTIATE_TEST_SUITE_P(Typed, AnsweredTries, testing::ValuesIn(kAnswered));

}  // namespace
