#pragma once

#include <string_view>

#include "platform/common/QKVarList.h"

/// The words by which a data dictionary of PMML 4.4 says what a field holds.
namespace FieldTypeText {

/// The attribute "dataType": dates and times have names of their own; else "string" or "double".
std::string_view DataType(const IQKVariable& field);

/// The attribute "optype": "continuous", "ordinal" or "categorical".
std::string_view OpType(const IQKVariable& field);

}  // namespace FieldTypeText
