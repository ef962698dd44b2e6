#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

#include "tests/harness/Command.h"

/// JSON beside the schemas of docs/.
namespace report_test {

inline nlohmann::json SchemaOf(const std::string& name) {
    return nlohmann::json::parse(harness::ReadFile(harness::SourcePath("docs/" + name)));
}

/// Whether `document` is as that schema, which ships with the program, says.
inline testing::AssertionResult FitsTheSchema(const nlohmann::json& document,
                                              const std::string& name = "result.schema.json") {
    const nlohmann::json text = SchemaOf(name);
    // One schema may refer to another beside it.
    const auto fetch = [](const std::string& uri) -> const nlohmann::json* {
        return new nlohmann::json(SchemaOf(uri.substr(uri.rfind('/') + 1)));
    };
    const auto release = [](const nlohmann::json* fetched) { delete fetched; };
    valijson::Schema schema;
    valijson::SchemaParser().populateSchema<valijson::adapters::NlohmannJsonAdapter>(
        valijson::adapters::NlohmannJsonAdapter(text), schema, fetch, release);
    valijson::ValidationResults results;
    valijson::Validator validator;
    if (validator.validate(schema, valijson::adapters::NlohmannJsonAdapter(document), &results)) {
        return testing::AssertionSuccess();
    }
    testing::AssertionResult failure = testing::AssertionFailure();
    valijson::ValidationResults::Error error;
    while (results.popError(error)) {
        for (const std::string& place : error.context) failure << place;
        failure << ": " << error.description << "\n";
    }
    return failure;
}

}  // namespace report_test
