#include "host/report/RunRecord.h"

#include "host/report/JsonValues.h"
#include "host/table/FieldDescriptor.h"

namespace tarn {

namespace {

Json CountOrNull(const std::optional<std::size_t>& count) {
    return count ? Json(*count) : Json(nullptr);
}

Json DataJson(const RunRecord& record) {
    Json json{{"file", TextOrNull(record.file)}, {"sha256", nullptr}, {"records", record.records}, {"fields", nullptr}};
    if (!record.data) return json;
    json["sha256"] = record.data->hash;
    json["fields"] = Json::array();
    for (const HashedField& field : record.data->fields) {
        json["fields"].push_back({{"name", field.name},
                                  {"values", NameOf(field.kind)},
                                  {"level", NameOf(field.level)},
                                  {"is_weight", field.isWeight},
                                  {"missing", field.missing},
                                  {"sha256", field.hash}});
    }
    return json;
}

Json WeightsJson(const std::optional<WeightCounts>& weights) {
    if (!weights) return nullptr;
    return {{"field", weights->field},
            {"rule", weights->rule == WeightRule::kRounded ? "rounded" : "cut"},
            {"missing", weights->missing},
            {"negative", weights->negative},
            {"zero", weights->zero + weights->vanished},
            {"changed", weights->changed}};
}

Json TestsJson(const RunRecord& record) {
    Json tests = Json::array();
    for (const RecordedTest& test : record.tests) {
        tests.push_back({{"test", test.name},
                         {"fields", test.fields},
                         {"group", TextOrNull(test.group)},
                         {"without_weight", test.withoutWeight},
                         {"missing", test.missing},
                         {"complete", test.complete}});
    }
    return tests;
}

}  // namespace

Json ProgramJson(const RunRecord& record) {
    Json json{{"version", record.version},
              {"commit", TextOrNull(record.commit)},
              {"libraries", Json::object()},
              {"request", record.request}};
    for (const auto& [name, version] : record.libraries) json["libraries"][name] = version;
    return json;
}

Json RecordJson(const RunRecord& record, const std::string& arithmetic) {
    Json json = ProgramJson(record);
    json["arithmetic"] = TextOrNull(arithmetic);
    json["data"] = DataJson(record);
    json["left_out"] = {{"of_records", record.selection.ofTable},
                        {"by_condition", CountOrNull(record.selection.byCondition)},
                        {"by_split", CountOrNull(record.selection.bySplit)},
                        {"without_subject_or_condition", CountOrNull(record.selection.placeless)},
                        {"weights", WeightsJson(record.weights)},
                        {"tests", TestsJson(record)}};
    return json;
}

}  // namespace tarn
