#include "host/report/JsonReport.h"

#include <optional>

#include "host/Json.h"
#include "host/report/JsonValues.h"
#include "host/report/RunRecord.h"
#include "host/report/SupplementJson.h"

namespace tarn {

namespace {

Json FieldJson(const ResultField& field) {
    Json json{{"name", field.name},
              {"label", TextOrNull(field.label)},
              {"level", field.level},
              {"data_type", field.dataType},
              {"categories", Json::array()}};
    for (const ResultCategory& category : field.categories) {
        const bool isText = field.dataType == "string";
        json["categories"].push_back({{"value", isText ? Json(category.value) : NumberJson(category.value)},
                                      {"label", TextOrNull(category.label)}});
    }
    return json;
}

Json TableJson(const ResultTable& table) {
    Json json{{"name", table.name}};
    if (table.isSimple) {
        json["line_names"] = table.lineNames;
        json["column_names"] = table.columnNames;
        json["lines"] = Json::array();
        for (const auto& line : table.lines) {
            Json values = Json::array();
            ForEachInList(line, [&](std::string_view value) { values.push_back(NumberJson(std::string(value))); });
            json["lines"].push_back(values);  // a copy, without the room to grow in: tables can be large
        }
        return json;
    }
    json["rows"] = Json::object();
    for (const auto& [name, value] : table.rows) json["rows"][name] = NumberJson(value);
    json["tables"] = Json::array();
    for (const ResultTable& inner : table.tables) json["tables"].push_back(TableJson(inner));
    return json;
}

Json StatisticsJson(const TestReading& reading) {
    Json sets = Json::array();
    for (const StatisticSet& set : reading.statistics) {
        Json json{{"name", TextOrNull(set.name)},
                  {"label", TextOrNull(set.label)},
                  {"statistic", NumberJson(set.statistic)},
                  {"standard_error", NumberJson(set.standardError)},
                  {"standardized", NumberJson(set.standardized)},
                  {"df", NumberJson(set.df)},
                  {"p_values", Json::array()}};
        for (const PValue& p : set.pValues) {
            json["p_values"].push_back({{"kind", NameOf(p.kind)},
                                        {"tails", p.tails},
                                        {"statistic", NumberJson(set.StatisticOf(p))},
                                        {"value", NumberJson(p.value)},
                                        {"is_lower_bound", p.isBound},
                                        {"decides", p.decides}});
        }
        sets.push_back(std::move(json));
    }
    return sets;
}

Json FiguresJson(const std::vector<Figure>& figures) {
    Json json = Json::object();
    for (const Figure& figure : figures) json[figure.key] = NumberJson(figure.value);
    return json;
}

Json ComparisonsJson(const TestReading& reading) {
    Json json{{"pairs_method", TextOrNull(reading.pairsMethod)},
              {"pairs", Json::array()},
              {"subsets_method", TextOrNull(reading.subsetsMethod)},
              {"subsets", Json::array()}};
    for (const PairComparison& pair : reading.pairs) {
        json["pairs"].push_back({{"first", pair.first},
                                 {"second", pair.second},
                                 {"statistic", NumberJson(pair.statistic)},
                                 {"standard_error", NumberJson(pair.standardError)},
                                 {"standardized", NumberJson(pair.standardized)},
                                 {"p", NumberJson(pair.p)},
                                 {"adjusted_p", NumberJson(pair.adjustedP)}});
    }
    for (const HomogeneousSubset& subset : reading.subsets) {
        json["subsets"].push_back({{"members", subset.members},
                                   {"statistic", NumberJson(subset.statistic)},
                                   {"p", NumberJson(subset.p)},
                                   {"adjusted_p", NumberJson(subset.adjustedP)}});
    }
    return json;
}

Json LimitsJson(const TestReading& reading, const MessageCatalogue& texts) {
    Json json = Json::array();
    for (const EngineLimit* limit : reading.limits) {
        const std::string* const text = texts.Limit(limit->key);
        json.push_back({{"key", limit->key}, {"touches", Json::array()}, {"text", text ? Json(*text) : Json(nullptr)}});
        for (const Quantity quantity : limit->quantities) json.back()["touches"].push_back(NameOf(quantity));
    }
    return json;
}

Json ScalesJson(const TestReading& reading) {
    Json json = Json::array();
    for (const Scale& scale : reading.scales) {
        Json scores = Json::array();
        for (const std::string& score : scale.scores) scores.push_back(NumberJson(score));
        json.push_back({{"field", scale.field}, {"categories", scale.categories}, {"scores", std::move(scores)}});
    }
    return json;
}

Json ExplanationStepJson(const ExplanationStep& step) {
    return {{"name", step.name},
            {"formula", step.formula},
            {"numbers", TextOrNull(step.numbers)},
            {"value", NumberJson(step.value)},
            {"in_result", NumberJson(step.document)}};
}

Json ExplanationTableJson(const ExplanationTable& table) {
    Json columns = Json::array();
    for (const ExplanationTable::Column& column : table.columns) columns.push_back(column.title);
    return {{"title", table.title}, {"columns", columns}, {"rows", table.rows}};
}

/// The steps, what they begin with, and what there is to say of them.
void AddExplanation(const TestExplanation& explanation, Json& json) {
    json["explanation"] = Json::array();
    json["explanation_tables"] = Json::array();
    for (const ExplanationStep& step : explanation.steps) json["explanation"].push_back(ExplanationStepJson(step));
    for (const auto* tables : {&explanation.tables, &explanation.comparisons}) {
        for (const ExplanationTable& table : *tables) json["explanation_tables"].push_back(ExplanationTableJson(table));
    }
    json["explanation_notes"] = explanation.notes;
    json["explanation_agrees"] = explanation.agrees;
}

Json AdjustedJson(const std::optional<TestFamilyPValues::Adjusted>& adjusted) {
    if (!adjusted) return nullptr;
    return {{"holm", adjusted->holm}, {"benjamini_hochberg", adjusted->benjaminiHochberg}};
}

Json TestJson(const TestResult& test, const TestReading& reading,
              const std::optional<TestFamilyPValues::Adjusted>& adjusted, const MessageCatalogue& texts) {
    const TestTexts* const about = texts.Test(test.name);
    Json json{{"test", test.name},
              {"name", about == nullptr ? Json(nullptr) : Json(about->name)},
              {"title", reading.title},
              {"family", reading.family},
              {"fields", reading.fields},
              {"group", TextOrNull(reading.group)},
              {"condition", {{"key", test.conditionKey}, {"parameters", test.parameters}, {"text", reading.statement}}},
              {"decision", TextOrNull(reading.decision)},
              {"method", TextOrNull(reading.method)},
              {"arithmetic", TextOrNull(test.arithmetic)},
              {"n", NumberJson(reading.n)},
              {"n_total", NumberJson(reading.totalN)},
              {"direction", TextOrNull(reading.direction.Text())},
              {"scales", ScalesJson(reading)},
              {"adjusted_p", AdjustedJson(adjusted)},
              {"statistics", StatisticsJson(reading)},
              {"intervals", Json::array()},
              {"figures", FiguresJson(reading.figures)},
              {"samples", Json::array()},
              {"comparisons", ComparisonsJson(reading)},
              {"supplement", SupplementJson(reading.supplement)},
              {"messages", Json::array()},
              {"remarks", reading.remarks},
              {"limits", LimitsJson(reading, texts)},
              {"tables", Json::array()}};
    for (const Interval& interval : reading.intervals) {
        json["intervals"].push_back({{"method", TextOrNull(interval.method)},
                                     {"estimate", NumberJson(interval.estimate)},
                                     {"lower", NumberJson(interval.lower)},
                                     {"upper", NumberJson(interval.upper)}});
    }
    for (const Sample& sample : reading.samples) {
        json["samples"].push_back({{"name", sample.name}, {"figures", FiguresJson(sample.figures)}});
    }
    for (std::size_t i = 0; i < test.messages.size(); ++i) {
        const ResultMessage& message = test.messages[i];
        json["messages"].push_back({{"code", message.code},
                                    {"kind", message.kind},
                                    {"parameters", message.parameters},
                                    {"text", reading.notes[i].text}});
        for (const auto& [name, value] : message.named) json["messages"].back()["named"][name] = value;
    }
    for (const ResultTable& table : test.content.tables) json["tables"].push_back(TableJson(table));
    if (reading.explanation) AddExplanation(*reading.explanation, json);
    return json;
}

}  // namespace

std::string JsonReport(const ResultReading& result, const MessageCatalogue& texts,
                       const std::vector<std::string>& notes) {
    return Written(JsonOf(result, texts, notes));
}

std::string Written(const Json& json) {
    return json.dump(2) + "\n";
}

Json JsonOf(const ResultReading& result, const MessageCatalogue& texts, const std::vector<std::string>& notes) {
    const ResultDocument& document = result.document;
    Json json{{"format", "tarn-result-2"},
              {"application", {{"name", document.application}, {"version", TextOrNull(document.applicationVersion)}}},
              {"significance_level", NumberJson(document.sigLevel)},
              {"confidence_level", NumberJson(document.confidenceLevel)},
              {"missing", document.missingTreatment},
              {"arithmetic", TextOrNull(std::string(NameOf(document.arithmetic)))},
              {"counts", Json::object()},
              {"notes", notes},
              {"fields", Json::array()},
              {"tests", Json::array()},
              {"descriptives", Json::array()}};
    for (const auto& [name, count] : document.counts) json["counts"][name] = NumberJson(count);
    for (const ResultField& field : document.fields) json["fields"].push_back(FieldJson(field));
    for (std::size_t i = 0; i < result.tests.size(); ++i) {
        json["tests"].push_back(TestJson(document.tests[i], result.tests[i], result.family.tests[i], texts));
    }
    for (const ResultTable& table : document.descriptives) {
        const ResultField* const field = document.FieldAt(table.Value("varIndex"));
        Json entry{{"field", field ? Json(field->name) : Json(nullptr)}};
        entry.update(TableJson(table));
        json["descriptives"].push_back(std::move(entry));
    }
    const std::string arithmetic(NameOf(document.arithmetic));
    json["record"] = result.record ? RecordJson(*result.record, arithmetic) : Json(nullptr);
    return json;
}

}  // namespace tarn
