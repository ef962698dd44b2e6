#pragma once

#include "platform/hx/HXDocuments.h"

/// The names of the execution requirements document.
namespace HxCppHelperV1 {

namespace XMLElements {
inline constexpr const char* Execution = HX_EXECUTION;
inline constexpr const char* Operation = HX_OPERATION;
inline constexpr const char* Parameters = HX_PARAMETERS;
inline constexpr const char* Parameter = HX_PARAMETER;
inline constexpr const char* ListValue = HX_LIST_VALUE;
inline constexpr const char* Value = HX_VALUE;
inline constexpr const char* StructuredValue = HX_STRUCTURED_VALUE;
inline constexpr const char* Attribute = HX_ATTRIBUTE;
}  // namespace XMLElements

namespace XMLAttributes {
inline constexpr const char* Id = HX_OPERATION_ID;
inline constexpr const char* ComponentId = HX_COMPONENT_ID;
inline constexpr const char* ModuleId = HX_MODULE_ID;
inline constexpr const char* InputIds = HX_INPUT_IDS;
inline constexpr const char* DependencyIds = HX_DEPENDENCY_IDS;
inline constexpr const char* Name = HX_NAME;
inline constexpr const char* Value = HX_VALUE_OF;
}  // namespace XMLAttributes

namespace XMLEntities {
inline constexpr const char* MissingID = HX_MISSING_VALUES_COMPONENT;
inline constexpr const char* MissingModuleID = HX_MISSING_VALUES_MODULE;
inline constexpr const char* ExcludeUMissField = HX_EXCLUDE_USER_MISSING;
inline constexpr const char* WeightFeild = HX_WEIGHT_FIELD;
inline constexpr const char* ListwiseDelete = HX_LISTWISE_DELETE;
inline constexpr const char* FreqWeightAdj = HX_WEIGHT_ADJUSTMENT;
inline constexpr const char* Round = HX_ROUND;
inline constexpr const char* EncodingID = HX_ENCODING_COMPONENT;
inline constexpr const char* EncodingModuleID = HX_ENCODING_MODULE;
inline constexpr const char* RequiredFields = HX_REQUIRED_FIELDS;
inline constexpr const char* Field_Name = HX_FIELD_NAME_ATTRIBUTE;
inline constexpr const char* CatEncode = HX_ENCODING;
inline constexpr const char* None = HX_ENCODING_NONE;
inline constexpr const char* Ordinal = HX_ENCODING_ORDINAL;
inline constexpr const char* Nominal = HX_ENCODING_NOMINAL;
inline constexpr const char* Rename = HX_RENAME;
}  // namespace XMLEntities

}  // namespace HxCppHelperV1
