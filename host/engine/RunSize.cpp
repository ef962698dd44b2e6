#include "host/engine/RunSize.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <vector>

#include "host/InputError.h"
#include "host/engine/KnownKeys.h"
#include "vocabulary/RequestKeys.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

// Measured as the growth of a process over that of a smaller run: docs/robustness.md has the runs.
constexpr double kBytesOfPair = 750;     // of samples, in the tables and in the text of the document
constexpr double kBytesOfRange = 200;    // of samples, two of which bound it
constexpr double kBytesOfSquare = 80;    // a cell of the square table of a pair of ordered fields, as JSON
constexpr double kBytesOfTest = 52'000;  // with histogram and descriptives, as a page, which takes most
constexpr double kBytesOfBriefTest = 38'000;
constexpr double kBytesOfField = 36'000;  // among the related ones of a test, likewise
constexpr double kBytesOfBriefField = 20'000;

/// The steps of a stepwise comparison grow with the cube of the number of samples: here they take some seconds.
constexpr std::size_t kMostSteppedSamples = 1000;

std::string ShownCount(double count) {
    char text[32];
    std::snprintf(text, sizeof text, "%.0f", count);
    return text;
}

bool IsTold(const Json& request, const char* key) {
    const auto found = request.find(key);
    return found != request.end() && (*found == true || *found == "true" || *found == 1);
}

// ---- Requests ----

std::vector<std::string> TextsUnder(const Json& request, const char* key) {
    std::vector<std::string> texts;
    const auto found = request.find(key);
    if (found == request.end()) return texts;
    const auto add = [&texts](const Json& value) {
        if (value.is_string()) texts.push_back(value.get<std::string>());
    };
    if (found->is_array()) {
        std::ranges::for_each(*found, add);
    } else {
        add(*found);
    }
    return texts;
}

/// What a request asks of the fields of one family.
struct FamilyRequest {
    std::size_t testCount = 0;
    std::size_t comparedTests = 0;  ///< of which all pairs are asked for
    std::size_t steppedTests = 0;   ///< of which homogeneous subsets are asked for
    bool hasSquare = false;
};

FamilyRequest FamilyOf(const Json& request, TestFamily family) {
    FamilyRequest asked;
    for (const auto& [key, entry] : request.items()) {
        const KnownTest* const test = entry.is_object() ? FindKnownTest(key, KeyForm::kRequest) : nullptr;
        if (test == nullptr || test->family != family || !IsTold(entry, "isSelected")) continue;
        ++asked.testCount;
        const auto comparison = entry.find(SettingKey::kTypeOfMultipleComparison);
        if (comparison != entry.end() && *comparison == MultipleComparisonType::kPairWise) ++asked.comparedTests;
        if (comparison != entry.end() && *comparison == MultipleComparisonType::kStepWise) ++asked.steppedTests;
        asked.hasSquare = asked.hasSquare || key == Tests::kMarginalHomogeneity.requestName;
    }
    // The engine chooses one test for each field, and compares several samples by pairs.
    if (asked.testCount == 0) asked.testCount = asked.comparedTests = 1;
    return asked;
}

}  // namespace

RunSize::RunSize(const Table& table, bool isBrief)
    : table_(table),
      bytesOfTest_(isBrief ? kBytesOfBriefTest : kBytesOfTest),
      bytesOfField_(isBrief ? kBytesOfBriefField : kBytesOfField),
      bytesOfTable_(static_cast<double>(sizeof(double)) * static_cast<double>(table.RowCount()) *
                    static_cast<double>(table.ColumnCount())) {}

void RunSize::AddPairs(std::size_t samples, std::size_t times) {
    const auto count = static_cast<double>(samples);
    pairs_ += static_cast<double>(times) * count * (count - 1) / 2;
}

void RunSize::AddSteps(std::size_t samples, std::size_t times) {
    if (times == 0) return;
    const auto count = static_cast<double>(samples);
    // One test after the other: what one takes is free again for the next.
    ranges_ = std::max(ranges_, count * (count - 1) / 2);
    steppedSamples_ = std::max(steppedSamples_, samples);
}

