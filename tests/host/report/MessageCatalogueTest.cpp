#include "host/report/MessageCatalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "host/TestNames.h"
#include "tests/harness/Command.h"
#include "tests/host/InputErrorOf.h"
#include "tests/host/report/ResultTexts.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace tarn {
namespace {

using Strings = std::vector<std::string>;

std::string Fill(const std::string& text, const Strings& parameters,
                 const std::vector<std::pair<std::string, std::string>>& named = {}) {
    static const ResultDocument document = ReadResult(report_test::DocumentOf(""));
    return FillIn(text, {&parameters, &named, &document});
}

TEST(FillIn, PutsInParametersByTheirKinds) {
    EXPECT_EQ(Fill("{0} and {1}", {"a", "b"}), "a and b");
    EXPECT_EQ(Fill("{field:0} by {field:1}", {"0", "2"}), "u by arm");
    EXPECT_EQ(Fill("{fields:0}", {"0;1;2"}), "u, v, arm");
    EXPECT_EQ(Fill("{values:0}", {"1;2;x"}), "1, 2, x");
    EXPECT_EQ(Fill("{number:0}", {"0.333333333333333"}), "0.333333");
    EXPECT_EQ(Fill("{category:1:0}", {"2", "1"}), "new");
    EXPECT_EQ(Fill("{category:1:0}", {"2", "7"}), "7");
    EXPECT_EQ(Fill("{category:1:0}", {"2", "1;2"}), "new, 3");
    EXPECT_EQ(Fill("positions {named:group}", {}, {{"group", "0;2"}}), "positions 0, 2");
}

TEST(FillIn, PutsInListsOfNamesAsAMessageOfARunJoinsThem) {
    EXPECT_EQ(Fill("{names:0}", {"a ,b c"}), "a, b c");
    EXPECT_EQ(Fill("{tests:0}", {"KolmogorovSmirnov ,WilcoxonSignedRanks ,KolmogorovSmirnov ,Other"}),
              "kolmogorov-smirnov, wilcoxon, Other");
}

TEST(FillIn, LeavesOutWhatIsOptional) {
    EXPECT_EQ(Fill("a[ (b: {tests:0})]", {""}), "a");
    EXPECT_EQ(Fill("the field[ {0}] is unknown", {"w"}), "the field w is unknown");
    EXPECT_EQ(Fill("the field[ {0}] is unknown", {}), "the field is unknown");
    EXPECT_EQ(Fill("a[ {0} and {1}]", {"x"}), "a");
    EXPECT_EQ(Fill("a[ b]", {}), "a b");
}

TEST(FillIn, ShowsWhatIsAbsentOrUnknown) {
    EXPECT_EQ(Fill("{0}", {}), "?");
    EXPECT_EQ(Fill("{named:group}", {}), "?");
    EXPECT_EQ(Fill("{field:0}", {"-1"}), "a field that is not known");
    EXPECT_EQ(Fill("{field:0}", {"__MISSING__"}), "a field that is not known");
    EXPECT_EQ(Fill("{0}", {"__MISSING__"}), "(none)");
    EXPECT_EQ(Fill("open {0", {"a"}), "open a");
}

TEST(MessageCatalogue, AnotherLanguageIsAFileOverTheEnglishTexts) {
    const harness::ScratchFolder folder;
    folder.Write("xx.json", R"({"language": "Test", "status": {"220003": "nix da"}})");
    const std::string path = std::filesystem::path(folder.Path("xx.json")).parent_path().string();
    const MessageCatalogue texts = MessageCatalogue::OfLanguage("xx", {"/nonexistent", path});
    EXPECT_EQ(texts.Sentence(220003, {}), "nix da");
    EXPECT_EQ(texts.Sentence(220012, {}), MessageCatalogue::English().Sentence(220012, {}));
    const MessageCatalogue english = MessageCatalogue::OfLanguage("yy", {path});
    EXPECT_EQ(english.Sentence(220003, {}), MessageCatalogue::English().Sentence(220003, {}));
}

TEST(MessageCatalogue, TellsWhereAFileIsNoJson) {
    MessageCatalogue texts;
    for (const char* text : {"{", "[]x"}) {
        const std::string error = InputErrorOf([&] { texts.Add(text, "de.json"); });
        EXPECT_TRUE(error.starts_with("de.json:1:")) << error;
        EXPECT_NE(error.find("; expected "), std::string::npos) << error;
    }
}

TEST(MessageCatalogue, TellsAFileThatIsNone) {
    MessageCatalogue texts;
    for (const char* text : {R"({"status": {"1": 5}})", R"({"tests": {"RSign": 1}})"}) {
        const std::string error = InputErrorOf([&] { texts.Add(text, "de.json"); });
        EXPECT_TRUE(error.starts_with("de.json: ")) << error;
        EXPECT_TRUE(error.ends_with("; expected a catalogue of messages as docs/messages.md tells")) << error;
    }
}

TEST(MessageCatalogue, ACodeWithoutATextShowsItself) {
    EXPECT_EQ(MessageCatalogue().Sentence(220003, {}), "code 220003");
}

// ---- The English texts ----

/// The engine's sources, one behind the other.
std::string Sources() {
    std::string text;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(harness::SourcePath("src"))) {
        if (entry.is_regular_file()) text += harness::ReadFile(entry.path().string()) + '\n';
    }
    return text;
}

