#include "host/engine/Requirements.h"

#include <pugixml.hpp>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "platform/hx/HXDocuments.h"
#include "runtime/common/XmlNodes.h"

namespace tarn {

namespace {

[[noreturn]] void Refuse(const std::string& what) {
    throw std::runtime_error("the engine's execution requirements ask for what this host can't do: " + what);
}

std::vector<std::string> ListOf(const pugi::xml_node& parameter) {
    std::vector<std::string> values;
    for (const pugi::xml_node& value : parameter.child(HX_LIST_VALUE).children(HX_VALUE)) {
        values.emplace_back(value.attribute(HX_VALUE_OF).value());
    }
    return values;
}

/// The value of an attribute of a structured value; empty for none.
std::string MemberOf(const pugi::xml_node& structured, const char* name) {
    const pugi::xml_node member = structured.find_child_by_attribute(HX_ATTRIBUTE, HX_NAME, name);
    return member.attribute(HX_VALUE_OF).value();
}

FieldEncoding EncodingOf(const std::string& text) {
    if (text == HX_ENCODING_NONE) return FieldEncoding::kNone;
    if (text == HX_ENCODING_NOMINAL) return FieldEncoding::kNominal;
    if (text == HX_ENCODING_ORDINAL) return FieldEncoding::kOrdinal;
    Refuse("the encoding \"" + text + "\"");
}

void ReadMissingValues(const pugi::xml_node& operation, Requirements& requirements) {
    for (const pugi::xml_node& parameter : operation.child(HX_PARAMETERS).children(HX_PARAMETER)) {
        const std::string name = parameter.attribute(HX_NAME).value();
        if (name == HX_EXCLUDE_USER_MISSING) {
            requirements.excludeUserMissing = ListOf(parameter);
        } else if (name == HX_LISTWISE_DELETE) {
            requirements.listwiseDelete = ListOf(parameter);
        } else if (name == HX_WEIGHT_FIELD) {
            const pugi::xml_node weight = parameter.child(HX_STRUCTURED_VALUE);
            requirements.weightField = MemberOf(weight, HX_FIELD_NAME_ATTRIBUTE);
            requirements.roundWeights = MemberOf(weight, HX_WEIGHT_ADJUSTMENT) == HX_ROUND;
        } else {
            Refuse("the parameter \"" + name + "\"");
        }
    }
}

void ReadEncodings(const pugi::xml_node& operation, Requirements& requirements) {
    std::set<std::pair<std::string, std::string>> known;
    for (const RequiredField& field : requirements.fields) known.emplace(field.name, field.rename);
    for (const pugi::xml_node& parameter : operation.child(HX_PARAMETERS).children(HX_PARAMETER)) {
        if (std::string_view(parameter.attribute(HX_NAME).value()) != HX_REQUIRED_FIELDS) continue;
        for (const pugi::xml_node& value : parameter.child(HX_LIST_VALUE).children(HX_STRUCTURED_VALUE)) {
            RequiredField field{MemberOf(value, HX_FIELD_NAME_ATTRIBUTE), EncodingOf(MemberOf(value, HX_ENCODING)),
                                MemberOf(value, HX_RENAME)};
            if (known.emplace(field.name, field.rename).second) requirements.fields.push_back(std::move(field));
        }
    }
}

}  // namespace

Requirements ReadRequirements(const std::string& document) {
    pugi::xml_document parsed;
    const bool isRead = XmlNodes::IsWellFormed(parsed.load_buffer(document.data(), document.size()));
    if (!isRead || !parsed.child(HX_EXECUTION)) {
        throw std::runtime_error("the engine's execution requirements are no document that this host can read");
    }
    Requirements requirements;
    for (const pugi::xml_node& operation : parsed.child(HX_EXECUTION).children(HX_OPERATION)) {
        const std::string component = operation.attribute(HX_COMPONENT_ID).value();
        if (component == HX_MISSING_VALUES_COMPONENT) {
            ReadMissingValues(operation, requirements);
        } else if (component == HX_ENCODING_COMPONENT) {
            ReadEncodings(operation, requirements);
        } else {
            Refuse("the operation \"" + component + "\"");
        }
    }
    return requirements;
}

}  // namespace tarn
