#pragma once

#include <span>
#include <string_view>

#include "contract/TARNTestRow.h"

/// The plan builder of each test: a row for each setting name in the facts of the tests, in the order of dispatch.
std::span<const TARNTestRow> TestCatalog();

/// The row of a setting name, null for an unknown one. Borrowed for the life of the process.
const TARNTestRow* FindTest(std::string_view settingName);