/// All that the pattern finds in them.
std::set<std::string> InSources(const std::string& pattern) {
    const std::regex expression(pattern);
    const std::string text = Sources();
    std::set<std::string> found;
    for (std::sregex_iterator it(text.begin(), text.end(), expression), end; it != end; ++it) {
        found.insert((*it)[1].str());
    }
    return found;
}

TEST(EnglishMessages, HaveASentenceForEveryCodeOfTheEngineAndForNoOther) {
    std::set<std::string> codes;
    for (const StatusCode::Row& row : StatusCode::kTable) {
        codes.insert(std::to_string(row.code));
        EXPECT_NE(MessageCatalogue::English().Status(row.code), nullptr) << row.code;
    }
    const auto texts = nlohmann::json::parse(harness::ReadFile(harness::SourcePath("host/messages/en.json")));
    for (const auto& [code, text] : texts.at("status").items()) EXPECT_TRUE(codes.contains(code)) << code;
}

TEST(EnglishMessages, HaveASentenceForEveryConditionOfTheEngine) {
    const std::set<std::string> keys = InSources(R"re("((?:[A-Za-z]+_)?[ORI]_[A-Z][A-Za-z]+_[0-9] ?)")re");
    EXPECT_GT(keys.size(), 4u);
    for (const std::string& key : keys) {
        const std::string* const text = MessageCatalogue::English().Condition(key);
        ASSERT_NE(text, nullptr) << key;
        EXPECT_TRUE(text->ends_with('.')) << key;
    }
}

TEST(EnglishMessages, HaveNoSentenceForAConditionThatTheEngineDoesntName) {
    const auto texts = nlohmann::json::parse(harness::ReadFile(harness::SourcePath("host/messages/en.json")));
    const std::string sources = Sources();
    for (const auto& [key, text] : texts.at("condition").items()) {
        EXPECT_NE(sources.find('"' + key + '"'), std::string::npos) << key;
    }
}

TEST(EnglishMessages, TellEveryTestOfTheEngine) {
    std::set<std::string> names;
    for (const TestFacts* const facts : Tests::kAll) {
        const std::string name(facts->resultName);
        names.insert(name);
        const TestTexts* const about = MessageCatalogue::English().Test(name);
        ASSERT_NE(about, nullptr) << name;
        for (const std::string* text : {&about->title, &about->name, &about->family, &about->question, &about->assumes,
                                        &about->chosen, &about->decides, &about->method, &about->source}) {
            EXPECT_FALSE(text->empty()) << name;
        }
    }
    for (const auto& [name, about] : MessageCatalogue::English().Tests()) EXPECT_TRUE(names.contains(name)) << name;
}

std::string_view HyphenatedNameOf(TestFamily family) {
    return family == TestFamily::kOneSample ? "one-sample" : family == TestFamily::kRelated ? "related" : "independent";
}

TEST(EnglishMessages, SayWhatTheFactsOfATestSay) {
    for (const TestFacts* const facts : Tests::kAll) {
        const TestTexts& about = *MessageCatalogue::English().Test(facts->resultName);
        EXPECT_EQ(about.title, facts->method);
        EXPECT_EQ(about.family, HyphenatedNameOf(facts->family)) << facts->resultName;
        EXPECT_EQ(about.decides.starts_with("Nothing is decided"), facts->IsEstimate()) << facts->resultName;
        std::istringstream sources{std::string(facts->source)};
        for (std::string source; std::getline(sources >> std::ws, source, ';');) {
            EXPECT_NE(about.source.find(source), std::string::npos) << facts->resultName << " " << source;
        }
    }
}

TEST(EnglishMessages, TellHowTheTestsOfSeveralSamplesCompareThem) {
    for (const TestFacts* const facts : Tests::kAll) {
        const TestTexts& about = *MessageCatalogue::English().Test(facts->resultName);
        EXPECT_EQ(!about.pairs.empty(), facts->comparesSamples) << facts->resultName;
        EXPECT_EQ(!about.steps.empty(), facts->comparesSamples) << facts->resultName;
    }
}

/// The part of a page from a heading with the name of a test to the next heading; "" for none.
std::string SectionOf(const std::string& page, const std::string& test) {
    const std::size_t start = page.find("(`" + test + "`)\n");
    return start == std::string::npos ? "" : page.substr(start, page.find("\n#", start) - start);
}

// What the outputs say of a test is what the page tells and `make conventions` checks.
TEST(EnglishMessages, StandOnThePageOfTheConventionsWordByWord) {
    const std::string page = harness::ReadFile(harness::SourcePath("docs/conventions.md"));
    for (const auto& [name, about] : MessageCatalogue::English().Tests()) {
        const std::string section = SectionOf(page, name);
        std::string lines = "\n\nMethod: " + about.method + "\n";
        if (!about.pairs.empty()) lines += "\nPairs: " + about.pairs + "\n\nSubsets: " + about.steps + "\n";
        EXPECT_EQ(section.substr(std::min(section.find("\n\n"), section.size()), lines.size()), lines) << name;
        EXPECT_NE(section.find("```check\n"), std::string::npos) << name;
    }
}

TEST(EnglishMessages, TellEveryTestByTheNameThatAUserGivesIt) {
    for (const TestName& test : TestNames()) {
        const TestTexts* const about = MessageCatalogue::English().Test(test.resultName);
        ASSERT_NE(about, nullptr) << test.resultName;
        EXPECT_EQ(about->name, test.name) << test.resultName;
    }
}

}  // namespace
}  // namespace tarn
