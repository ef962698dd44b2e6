#include "python/src/Request.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "host/JsonDocument.h"

namespace tarn {

namespace {

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

std::vector<FieldOrder> ReadOrders(const Json& json) {
    std::vector<FieldOrder> orders;
    for (const auto& [field, categories] : json.items()) {
        orders.push_back({field, categories.get<std::vector<std::string>>()});
    }
    return orders;
}

/// An object of a text for each field.
std::vector<FieldWord> ReadFieldWords(const Json& json, const char* name) {
    std::vector<FieldWord> words;
    const auto found = json.find(name);
    if (found == json.end()) return words;
    for (const auto& [field, word] : found->items()) words.push_back({field, word.get<std::string>()});
    return words;
}

AnalysisOptions ReadAnalysisOptions(const Json& json) {
    const Arguments arguments(json);
    AnalysisOptions options;
    arguments.Take("one_sample", options.oneSample);
    arguments.Take("related", options.related);
    arguments.Take("independent", options.independent);
    arguments.Take("group", options.group);
    arguments.Take("tests", options.tests);
    arguments.Take("compare", options.compare);
    arguments.Take("against", options.against);
    arguments.Take("test_value", options.testValue);
    arguments.Take("cut_point", options.cutPoint);
    arguments.Take("cut_at_mean", options.cutAtMean);
    arguments.Take("probability", options.probability);
    arguments.Take("success", options.success);
    arguments.Take("distribution", options.distributions);
    arguments.Take("mean", options.mean);
    arguments.Take("sd", options.standardDeviation);
    arguments.Take("min", options.minimum);
    arguments.Take("max", options.maximum);
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
        if (name == "order") options.orders = ReadOrders(value);
        if (name != "expected") continue;
        for (const auto& [category, share] : value.items()) {
            options.expected.push_back({category, share.get<double>()});
        }
    }
    return options;
}

AnalysisWords ReadWords(const Json& json) {
    const Arguments arguments(json);
    AnalysisWords words;
    arguments.Take("formula", words.formula);
    arguments.Take("where", words.where);
    arguments.Take("split", words.split);
    arguments.Take("within", words.within);
    arguments.Take("id", words.subject);
    words.references = ReadFieldWords(json, "reference");
    words.labels = ReadFieldWords(json, "label");
    return words;
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

LoadOptions ReadLoadOptions(const Json& json, const WordedAnalysis& words) {
    const Arguments arguments(json);
    LoadOptions load;
    arguments.Take("nominal", load.nominal);
    arguments.Take("ordinal", load.ordinal);
    arguments.Take("continuous", load.continuous);
    arguments.Take("weights", load.weightField);
    arguments.Take("threads", load.threads);
    arguments.Take("memory", load.memory);
    if (json.contains("order")) load.orders = ReadOrders(json["order"]);
    load.nominalByDefault = words.NominalByDefault();
    return load;
}

/// The columns that a request needs, where the names of its condition are the last ones among those of its words.
WantedColumns ColumnsOf(const Json& json, const WordedAnalysis& words, const LoadOptions& load) {
    std::vector<std::string> names = words.Names();
    std::vector<std::string> ofCondition;
    if (json.contains("where")) {
        ofCondition = Condition(json["where"].get<std::string>()).Names();
        names.resize(names.size() - ofCondition.size());
    }
    std::vector<std::string> exact;
    if (load.weightField) exact.push_back(*load.weightField);
    return {std::move(names), std::move(ofCondition), std::move(exact)};
}

}  // namespace

Request::Request(const std::string& json) : words_({}, {}) {
    const Json arguments = ParseJson(json, "request");
    supplement_ = ReadSupplementOptions(arguments);
    words_ = WordedAnalysis(ReadWords(arguments), ReadAnalysisOptions(arguments));
    load_ = ReadLoadOptions(arguments, words_);
    columns_ = ColumnsOf(arguments, words_, load_);
    isSplit_ = arguments.contains("split");
    // Neither changes what comes out.
    Json recorded = Json::object();
    for (const Json::Member& argument : arguments.items()) {
        if (argument.name != "threads" && argument.name != "memory") recorded[argument.name] = argument.value;
    }
    recorded_ = {{"command", "tarn.analyze"}, {"arguments", std::move(recorded)}};
}

std::vector<std::string> Request::Levels() const {
    std::vector<std::string> fields;
    for (const auto* list : {&load_.nominal, &load_.ordinal, &load_.continuous}) {
        fields.insert(fields.end(), list->begin(), list->end());
    }
    for (const FieldOrder& order : load_.orders) fields.push_back(order.field);
    return fields;
}

}  // namespace tarn
