// What a pack of published results may say, and how its mistakes are told.

#include "host/verify/ReferencePack.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <string_view>

#include "host/InputError.h"
#include "vocabulary/TestFacts.h"

namespace {

using tarn::ReadReferencePack;
using tarn::ReferenceCase;
using tarn::ReferencePack;

const std::string kPublished = std::string(TARN_SOURCE_PATH) + "/share/reference/published";

/// A folder with one file, removed with it.
class PackOf {
 public:
    explicit PackOf(const std::string& text) {
        std::string pattern = (std::filesystem::temp_directory_path() / "tarn-pack-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        std::ofstream(File()) << text;
    }
    ~PackOf() { std::filesystem::remove_all(folder_); }
    PackOf(const PackOf&) = delete;
    PackOf& operator=(const PackOf&) = delete;

    std::string File() const { return folder_ + "/sign.json"; }
    const std::string& Folder() const { return folder_; }

 private:
    std::string folder_;
};

std::string FileWith(const std::string& cases, const std::string& test = "RSign") {
    return R"({"format": "tarn-reference-1", "test": ")" + test + R"(", "cases": [)" + cases + "]}";
}

std::string CaseWith(const std::string& more, const std::string& number = R"({"quantity": "p", "printed": "0.5"})") {
    return R"({"name": "one", "title": "t", "kind": "package", "source": "s", "data": {"a": [1, 2], "b": [3, null]},)"
           R"( "request": ["--related", "a,b"], "expect": [)" +
           number + "]" + more + "}";
}

/// What is said of a pack, without its path.
std::string MistakeIn(const std::string& text) {
    const PackOf pack(text);
    try {
        ReadReferencePack(pack.Folder());
        return "none";
    } catch (const tarn::InputError& mistake) {
        const std::string told = mistake.what();
        EXPECT_EQ(told.substr(0, pack.File().size() + 2), pack.File() + ": ");
        return told.substr(pack.File().size() + 2);
    }
}

TEST(ReferencePack, HasCasesWithTheirData) {
    const PackOf pack(FileWith(CaseWith("") + R"(, {"name": "two", "title": "t", "kind": "print", "source": "s",
        "data": "one", "request": [], "expect": [{"quantity": "p exact", "of": "x", "printed": "0.12345", "digits": 3,
        "differs": "a slip", "right": "0.2", "as_defined": "0"}]})"));
    const ReferencePack read = ReadReferencePack(pack.Folder());
    ASSERT_EQ(read.cases.size(), 2u);
    EXPECT_EQ(read.cases[0].Csv(), "a,b\n1,3\n2,\n");
    EXPECT_EQ(read.cases[1].Csv(), read.cases[0].Csv());
    const tarn::Expectation& number = read.cases[1].expectations[0];
    EXPECT_EQ(number.Name(), "p exact of x");
    EXPECT_EQ(number.printed.digits, 3);
    EXPECT_EQ(number.printed.decimals, 3);
    EXPECT_EQ(number.Wanted(tarn::ArithmeticMode::kExtended).text, "0.2");
    EXPECT_EQ(number.Wanted(tarn::ArithmeticMode::kAsDefined).text, "0");
    const tarn::Expectation& plain = read.cases[0].expectations[0];
    EXPECT_FALSE(plain.Differs());
    EXPECT_EQ(plain.Wanted(tarn::ArithmeticMode::kAsDefined).text, "0.5");
}

TEST(ReferencePack, QuotesCellsThatNeedIt) {
    ReferenceCase one;
    one.columns = {{"a b", {"x, y", "say \"z\""}}, {"n", {"1", ""}}};
    EXPECT_EQ(one.Csv(), "a b,n\n\"x, y\",1\n\"say \"\"z\"\"\",\n");
}

TEST(ReferencePack, TellsWhatIsWrongAndWhere) {
    EXPECT_EQ(MistakeIn(R"({"format": "other", "test": "RSign", "cases": []})"),
              "format: expected \"tarn-reference-1\"");
    EXPECT_EQ(MistakeIn(FileWith("", "RSing")),
              "test: \"RSing\"; expected a test as documents name it, like IMannWhitneyU");
    EXPECT_EQ(MistakeIn(FileWith(CaseWith(R"(, "sources": "s")"))),
              "cases[0].sources: unknown key; did you mean source?");
    EXPECT_EQ(MistakeIn(FileWith(R"({"name": "one"})")), "cases[0].title: missing; expected a text");
    EXPECT_EQ(MistakeIn(FileWith(CaseWith("") + "," + CaseWith(""))), "cases[1].name: \"one\" stands twice");
    EXPECT_EQ(MistakeIn(FileWith(CaseWith("", ""))), "cases[0].expect: no number to compare with");
    EXPECT_EQ(MistakeIn(FileWith(CaseWith("", R"({"quantity": "p", "printed": 0.5})"))),
              "cases[0].expect[0].printed: expected a text");
    EXPECT_EQ(MistakeIn(FileWith(CaseWith("", R"({"quantity": "p", "printed": "0.5", "digits": 1})"))),
              "cases[0].expect[0].digits: 1; expected a whole number from 1 to below the 1 that are printed");
    EXPECT_EQ(MistakeIn(FileWith(CaseWith("", R"({"quantity": "p", "printed": "0.5", "differs": "why"})"))),
              "cases[0].expect[0]: \"differs\" says why a printed number isn't right and \"right\" what is; expected "
              "both or none");
}

TEST(ReferencePack, TellsWhatIsWrongWithData) {
    const auto with = [](const std::string& data, const std::string& kind = "package") {
        return MistakeIn(FileWith(R"({"name": "one", "title": "t", "kind": ")" + kind +
                                  R"(", "source": "s", "request": [], "expect": [], "data": )" + data + "}"));
    };
    EXPECT_EQ(with(R"({"a": [1], "b": [1, 2]})"),
              "cases[0].data.b: 2 cells; expected 1, as many as in the first column");
    EXPECT_EQ(with(R"({"a": [[1]]})"), "cases[0].data.a: expected numbers, texts or null");
    EXPECT_EQ(with("{}"), "cases[0].data: no columns");
    EXPECT_EQ(with(R"("two")"),
              "cases[0].data: \"two\"; expected columns, or the name of a case that stands before this one");
    EXPECT_EQ(with("{}", "book"),
              "cases[0].kind: \"book\"; expected \"print\", \"package\", \"enumeration\" or \"computation\"");
}

TEST(ReferencePack, IsRefusedWhereThereIsNone) {
    EXPECT_THROW(ReadReferencePack("/nowhere"), tarn::InputError);
}

// ---- The pack that tarn is installed with ----

TEST(ReferencePack, CoversEveryTest) {
    std::set<std::string> tests;
    for (const ReferenceCase& each : ReadReferencePack(kPublished).cases) tests.insert(each.test);
    for (const TestFacts* const test : Tests::kAll) EXPECT_TRUE(tests.contains(std::string(test->resultName)));
}

TEST(ReferencePack, HasManyCasesThatOthersPublished) {
    const ReferencePack pack = ReadReferencePack(kPublished);
    const auto isPublished = [](const ReferenceCase& each) { return each.kind == "print" || each.kind == "package"; };
    EXPECT_GE(std::ranges::count_if(pack.cases, isPublished), 120);
}

TEST(ReferencePack, FindsCasesByNameAndByTest) {
    const ReferencePack pack = ReadReferencePack(kPublished);
    ASSERT_EQ(pack.Named("mann-whitney-rotarod").size(), 1u);
    EXPECT_EQ(pack.Named("mann-whitney-rotarod").front()->test, "IMannWhitneyU");
    EXPECT_EQ(pack.Named("cochran"), pack.Named("RCochransQ"));
    EXPECT_GT(pack.Named("wilcoxon").size(), pack.Named("OWilcoxonSignedRanks").size());
    try {
        pack.Named("mann-whitny");
        ADD_FAILURE();
    } catch (const tarn::InputError& mistake) {
        EXPECT_NE(std::string_view(mistake.what()).find("did you mean mann-whitney"), std::string_view::npos)
            << mistake.what();
    }
}

}  // namespace
