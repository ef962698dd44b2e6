#pragma once

#include <string_view>

#include "contract/TARNPlan.h"
#include "platform/common/QKSettings.h"

/// A plan builder: reads the entry of one requested test and gives the test to the plan.
using PlanFunction = void (*)(const QKSettings& entry, TARNPlan& plan);

/// One row of the dispatch table.
struct TARNTestRow {
    /// The name of the list-valued setting that asks for the test.
    std::string_view settingName;
    PlanFunction plan;
};

/// How a planner finds the test of a setting; null for an unknown one.
using TestFinder = const TARNTestRow* (*)(std::string_view settingName);
