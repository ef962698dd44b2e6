#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/Json.h"
#include "host/engine/KnownKeys.h"

namespace tarn {

/// The engine's name of a test of a plan, which may have the name that `tarn tests` lists; a name that is neither comes
/// back as it is. Where the listed name stands for several tests the keys of `entry` say which is meant: a
/// "groupVariableName" independent samples, a list as "variableName" related ones, one text one sample. Throws an
/// `InputError` that names `source`, `path` and the names to use where they don't.
std::string PlanTestName(const std::string& name, const Json& entry, const std::string& source,
                         const std::string& path);

/// The tests that a name of `tarn tests` stands for, those of each distribution among them; none for any other name.
std::vector<const KnownTest*> TestsNamed(std::string_view name);

/// All names that a test of a plan may have.
std::vector<std::string_view> NamesOfPlanTests();

}  // namespace tarn
