#pragma once

#include <memory>

#include "machine/WorkShare.h"
#include "platform/common/QKVarList.h"
#include "platform/common/QKXML.h"
#include "support/UnivariateResults.h"

/// The "FieldInfos" element: for each field that the descriptive store knows a "FieldInfo" with its distribution.
/// The weight field and the case-ID field (an index of -1: there is none) are left out. Null where the work was
/// stopped.
std::unique_ptr<QKXML::XMLElement> MakeFieldInfos(const QKVarList& varList, const UnivariateResults& results,
                                                  int weightIndex, int caseIdIndex, const WorkShare& work);
