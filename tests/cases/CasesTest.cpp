// Whole runs of the command: each folder beside this file holds a table, a request and the document that it gives.
// The tables are public data sets of statistics courses. The documents were made by an independent implementation of
// the definitions, which was checked against R and SciPy wherever a definition is the standard one.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/harness/Command.h"
#include "tests/harness/Document.h"

namespace {

std::vector<std::string> CaseNames() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(harness::SourcePath("tests/cases"))) {
        if (entry.is_directory()) names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class Cases : public testing::TestWithParam<std::string> {
 protected:
    std::string Path(const std::string& file) const {
        return harness::SourcePath("tests/cases/" + GetParam() + "/" + file);
    }
    bool Has(const std::string& file) const { return std::filesystem::exists(Path(file)); }

    std::vector<std::string> Arguments(const std::string& out) const {
        const std::string request = Has("plan.json") ? "plan" : "settings";
        std::vector<std::string> arguments{
            "run",     "--strict", "--data", Path("data.csv"), "--" + request, Path(request + ".json"),
            "--quiet", "--out",    out};
        if (Has("fields.json")) arguments.insert(arguments.end(), {"--fields", Path("fields.json")});
        return arguments;
    }
};

TEST_P(Cases, GiveTheExpectedDocument) {
    const harness::ScratchFolder scratch;
    const harness::CommandResult result = harness::RunTarn(Arguments(scratch.Path("result.xml")));
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(harness::DocumentDifferences(harness::ReadFile(Path("expected.xml")),
                                           harness::ReadFile(scratch.Path("result.xml"))),
              std::vector<std::string>{});
}

std::string TestName(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Folders, Cases, testing::ValuesIn(CaseNames()), TestName);

}  // namespace
