// A small table and a test of it: what the test says may depend neither on whether it takes its records by columns or
// one by one, nor on how they are divided into batches, nor, as long as its numbers keep within what the engine is
// defined for, on the arithmetic.
//
// The first bytes choose the test and what the table is like, each further one gives a cell, row by row.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "tests/harness/AllTests.h"
#include "tests/harness/ArithmeticComparison.h"
#include "tests/harness/PlannedTest.h"

namespace {

/// What the fuzzer gave; 0 where nothing is left.
class Bytes {
 public:
    Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    bool HasMore() const { return next_ < size_; }
    unsigned Next() { return HasMore() ? data_[next_++] : 0; }

 private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t next_ = 0;
};

/// What a table is like; a bit each of one byte.
struct Shape {
    explicit Shape(unsigned bits)
        : missing((bits & 1) != 0),
          extremes((bits & 2) != 0),
          weighted((bits & 4) != 0),
          oddWeights((bits & 8) != 0),
          byTest((bits & 16) == 0) {}

    bool missing;
    bool extremes;  ///< values that no sum of squares of the definition survives
    bool weighted;
    bool oddWeights;  ///< 0, and those that are no whole numbers
    bool byTest;      ///< a missing value leaves out the record of the tests that use it, else of all
};

constexpr int kContinuous = 10;  // x0 .. x9, as harness::Data has them
constexpr unsigned kCategories[] = {2, 2, 2, 3, 3, 5};

double ContinuousCell(unsigned byte, const Shape& shape) {
    constexpr double kPlain[] = {0, 1, 2, 3, 4, 5, 6, 7, -1, -0.0, 0.5, 1.5, 0.1, 0.2, 0.1 + 0.2, 1.0 / 3};
    constexpr double kExtreme[] = {1e300,   -1e300,      1e-300, 1e16, 1e16 + 2, std::numeric_limits<double>::max(),
                                   -5e-324, 4294967296.0};
    constexpr unsigned kShareOfOthers = 16;  // of 256, each
    if (shape.missing && byte >= 256 - kShareOfOthers) return harness::kNone;
    if (shape.extremes && byte < kShareOfOthers) return kExtreme[byte % std::size(kExtreme)];
    return kPlain[byte % std::size(kPlain)];
}

double CategoryCell(unsigned byte, unsigned categories, const Shape& shape) {
    if (shape.missing && byte >= 240) return harness::kNoCategory;
    return byte % categories;
}

double WeightCell(unsigned byte, const Shape& shape) {
    constexpr double kOdd[] = {0, 0.5, 1.75, 0.25};
    if (shape.missing && byte >= 240) return harness::kNone;
    if (shape.oddWeights && byte < 64) return kOdd[byte % std::size(kOdd)];
    return 1 + byte % 5;
}

struct FuzzedTable {
    FuzzedTable(Bytes& bytes, const Shape& shape) {
        for (int i = 0; i < kContinuous; ++i) fields.Continuous("x" + std::to_string(i));
        for (const char* const name : {"a", "b", "c"}) fields.Numeric(name, {1, 2});
        for (const char* const name : {"p", "q"}) fields.Numeric(name, {1, 2, 3});
        fields.Numeric("g", {1, 2, 3, 4, 5});
        if (shape.weighted) fields.Weight("w");
        while (bytes.HasMore()) {
            std::vector<double> row;
            for (int i = 0; i < kContinuous; ++i) row.push_back(ContinuousCell(bytes.Next(), shape));
            for (const unsigned categories : kCategories) row.push_back(CategoryCell(bytes.Next(), categories, shape));
            if (shape.weighted) row.push_back(WeightCell(bytes.Next(), shape));
            rows.push_back(std::move(row));
        }
    }

    harness::Fields fields;
    harness::Rows rows;
};

/// Fails where extended arithmetic gives other numbers and doesn't say so.
void ExpectTheSameNumbers(const std::string& defined, const std::string& extended) {
    pugi::xml_document first;
    pugi::xml_document second;
    ASSERT_TRUE(first.load_string(defined.c_str()) && second.load_string(extended.c_str()));
    if (second.first_child().attribute("arithmetic")) return;
    const std::vector<std::string> found = harness::DifferencesByArithmetic(first.first_child(), second.first_child());
    EXPECT_TRUE(found.empty()) << found.front() << "\n" << defined;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMostBytes = 1024;  // some 60 rows
    Bytes bytes(data, std::min(size, kMostBytes));
    const std::vector<harness::Entry>& entries = harness::AllEntries();
    const harness::Entry& entry = entries[bytes.Next() % entries.size()];
    const Shape shape(bytes.Next());
    const unsigned batch = 1 + bytes.Next() % 8;
    FuzzedTable table(bytes, shape);
    if (table.rows.empty()) return 0;
    harness::Scene scene;
    scene.analysisMissing = shape.byTest;

    std::string elements[2];
    for (const bool isExtended : {false, true}) {
        const auto planned = [&] { return harness::PlannedTest(entry, table.fields, table.rows, scene, isExtended); };
        if (!planned().IsReady()) return 0;
        std::string& element = elements[isExtended ? 1 : 0];
        element = planned().ByRecords();
        EXPECT_EQ(planned().ByWorker(), element) << entry.name;
        EXPECT_EQ(planned().ByBatchesOf([&] { return batch; }), element) << entry.name << " in batches of " << batch;
    }
    const bool isWithinLimits = !shape.extremes && !(shape.weighted && shape.oddWeights);
    if (isWithinLimits) ExpectTheSameNumbers(elements[0], elements[1]);
    if (testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed()) std::abort();  // found as a crash is
    return 0;
}
