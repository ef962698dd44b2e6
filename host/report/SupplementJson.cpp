#include "host/report/SupplementJson.h"

#include "host/report/JsonValues.h"

namespace tarn {

namespace {

Json SampleJson(const SampleSummary& sample) {
    return {{"name", sample.name},
            {"n", NumberJson(sample.n)},
            {"missing", NumberJson(sample.missing)},
            {"first_quartile", NumberJson(sample.firstQuartile)},
            {"median", NumberJson(sample.median)},
            {"third_quartile", NumberJson(sample.thirdQuartile)},
            {"median_lower", NumberJson(sample.medianLower)},
            {"median_upper", NumberJson(sample.medianUpper)}};
}

Json EffectJson(const EffectSize& effect) {
    return {{"key", effect.key},
            {"label", effect.label},
            {"first", TextOrNull(effect.first)},
            {"second", TextOrNull(effect.second)},
            {"value", NumberJson(effect.value)},
            {"lower", NumberJson(effect.lower)},
            {"upper", NumberJson(effect.upper)},
            {"method", TextOrNull(effect.method)}};
}

Json PValueJson(const SuppliedPValue& p) {
    return {{"kind", p.kind},
            {"alternative", p.alternative},
            {"claim", TextOrNull(p.claim)},
            {"statistic", NumberJson(p.statistic)},
            {"standardized", NumberJson(p.standardized)},
            {"value", NumberJson(p.value)},
            {"lower", NumberJson(p.lower)},
            {"upper", NumberJson(p.upper)},
            {"method", TextOrNull(p.method)}};
}

}  // namespace

Json SupplementJson(const Supplement& supplement) {
    if (supplement.IsEmpty()) return nullptr;
    Json json{{"samples", Json::array()},
              {"effects", Json::array()},
              {"p_values", Json::array()},
              {"adjustment", TextOrNull(supplement.adjustment)},
              {"adjusted_p", NumberJson(supplement.adjustedP)},
              {"adjusted_pairs", Json::array()},
              {"letters", Json::object()},
              {"call", TextOrNull(supplement.call)},
              {"remarks", supplement.remarks},
              {"conclusion", TextOrNull(supplement.conclusion)}};
    for (const SampleSummary& sample : supplement.samples) json["samples"].push_back(SampleJson(sample));
    for (const EffectSize& effect : supplement.effects) json["effects"].push_back(EffectJson(effect));
    for (const SuppliedPValue& p : supplement.pValues) json["p_values"].push_back(PValueJson(p));
    for (const Number& p : supplement.adjustedPairs) json["adjusted_pairs"].push_back(NumberJson(p));
    for (const SampleLetters& letters : supplement.letters) json["letters"][letters.name] = letters.letters;
    return json;
}

}  // namespace tarn
