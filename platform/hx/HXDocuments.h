#pragma once

/// The literal names of the documents that cross the component boundary. Their shapes: docs/host-interface.md.

// ---- The settings document, given by the host ----

#define HX_SETTINGS_ROOT "Settings"
#define HX_SETTING "Setting"
#define HX_SETTING_NAME "name"
#define HX_SETTING_KIND "kind"
/// A setting's own type text; left out where it is empty.
#define HX_SETTING_TYPE "type"
#define HX_SETTING_VALUE "value"
/// An element of a vector of texts or numbers, with HX_SETTING_VALUE.
#define HX_SETTING_ELEMENT "Element"
/// An element of a vector of nested lists, with HX_SETTING children.
#define HX_SETTING_LIST "List"

#define HX_KIND_STRING "string"
#define HX_KIND_DOUBLE "double"
#define HX_KIND_INT "int"
#define HX_KIND_BOOL "bool"
#define HX_KIND_LIST "list"
#define HX_KIND_STRING_VECTOR "stringVector"
#define HX_KIND_DOUBLE_VECTOR "doubleVector"
#define HX_KIND_INT_VECTOR "intVector"
#define HX_KIND_LIST_VECTOR "listVector"

// ---- The data model, given by the host ----

#define HX_DATA_MODEL_ROOT "DataModel"
#define HX_TOTAL_COUNT "totalCount"
#define HX_TOTAL_FREQ "totalFreq"
#define HX_DROPPED_COUNT "droppedCount"
#define HX_DROPPED_FREQ "droppedFreq"
#define HX_BAD_WEIGHT_COUNT "badWeightCount"

#define HX_FIELD "Field"
#define HX_FIELD_NAME "name"
#define HX_FIELD_LABEL "label"
#define HX_FIELD_STORAGE "storage"
#define HX_FIELD_LEVEL "level"
#define HX_FIELD_DATE_TYPE "dateType"
#define HX_FIELD_ROLE "role"

#define HX_STORAGE_NUMBER "number"
#define HX_STORAGE_STRING "string"
#define HX_LEVEL_CONTINUOUS "continuous"
#define HX_LEVEL_NOMINAL "nominal"
#define HX_LEVEL_ORDINAL "ordinal"
/// Neither categorical nor anything that a test takes.
#define HX_LEVEL_OTHER "other"
#define HX_DATE_TYPE_DATE "date"
#define HX_DATE_TYPE_TIME "time"
#define HX_DATE_TYPE_DATE_TIME "dateTime"
#define HX_ROLE_FREQUENCY_WEIGHT "frequencyWeight"

#define HX_CATEGORY "Category"
#define HX_CATEGORY_VALUE "value"
#define HX_CATEGORY_LABEL "label"

#define HX_TRUE "true"
#define HX_FALSE "false"

// ---- The execution requirements, given by the component ----

#define HX_EXECUTION "Execution"
#define HX_OPERATION "Operation"
#define HX_OPERATION_ID "id"
#define HX_COMPONENT_ID "componentId"
#define HX_MODULE_ID "moduleId"
#define HX_INPUT_IDS "inputIds"
#define HX_DEPENDENCY_IDS "dependencyIds"
#define HX_PARAMETERS "Parameters"
#define HX_PARAMETER "Parameter"
#define HX_LIST_VALUE "ListValue"
#define HX_VALUE "Value"
#define HX_STRUCTURED_VALUE "StructuredValue"
#define HX_ATTRIBUTE "Attribute"
#define HX_NAME "name"
#define HX_VALUE_OF "value"

/// The operation that drops records and weighs them.
#define HX_MISSING_VALUES_COMPONENT "MissingValues"
#define HX_MISSING_VALUES_MODULE "DataPreparation"
#define HX_EXCLUDE_USER_MISSING "ExcludeUserMissing"
#define HX_WEIGHT_FIELD "WeightField"
#define HX_LISTWISE_DELETE "ListwiseDelete"
#define HX_WEIGHT_ADJUSTMENT "Adjustment"
#define HX_ROUND "round"

/// The operation that gives each field the form in which the component reads it.
#define HX_ENCODING_COMPONENT "FieldEncoding"
#define HX_ENCODING_MODULE "DataPreparation"
#define HX_REQUIRED_FIELDS "RequiredFields"
#define HX_FIELD_NAME_ATTRIBUTE "FieldName"
#define HX_ENCODING "Encoding"
#define HX_ENCODING_NONE "none"
#define HX_ENCODING_ORDINAL "ordinal"
#define HX_ENCODING_NOMINAL "nominal"
#define HX_RENAME "Rename"

// ---- The messages of a component ----

#define HX_MESSAGES_ROOT "Messages"
#define HX_MESSAGE "Message"
#define HX_MESSAGE_TYPE "type"
#define HX_MESSAGE_CODE "code"
#define HX_MESSAGE_PARAMETER "Parameter"
#define HX_MESSAGE_PARAMETER_VALUE "value"
#define HX_TYPE_WARNING "warning"
#define HX_TYPE_ERROR "error"

// ---- The result document, stored in a container ----

#define HX_RESULT_CONTAINER "Tabulon"
#define HX_RESULT_FILE_NAME "TARNtabulon.xml"
#define HX_RESULT_MIME_TYPE "application/vnd.zomr.stat+xml"
