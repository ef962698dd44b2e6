#pragma once

#include <algorithm>
#include <functional>
#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/QKVecValue.h"
#include "tests/harness/TestRun.h"
#include "vocabulary/TestFacts.h"

/// Requests for every test of the catalogue, and random tables that they go with.
namespace harness {

using Rows = std::vector<std::vector<double>>;
using Names = std::vector<std::string>;

// ---- What is asked for ----

struct Entry {
    std::string name;
    std::string setting;
    QKSettings settings;
};
inline void PrintTo(const Entry& entry, std::ostream* out) {
    *out << entry.name;
}

class Entries {
 public:
    Entries() {
        for (const char* const field : {"x0", "x1"}) {
            Add(Tests::kRuns, field, [](QKSettings& entry) {
                entry.AddSetting("contVarClassFormation", "cutPointValue");
                entry.AddSetting("cutPointValue", 2.0);
            });
            Add(Tests::kWilcoxonOneSample, field, [](QKSettings& entry) {
                entry.AddSetting("userSpecifyTestValue", true);
                entry.AddSetting("testValue", 2.0);
            });
            Add(Tests::kBinomial, field, [](QKSettings& entry) {
                entry.AddSetting("contVarClassFormation", "sampleMidPoint");
                entry.AddSetting("testProbability", 0.5);
            });
            for (const std::string_view setting : Tests::kKolmogorovSmirnov.Settings()) {
                AddTo(std::string(setting), field, [](QKSettings& entry) { entry.AddSetting("isUseSample", true); });
            }
        }
        const auto ofData = [](QKSettings& entry) {
            entry.AddSetting("catVarClassFormation", "getFromData");
            entry.AddSetting("classFormation", "getFromData");
            entry.AddSetting("testProbability", 0.4);
            for (const char* const key : {"isDoClopperPearson", "isDoJeffreys", "isDoProfileLikelihood"}) {
                entry.AddSetting(key, true);
            }
        };
        for (const TestFacts* const test : {&Tests::kBinomial, &Tests::kProportionIntervals, &Tests::kRuns}) {
            Add(*test, "a", ofData);
        }
        Add(Tests::kChiSquare, "p", ofData);

        for (const TestFacts* const test : {&Tests::kSign, &Tests::kWilcoxonPairs, &Tests::kHodgesLehmannPairs}) {
            AddList(*test, {"x0", "x1"});
        }
        AddList(Tests::kMcNemar, {"a", "b"}, ofData);
        AddList(Tests::kMarginalHomogeneity, {"p", "q"});
        for (const char* const comparison : {"none", "pairWise", "stepWise"}) {
            const auto compare = [&](QKSettings& entry) {
                ofData(entry);
                entry.AddSetting("typeOfMultipleComparison", comparison);
            };
            AddList(Tests::kFriedman, {"x0", "x1", "x2", "x3"}, compare);
            AddList(Tests::kKendall, {"x0", "x1", "x2"}, compare);
            AddList(Tests::kFriedman, {"x0", "x1", "x2", "x3", "x4", "x5", "x6", "x7", "x8", "x9"}, compare);
            AddList(Tests::kCochran, {"a", "b", "c"}, compare);
            for (const TestFacts* const test : {&Tests::kKruskalWallis, &Tests::kJonckheereTerpstra, &Tests::kMedian}) {
                Add(*test, "x0", [&](QKSettings& entry) {
                    compare(entry);
                    entry.AddSetting("groupVariableName", "g");
                });
            }
        }
        for (const TestFacts* const test : {&Tests::kMannWhitney, &Tests::kKolmogorovSmirnovTwoSample,
                                            &Tests::kWaldWolfowitz, &Tests::kMoses, &Tests::kHodgesLehmannGroups}) {
            Add(*test, "x0", [](QKSettings& entry) { entry.AddSetting("groupVariableName", "a"); });
            Add(*test, "x1", [](QKSettings& entry) { entry.AddSetting("groupVariableName", "b"); });
        }
        for (const TestFacts* const test : {&Tests::kMannWhitney, &Tests::kMoses}) {
            Add(*test, "x1", [](QKSettings& entry) {
                entry.AddSetting("groupVariableName", "g");
                entry.AddSetting("userSpecifyGroupList", true);
                AddVecSetting(entry, "group1List", std::vector<double>{1, 4}, false);
                AddVecSetting(entry, "group2List", std::vector<double>{2}, false);
            });
        }
    }

