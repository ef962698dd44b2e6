#include "host/engine/DataModelDocument.h"

#include <pugixml.hpp>

#include "host/NumberText.h"
#include "platform/hx/HXDocuments.h"
#include "runtime/common/XmlNodes.h"

namespace tarn {

namespace {

using XmlNodes::AppendElement;
using XmlNodes::AppendExactAttribute;

const char* LevelText(FieldLevel level) {
    switch (level) {
        case FieldLevel::kContinuous:
            return HX_LEVEL_CONTINUOUS;
        case FieldLevel::kNominal:
            return HX_LEVEL_NOMINAL;
        case FieldLevel::kOrdinal:
            return HX_LEVEL_ORDINAL;
    }
    return "";
}

/// Null for a field that is no date and no time.
const char* DateText(FieldType type) {
    switch (type) {
        case FieldType::kDate:
            return HX_DATE_TYPE_DATE;
        case FieldType::kTime:
            return HX_DATE_TYPE_TIME;
        case FieldType::kDateTime:
            return HX_DATE_TYPE_DATE_TIME;
        default:
            return nullptr;
    }
}

void AddUnlessEmpty(pugi::xml_node element, const char* name, const std::string& value) {
    if (!value.empty()) AppendExactAttribute(element, name, value.c_str());
}

void AddField(pugi::xml_node root, const PreparedField& prepared) {
    const Column& column = *prepared.column;
    pugi::xml_node field = AppendElement(root, HX_FIELD);
    AppendExactAttribute(field, HX_FIELD_NAME, prepared.name.c_str());
    AddUnlessEmpty(field, HX_FIELD_LABEL, column.title);
    AppendExactAttribute(field, HX_FIELD_STORAGE, column.IsText() ? HX_STORAGE_STRING : HX_STORAGE_NUMBER);
    AppendExactAttribute(field, HX_FIELD_LEVEL, LevelText(prepared.level));
    if (const char* dateType = DateText(column.type)) AppendExactAttribute(field, HX_FIELD_DATE_TYPE, dateType);
    if (prepared.isWeight) AppendExactAttribute(field, HX_FIELD_ROLE, HX_ROLE_FREQUENCY_WEIGHT);
    if (prepared.level == FieldLevel::kContinuous) return;
    for (const Category& category : column.categories) {
        pugi::xml_node element = AppendElement(field, HX_CATEGORY);
        const std::string value = column.IsText() ? category.text : ExactText(category.number);
        AppendExactAttribute(element, HX_CATEGORY_VALUE, value.c_str());
        AddUnlessEmpty(element, HX_CATEGORY_LABEL, category.label);
    }
}

void AddCounts(pugi::xml_node root, const RecordCounts& counts) {
    AppendExactAttribute(root, HX_TOTAL_COUNT, std::to_string(counts.totalCount).c_str());
    AppendExactAttribute(root, HX_TOTAL_FREQ, ExactText(counts.totalFreq).c_str());
    AppendExactAttribute(root, HX_DROPPED_COUNT, std::to_string(counts.droppedCount).c_str());
    AppendExactAttribute(root, HX_DROPPED_FREQ, ExactText(counts.droppedFreq).c_str());
    AppendExactAttribute(root, HX_BAD_WEIGHT_COUNT, std::to_string(counts.badWeightCount).c_str());
}

}  // namespace

std::string MakeDataModel(const Table& table) {
    pugi::xml_document document;
    const pugi::xml_node root = AppendElement(document, HX_DATA_MODEL_ROOT);
    for (std::size_t i = 0; i < table.ColumnCount(); ++i) {
        const Column& column = table.Columns()[i];
        AddField(root, {column.name, &column, column.level, static_cast<int>(i) == table.WeightIndex()});
    }
    return XmlNodes::TextOf(document);
}

std::string MakeDataModel(const PreparedData& data) {
    pugi::xml_document document;
    const pugi::xml_node root = AppendElement(document, HX_DATA_MODEL_ROOT);
    AddCounts(root, data.counts);
    for (const PreparedField& field : data.fields) AddField(root, field);
    return XmlNodes::TextOf(document);
}

}  // namespace tarn
