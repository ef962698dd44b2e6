#pragma once

#include <functional>
#include <memory>

#include "platform/common/QKVarList.h"
#include "platform/common/QKXML.h"
#include "support/UnivariateResults.h"

/// The "FieldInfos" element: for each field that the descriptive store knows a "FieldInfo" with its distribution.
/// The weight field and the case-ID field (an index of -1: there is none) are left out. `stop`, which may be empty, is
/// asked once for each field: true ends it with null.
std::unique_ptr<QKXML::XMLElement> MakeFieldInfos(const QKVarList& varList, const UnivariateResults& results,
                                                  int weightIndex, int caseIdIndex,
                                                  const std::function<bool()>& stop = {});