    std::vector<Entry> entries;

 private:
    using Fill = std::function<void(QKSettings&)>;

    void Add(const TestFacts& test, const std::string& field, const Fill& fill) {
        AddTo(std::string(test.Setting()), field, fill);
    }
    void AddTo(const std::string& setting, const std::string& field, const Fill& fill) {
        Entry entry{Named(setting), setting, {}};
        entry.settings.AddSetting("variableName", field);
        fill(entry.settings);
        entries.push_back(std::move(entry));
    }
    void AddList(const TestFacts& test, const Names& fields, const Fill& fill = {}) {
        const std::string setting(test.Setting());
        Entry entry{Named(setting), setting, {}};
        AddVecSetting(entry.settings, "variableName", fields, false);
        if (fill) fill(entry.settings);
        entries.push_back(std::move(entry));
    }
    std::string Named(const std::string& setting) { return setting + "_" + std::to_string(entries.size()); }
};

inline const std::vector<Entry>& AllEntries() {
    static const Entries all;
    return all.entries;
}

// ---- The tables ----

struct Scene {
    std::string name;
    std::size_t records;
    int steps;       ///< how many different values a continuous field has; 0: all differ
    double missing;  ///< the share of the cells that are missing
    bool hasWeight;
    bool analysisMissing = true;
    bool hasEmptyCategory = false;  ///< of g, in front of others and behind them
};

inline void PrintTo(const Scene& scene, std::ostream* out) {
    *out << scene.name;
}

inline const Scene kScenes[] = {
    {"few", 7, 4, 0, false},
    {"ties", 300, 6, 0, false},
    {"continuous", 300, 0, 0, false},
    {"missing", 400, 5, 0.15, false},
    {"listwise", 400, 0, 0.02, false, false},
    {"weights", 250, 7, 0.1, true},
    {"long", 70'000, 40, 0.01, true},
    {"gaps", 300, 9, 0.05, true, true, true},
};

/// x0 .. x9 continuous; a, b, c of two categories; p, q of three; g of five; w the weight.
struct Data {
    Data(const Scene& scene, unsigned seed) : random(seed) {
        for (int i = 0; i < 10; ++i) fields.Continuous("x" + std::to_string(i));
        for (const char* const name : {"a", "b", "c"}) fields.Numeric(name, {1, 2});
        for (const char* const name : {"p", "q"}) fields.Numeric(name, {1, 2, 3});
        fields.Numeric("g", {1, 2, 3, 4, 5});
        if (scene.hasWeight) fields.Weight("w");
        for (std::size_t i = 0; i < scene.records; ++i) rows.push_back(MakeRow(scene));
    }

    std::vector<double> MakeRow(const Scene& scene) {
        std::vector<double> row;
        const auto isMissing = [&] { return std::uniform_real_distribution<>()(random) < scene.missing; };
        for (int i = 0; i < 10; ++i) {
            const double shift = 0.3 * i;
            const double value = scene.steps > 0
                                     ? static_cast<double>(random() % static_cast<unsigned>(scene.steps)) + i % 2
                                     : std::normal_distribution<>(shift)(random);
            row.push_back(isMissing() ? harness::kNone : value == 0 && random() % 2 == 0 ? -0.0 : value);
        }
        for (const unsigned categories : {2U, 2U, 2U, 3U, 3U, 5U}) {
            row.push_back(isMissing() ? harness::kNoCategory : static_cast<double>(random() % categories));
        }
        // Of the five categories the second one and the last one stay empty.
        if (scene.hasEmptyCategory && (row.back() == 1 || row.back() == 4)) row.back() = 2;
        constexpr double kWeights[] = {1, 2, 3, 0, 0.5, 1.75, 12};
        if (scene.hasWeight) row.push_back(isMissing() ? harness::kNone : kWeights[random() % std::size(kWeights)]);
        return row;
    }

    std::mt19937 random;
    harness::Fields fields;
    Rows rows;
};

}  // namespace harness
