#include "host/beyond/LikeOthers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/host/beyond/like/Recorded.h"
#include "vocabulary/TestFacts.h"

namespace tarn {
namespace {

using like_test::OpenBeside;

/// The calls of calls.tsv by system and id.
std::map<std::string, std::string> Calls() {
    std::map<std::string, std::string> calls;
    std::ifstream file = OpenBeside("calls.tsv");
    for (std::string line; std::getline(file, line);) {
        const std::size_t first = line.find('\t');
        const std::size_t second = line.find('\t', first + 1);
        calls[line.substr(0, second)] = line.substr(second + 1);
    }
    return calls;
}

LikeQuestion Question(std::string_view test, std::vector<std::string> fields, std::vector<double> sizes = {16}) {
    LikeQuestion question;
    question.test = test;
    question.fields = std::move(fields);
    question.sizes = std::move(sizes);
    return question;
}

LikeQuestion Groups(std::string_view test) {
    LikeQuestion question = Question(test, {"len"}, {7, 9});
    question.groupField = "supp";
    question.groups = {"OJ", "VC"};
    return question;
}

LikeQuestion Doses(std::string_view test) {
    LikeQuestion question = Question(test, {"len"}, {5, 5, 6});
    question.groupField = "dose";
    question.groups = {"low", "mid", "high"};
    return question;
}

template <typename Change>
LikeQuestion Changed(LikeQuestion question, const Change& change) {
    change(question);
    return question;
}

/// The questions by the ids of calls.tsv, which are those of table.csv.
std::map<std::string, LikeQuestion> Questions() {
    using namespace Tests;
    const auto paired = Question(kWilcoxonPairs.Setting(), {"before", "after"});
    const auto purchases = Question(kCochran.Setting(), {"buys_first", "buys_second", "buys_third"});
    const auto success = [](LikeQuestion& q) { q.successes = {"yes"}; };
    std::map<std::string, LikeQuestion> all;
    all["ranksum"] = Groups(kMannWhitney.Setting());
    all["ranksum choices"] = Changed(Groups(kMannWhitney.Setting()), [](LikeQuestion& q) {
        q.alternative = Alternative::kGreater;
        q.testValue = 2.5;
        q.exact = false;
        q.continuity = false;
    });
    all["ranksum name"] = Changed(Groups(kMannWhitney.Setting()), [](LikeQuestion& q) {
        q.fields = {"sleep hours"};
        q.groupField = "class";
        q.groups = {"1", "2"};
        q.groupsAreTexts = false;
        q.sizes = {9, 7};
        q.hasTies = true;
    });
    all["kolmogorov two"] = Groups(kKolmogorovSmirnovTwoSample.Setting());
    all["kolmogorov two less"] = Changed(Groups(kKolmogorovSmirnovTwoSample.Setting()), [](LikeQuestion& q) {
        q.alternative = Alternative::kLess;
        q.exact = false;
    });
    all["lehmann groups"] = Groups(kHodgesLehmannGroups.Setting());
    all["lehmann pairs"] = Changed(paired, [](LikeQuestion& q) {
        q.test = Tests::kHodgesLehmannPairs.Setting();
        q.hasTies = q.hasZeros = true;
        q.confidenceLevel = 0.9;
    });
    all["kruskal"] = Doses(kKruskalWallis.Setting());
    all["kruskal part"] = Changed(Doses(kKruskalWallis.Setting()), [](LikeQuestion& q) {
        q.groups = {"low", "high"};
        q.groupsAreAll = false;
    });
    all["jonckheere"] = Doses(kJonckheereTerpstra.Setting());
    all["jonckheere less"] =
        Changed(Doses(kJonckheereTerpstra.Setting()), [](LikeQuestion& q) { q.alternative = Alternative::kLess; });
    all["median"] = Groups(kMedian.Setting());
    all["median plain"] = Changed(Groups(kMedian.Setting()), [](LikeQuestion& q) { q.continuity = false; });
    all["median three"] = Doses(kMedian.Setting());
    all["median given"] = Changed(Groups(kMedian.Setting()), [](LikeQuestion& q) { q.testValue = 11; });
    all["median part"] = Changed(Doses(kMedian.Setting()), [](LikeQuestion& q) {
        q.groups = {"low", "high"};
        q.groupsAreAll = false;
    });
    all["wilcoxon"] =
        Changed(Question(kWilcoxonOneSample.Setting(), {"len"}), [](LikeQuestion& q) { q.testValue = 9.25; });
    all["wilcoxon less"] = Changed(Question(kWilcoxonOneSample.Setting(), {"len"}), [](LikeQuestion& q) {
        q.testValue = 9.25;
        q.alternative = Alternative::kLess;
        q.exact = false;
        q.continuity = true;
    });
    all["pairs"] = Changed(paired, [](LikeQuestion& q) { q.hasTies = q.hasZeros = true; });
    all["pairs shift"] = Changed(paired, [](LikeQuestion& q) {
        q.testValue = 0.5;
        q.hasTies = true;
    });
    all["pairs pratt"] = Changed(paired, [](LikeQuestion& q) {
        q.zeros = ZeroMethod::kPratt;
        q.hasTies = q.hasZeros = true;
    });
    all["sign"] = Question(kSign.Setting(), {"before", "after"});
    all["sign normal"] =
        Changed(Question(kSign.Setting(), {"before", "after"}), [](LikeQuestion& q) { q.exact = false; });
    all["binomial"] = Changed(Question(kBinomial.Setting(), {"answer"}), success);
    all["binomial choices"] = Changed(Question(kBinomial.Setting(), {"answer"}), [](LikeQuestion& q) {
        q.successes = {"yes", "maybe"};
        q.testValue = 0.4;
        q.alternative = Alternative::kGreater;
        q.hasMissing = true;
    });
    all["binomial cut"] =
        Changed(Question(kBinomial.Setting(), {"sleep hours"}), [](LikeQuestion& q) { q.cutPoint = 6.25; });
    all["binomial normal"] = Changed(Question(kBinomial.Setting(), {"class"}), [](LikeQuestion& q) {
        q.successes = {"1"};
        q.successesAreTexts = false;
        q.exact = false;
        q.continuity = false;
    });
    all["proportion"] = Changed(Question(kProportionIntervals.Setting(), {"answer"}), success);
    all["proportion level"] = Changed(all["proportion"], [](LikeQuestion& q) { q.confidenceLevel = 0.9; });
    all["chi-square"] = Question(kChiSquare.Setting(), {"answer"});
    all["chi-square expected"] = Changed(Question(kChiSquare.Setting(), {"answer"}), [](LikeQuestion& q) {
        q.expected = {1, 2, 5};
    });
    all["friedman"] = Question(kFriedman.Setting(), {"before", "after", "third"});
    all["kendall missing"] = Changed(Question(kKendall.Setting(), {"before", "after", "third"}),
                                     [](LikeQuestion& q) { q.hasMissing = true; });
    all["cochran"] = Changed(purchases, success);
    all["mcnemar"] = Question(kMcNemar.Setting(), {"buys_first", "buys_third"});
    all["mcnemar plain"] = Changed(all["mcnemar"], [](LikeQuestion& q) { q.continuity = false; });
    all["kolmogorov normal"] = Question(KolmogorovSmirnovSetting::kNormal, {"len"});
    all["kolmogorov given"] = Changed(all["kolmogorov normal"], [](LikeQuestion& q) {
        q.parameters = {10, 5.5};
        q.exact = false;
    });
    all["kolmogorov uniform"] = Question(KolmogorovSmirnovSetting::kUniform, {"len"});
    all["kolmogorov exponential"] = Question(KolmogorovSmirnovSetting::kExponential, {"len"});
    return all;
}

constexpr std::array kSystems{std::pair(OtherSystem::kR, "r"), std::pair(OtherSystem::kSciPy, "scipy")};

const std::map<std::string, like_test::Recorded>& RecordedBy(OtherSystem system) {
    return system == OtherSystem::kR ? like_test::FromR() : like_test::FromSciPy();
}

// calls.tsv is the list that R and SciPy carried out, with the numbers beside it.
TEST(SettingLike, HasTheCallsThatTheSystemsCarriedOut) {
    const std::map<std::string, std::string> calls = Calls();
    std::size_t compared = 0;
    for (const auto& [id, question] : Questions()) {
        for (const auto& system : kSystems) {
            const LikeSetting setting = SettingLike(system.first, question);
            const auto found = calls.find(std::string(system.second) + "\t" + id);
            EXPECT_EQ(setting.hasCall, found != calls.end()) << system.second << " " << id;
            EXPECT_EQ(setting.hasCall, setting.reason.empty()) << id;
            if (found == calls.end()) continue;
            ++compared;
            EXPECT_EQ(setting.call, found->second);
            const like_test::Recorded& recorded = like_test::Find(RecordedBy(system.first), "call " + id);
            EXPECT_EQ(recorded.call, setting.call);
            for (const double number : recorded.numbers) EXPECT_FALSE(std::isnan(number)) << setting.call;
        }
    }
    EXPECT_GT(compared, 70u);
}

// Both systems were asked for the same number: where both work alike they have to agree.
TEST(SettingLike, MeansOneNumberInBothSystems) {
    std::size_t compared = 0;
    for (const auto& [id, question] : Questions()) {
        const LikeSetting r = SettingLike(OtherSystem::kR, question);
        const LikeSetting scipy = SettingLike(OtherSystem::kSciPy, question);
        if (!r.hasCall || !scipy.hasCall) continue;
        const bool isLimit = question.test == Tests::kKolmogorovSmirnovTwoSample.Setting() && !r.isExact;
        if (r.isExact != scipy.isExact || r.continuity != scipy.continuity || isLimit) continue;
        ++compared;
        const auto& inR = like_test::Find(like_test::FromR(), "call " + id).numbers;
        const auto& inSciPy = like_test::Find(like_test::FromSciPy(), "call " + id).numbers;
        ASSERT_EQ(inR.size(), inSciPy.size()) << id;
        for (std::size_t i = 0; i < inR.size(); ++i) {
            EXPECT_TRUE(like_test::Agree(inR[i], inSciPy[i], id == "kolmogorov given" ? 1e-6 : 1e-11)) << id;
        }
    }
    EXPECT_GT(compared, 25u);
}

/// The numbers of a column of table.csv where another column has a value.
AscendingSample Column(std::size_t column, std::size_t by, const std::string& value) {
    AscendingSample sample;
    std::ifstream file = OpenBeside("table.csv");
    for (std::string line; std::getline(file, line);) {
        std::vector<std::string> cells;
        std::istringstream text(line);
        for (std::string cell; std::getline(text, cell, ',');) cells.push_back(cell);
        if (cells[by] == value) sample.values.push_back(like_test::NumberOf(cells[column]));
    }
    std::ranges::sort(sample.values);
    sample.size = static_cast<double>(sample.values.size());
    return sample;
}

// What is not exact can be worked out here with the choices of the setting.
TEST(SettingLike, HasTheChoicesThatGiveTheNumbersHere) {
    const std::map<std::string, LikeQuestion> questions = Questions();
    const AscendingSample orange = Column(0, 1, "OJ");
    const AscendingSample vitamin = Column(0, 1, "VC");
    for (const auto& system : kSystems) {
        const auto number = [&](const std::string& id) {
            return like_test::Find(RecordedBy(system.first), "call " + id).numbers.at(0);
        };
        const LikeQuestion& question = questions.at("ranksum choices");
        const LikeSetting setting = SettingLike(system.first, question);
        EXPECT_FALSE(setting.isExact);
        const ChosenTest ranks =
            RankSumTest(orange, vitamin, question.alternative, setting.continuity, *question.testValue);
        EXPECT_TRUE(like_test::Agree(ranks.p, number("ranksum choices"), 1e-12)) << setting.call;
        const LikeSetting limit = SettingLike(system.first, questions.at("kolmogorov two less"));
        EXPECT_FALSE(limit.isExact);
        const ChosenTest kolmogorov = KolmogorovTest(orange, vitamin, Alternative::kLess, limit.kolmogorov);
        EXPECT_TRUE(like_test::Agree(kolmogorov.p, number("kolmogorov two less"), 1e-12)) << limit.call;
        AscendingSample differences{{-1, 0, 2, 3, 4, 5, 7}, {3, 2, 2, 3, 3, 2, 1}, 16};
        const LikeSetting pairs = SettingLike(system.first, questions.at("pairs"));
        EXPECT_FALSE(pairs.isExact);
        EXPECT_EQ(pairs.continuity, system.first == OtherSystem::kR);
        const ChosenTest signs = SignedRankTest(differences, Alternative::kTwoSided, pairs.continuity, pairs.zeros);
        EXPECT_TRUE(like_test::Agree(signs.p, number("pairs"), 1e-12)) << pairs.call;
    }
}

// When a system works exactly of its own accord: 1 in the recorded file where it did.
TEST(SettingLike, KnowsWhenASystemIsExact) {
    std::size_t rules = 0;
    for (const auto& system : kSystems) {
        for (const auto& [id, recorded] : RecordedBy(system.first)) {
            if (!id.starts_with("call rule ")) continue;
            ++rules;
            std::istringstream words(id.substr(10));
            std::string test;
            words >> test;
            LikeQuestion question;
            if (test == "signedrank") question = Question(Tests::kWilcoxonOneSample.Setting(), {"len"});
            if (test == "onesample") question = Question(KolmogorovSmirnovSetting::kUniform, {"len"});
            if (test == "ranksum") question = Groups(Tests::kMannWhitney.Setting());
            if (test == "kolmogorov") question = Groups(Tests::kKolmogorovSmirnovTwoSample.Setting());
            question.sizes.clear();
            for (std::string word; words >> word;) {
                question.hasTies = question.hasTies || word == "ties";
                question.hasZeros = question.hasZeros || word == "zeros";
                if (word != "ties" && word != "zeros") question.sizes.push_back(like_test::NumberOf(word));
            }
            const LikeSetting setting = SettingLike(system.first, question);
            EXPECT_EQ(setting.isExact, recorded.numbers.at(0) == 1) << system.second << " " << id;
        }
    }
    EXPECT_EQ(rules, 26u);
}

TEST(SettingLike, SaysWhyThereIsNoCall) {
    const auto reason = [](OtherSystem system, const LikeQuestion& question) {
        const LikeSetting setting = SettingLike(system, question);
        EXPECT_FALSE(setting.hasCall);
        EXPECT_TRUE(setting.call.empty());
        return std::string(setting.reason);
    };
    for (const std::string_view test :
         {Tests::kRuns.Setting(), Tests::kMoses.Setting(), Tests::kWaldWolfowitz.Setting(),
          Tests::kMarginalHomogeneity.Setting(), std::string_view("Unknown")}) {
        EXPECT_EQ(reason(OtherSystem::kR, Question(test, {"len"})), "likeNoCall");
        EXPECT_EQ(reason(OtherSystem::kSciPy, Question(test, {"len"})), "likeNoCall");
    }
    const std::map<std::string, LikeQuestion> all = Questions();
    EXPECT_EQ(reason(OtherSystem::kSciPy, all.at("mcnemar")), "likeNoCall");
    EXPECT_EQ(reason(OtherSystem::kR, all.at("pairs pratt")), "likeNoZeroMethod");
    EXPECT_EQ(reason(OtherSystem::kSciPy, Question(Tests::kFriedman.Setting(), {"a", "b"})), "likeTooFewFields");
    EXPECT_EQ(reason(OtherSystem::kR, Changed(all.at("kruskal"), [](LikeQuestion& q) { q.hasWeights = true; })),
              "likeWeights");
    EXPECT_EQ(reason(OtherSystem::kSciPy, Changed(all.at("cochran"), [](LikeQuestion& q) { q.hasMissing = true; })),
              "likeMissing");
    EXPECT_EQ(reason(OtherSystem::kR,
                     Changed(all.at("friedman"), [](LikeQuestion& q) { q.alternative = Alternative::kLess; })),
              "likeNoAlternative");
}

TEST(SettingLike, IgnoresTiesWhereTheSystemDoes) {
    LikeQuestion question = Groups(Tests::kMannWhitney.Setting());
    question.hasTies = true;
    question.exact = true;
    EXPECT_FALSE(SettingLike(OtherSystem::kR, question).isExact);  // it turns to the normal approximation
    EXPECT_TRUE(SettingLike(OtherSystem::kR, question).continuity);
    EXPECT_TRUE(SettingLike(OtherSystem::kSciPy, question).ignoresTies);
    question.test = Tests::kKolmogorovSmirnovTwoSample.Setting();
    question.exact.reset();
    EXPECT_FALSE(SettingLike(OtherSystem::kR, question).ignoresTies);
    EXPECT_TRUE(SettingLike(OtherSystem::kSciPy, question).ignoresTies);
}

TEST(LikeOthersNames, AreQuotedWhereTheyHaveToBe) {
    EXPECT_EQ(NameInR("len.2"), "len.2");
    EXPECT_EQ(NameInR(".2x"), "`.2x`");
    EXPECT_EQ(NameInR("_x"), "`_x`");
    EXPECT_EQ(NameInR("for"), "`for`");
    EXPECT_EQ(NameInR("a`b\\"), "`a\\`b\\\\`");
    EXPECT_EQ(NameInR("größe"), "`größe`");
    EXPECT_EQ(NameInR(""), "``");
    EXPECT_EQ(NameInPython("_len"), "_len");
    EXPECT_EQ(NameInPython("len.2"), "df[\"len.2\"]");
    EXPECT_EQ(NameInPython("lambda"), "df[\"lambda\"]");
    EXPECT_EQ(NameInPython("np"), "df[\"np\"]");
    EXPECT_EQ(NameInPython("2x"), "df[\"2x\"]");
    EXPECT_EQ(QuotedText("say \"a\\b\"\n"), "\"say \\\"a\\\\b\\\"\\n\"");
}

TEST(OtherSystem, IsFoundByItsName) {
    EXPECT_EQ(OtherSystemOf("r"), OtherSystem::kR);
    EXPECT_EQ(OtherSystemOf("scipy"), OtherSystem::kSciPy);
    EXPECT_FALSE(OtherSystemOf("R"));
}

}  // namespace
}  // namespace tarn
