#pragma once

#include <span>
#include <string_view>

#include "planning/contract/TARNPlan.h"
#include "platform/common/QKSettings.h"

/// A plan builder: reads the entry of one requested test and gives the test to the plan.
using PlanFunction = void (*)(const QKSettings& entry, TARNPlan& plan);

/// One row of the dispatch table.
struct TARNTestRow {
    /// The name of the list-valued setting that asks for the test.
    std::string_view settingName;
    PlanFunction plan;
};

/// The one list of the tests: a row for each setting name, in the order of dispatch.
std::span<const TARNTestRow> TestCatalog();

/// The row of a setting name, null for an unknown one. Borrowed for the life of the process.
const TARNTestRow* FindTest(std::string_view settingName);

/// How a planner finds the test of a setting: `FindTest`, or what stands in for it.
using TestFinder = const TARNTestRow* (*)(std::string_view settingName);