void RunSize::AddSquare(std::size_t categories) {
    const auto count = static_cast<double>(categories);
    square_ += count * count;
}

std::size_t RunSize::CategoriesOf(const std::string& field) const {
    const int column = table_.FindColumn(field);
    return column == Table::kNoColumn ? 0 : table_.Columns()[static_cast<std::size_t>(column)].categories.size();
}

void RunSize::Check(const std::string& source, std::size_t limit) const {
    if (steppedSamples_ > kMostSteppedSamples) {
        throw InputError(source + ": compares " + std::to_string(steppedSamples_) +
                         " samples step by step, which takes time with the cube of their number; expected at most " +
                         std::to_string(kMostSteppedSamples) + " samples, or all pairs of them");
    }
    // However many tests are about a field, it is described once.
    const double fields = std::min(fields_, static_cast<double>(table_.ColumnCount()));
    const double bytes = bytesOfTable_ + tests_ * bytesOfTest_ + fields * bytesOfField_ + pairs_ * kBytesOfPair +
                         ranges_ * kBytesOfRange + square_ * kBytesOfSquare;
    if (limit == 0 || bytes <= static_cast<double>(limit)) return;
    std::string needs;
    const auto add = [&needs](double count, const char* what) {
        if (count >= 1) needs += (needs.empty() ? "" : ", ") + ShownCount(count) + " " + what;
    };
    add(tests_, "results of tests");
    add(fields, "related fields");
    add(pairs_, "pairs of samples");
    add(ranges_, "ranges of samples");
    add(square_, "cells of square tables");
    FailForMemory(source, bytes, needs, limit);
}

void CheckSizeOfRequest(const Json& request, const std::string& source, const Table& table, std::size_t limit) {
    RunSize size(table, IsTold(request, kBrief));
    const std::size_t oneSample = TextsUnder(request, RequestKey::kOneSampleVariables).size();
    if (oneSample > 0) size.AddTests(oneSample * FamilyOf(request, TestFamily::kOneSample).testCount);

    const std::vector<std::string> related = TextsUnder(request, RequestKey::kRelatedVariables);
    if (!related.empty()) {
        const FamilyRequest asked = FamilyOf(request, TestFamily::kRelated);
        size.AddTests(asked.testCount);
        size.AddFields(related.size());
        size.AddPairs(related.size(), asked.comparedTests);
        size.AddSteps(related.size(), asked.steppedTests);
        if (asked.hasSquare) size.AddSquare(size.CategoriesOf(related.front()));
    }

    const std::vector<std::string> groups = TextsUnder(request, RequestKey::kGroupVariable);
    const std::size_t independent = TextsUnder(request, RequestKey::kIndependentVariables).size();
    if (independent > 0 && !groups.empty()) {
        const FamilyRequest asked = FamilyOf(request, TestFamily::kIndependent);
        size.AddTests(independent * asked.testCount);
        size.AddPairs(size.CategoriesOf(groups.front()), independent * asked.comparedTests);
        size.AddSteps(size.CategoriesOf(groups.front()), independent * asked.steppedTests);
    }
    size.Check(source, limit);
}

void FailForMemory(const std::string& source, double bytes, const std::string& needs, std::size_t limit) {
    throw InputError(source + ": may take " + ShownBytes(bytes) + " of memory (" + needs + "); expected at most " +
                     ShownBytes(static_cast<double>(limit)) + ", or more told by --memory");
}

std::string ShownBytes(double bytes) {
    constexpr double kStep = 1024;
    constexpr const char* kUnits[] = {"bytes", "KiB", "MiB", "GiB", "TiB"};
    std::size_t unit = 0;
    while (bytes >= kStep && unit + 1 < std::size(kUnits)) {
        bytes /= kStep;
        ++unit;
    }
    char text[64];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, kUnits[unit]);
    return text;
}

}  // namespace tarn
