#pragma once

#include <string>
#include <vector>

#include "contract/TARNPlanBuilder.h"
#include "platform/common/QKVarList.h"

/// The list of categories that an entry gives for a field, under "givenCategoryList".

/// The texts of the list; empty if there is none.
std::vector<std::string> ReadGivenCategories(const TARNPlanBuilder& builder);

/// Their indices in a categorical field, -1 for one that the field doesn't know. Categories of a field with numeric
/// categories are compared as numbers, so that "2.0" is 2.
std::vector<double> MapGivenCategories(const TARNPlanBuilder& builder, const QKVarList& varList, int field);

/// The texts of categories, joined as in a list.
std::string JoinCategoryTexts(const QKVarList& varList, int field, const std::vector<double>& categories);
