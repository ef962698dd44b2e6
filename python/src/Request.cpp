#include "python/src/Request.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

namespace tarn {

namespace {

using Json = nlohmann::ordered_json;

/// The arguments of a call by their names.
class Arguments {
 public:
    explicit Arguments(const Json& json) : json_(json) {}

    template <typename Value>
    void Take(const char* name, Value& value) const {
        if (const auto found = json_.find(name); found != json_.end()) value = found->get<Value>();
    }
    template <typename Value>
    void Take(const char* name, std::optional<Value>& value) const {
        if (const auto found = json_.find(name); found != json_.end()) value = found->get<Value>();
    }
    /// A word, of which `valueOf` makes the value.
    template <typename Value, typename ValueOf>
    void TakeWord(const char* name, Value& value, ValueOf valueOf) const {
        if (const auto found = json_.find(name); found != json_.end()) value = valueOf(found->get<std::string>());
    }

 private:
    const Json& json_;
};

AnalysisOptions ReadAnalysisOptions(const Json& json) {
    const Arguments arguments(json);
    AnalysisOptions options;
    arguments.Take("one_sample", options.oneSample);
    arguments.Take("related", options.related);
    arguments.Take("independent", options.independent);
    arguments.Take("group", options.group);
    arguments.Take("tests", options.tests);
    arguments.Take("compare", options.compare);
    arguments.Take("test_value", options.testValue);
    arguments.Take("cut_point", options.cutPoint);
    arguments.Take("probability", options.probability);
    arguments.Take("success", options.success);
    arguments.Take("distribution", options.distributions);
    arguments.Take("outliers", options.outliers);
    arguments.Take("descending", options.descending);
    arguments.Take("alpha", options.alpha);
    arguments.Take("confidence", options.confidence);
    arguments.TakeWord("missing", options.listwise, [](const std::string& word) { return word == "listwise"; });
    arguments.Take("case_id", options.caseId);
    arguments.Take("brief", options.brief);
    arguments.Take("as_defined", options.asDefined);
    for (const auto& [name, value] : json.items()) {
        if (name == "one_sample") options.familyOrder.push_back(TestFamily::kOneSample);
        if (name == "related") options.familyOrder.push_back(TestFamily::kRelated);
        if (name == "independent") options.familyOrder.push_back(TestFamily::kIndependent);
        if (name != "order") continue;
        for (const auto& [field, categories] : value.items()) {
            options.orders.push_back({field, categories.get<std::vector<std::string>>()});
        }
    }
    return options;
}

SupplementOptions ReadSupplementOptions(const Json& json) {
    const Arguments arguments(json);
    SupplementOptions wanted;
    arguments.Take("exact", wanted.exact);
    arguments.Take("monte_carlo", wanted.draws);
    arguments.Take("seed", wanted.seed);
    arguments.TakeWord("alternative", wanted.alternative,
                       [](const std::string& word) { return AlternativeOf(word).value(); });
    arguments.Take("continuity", wanted.continuity);
    arguments.TakeWord("zeros", wanted.zeros, ZeroMethodOf);
    arguments.TakeWord("like", wanted.like, OtherSystemOf);
    arguments.TakeWord("adjust", wanted.adjustment, AdjustmentOf);
    return wanted;
}

LoadOptions ReadLoadOptions(const Json& json, const AnalysisOptions& analysis) {
    const Arguments arguments(json);
    LoadOptions load;
    arguments.Take("nominal", load.nominal);
    arguments.Take("ordinal", load.ordinal);
    arguments.Take("continuous", load.continuous);
    arguments.Take("weights", load.weightField);
    arguments.Take("threads", load.threads);
    load.orders = analysis.orders;
    if (!analysis.group.empty()) load.nominalByDefault = analysis.group;
    return load;
}

}  // namespace

std::vector<std::string> Request::Fields() const {
    std::vector<std::string> fields;
    const auto add = [&](const std::string& field) {
        if (!field.empty() && std::ranges::find(fields, field) == fields.end()) fields.push_back(field);
    };
    for (const auto* list : {&analysis.oneSample, &analysis.related, &analysis.independent}) {
        for (const std::string& field : *list) add(field);
    }
    add(analysis.group);
    add(analysis.caseId);
    add(load.weightField.value_or(""));
    return fields;
}

Request ReadRequest(const std::string& json) {
    const Json arguments = Json::parse(json);
    Request request;
    request.analysis = ReadAnalysisOptions(arguments);
    request.supplement = ReadSupplementOptions(arguments);
    request.load = ReadLoadOptions(arguments, request.analysis);
    return request;
}

}  // namespace tarn
