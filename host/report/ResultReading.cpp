#include "host/report/ResultReading.h"

#include <cmath>
#include <utility>

#include "host/report/KnownValue.h"
#include "host/report/SampleReading.h"

namespace tarn {

namespace {

FieldReading ReadField(const ResultTable& descriptive, const ResultDocument& document, const MessageCatalogue& texts) {
    FieldReading reading;
    if (const ResultField* const field = document.FieldAt(descriptive.Value("varIndex"))) reading.field = field->name;
    for (const auto& [name, value] : descriptive.rows) {
        if (name != "varIndex") reading.figures.push_back({name, texts.Label(name), KnownValue(value)});
    }
    reading.histogram = ReadHistogram(descriptive);
    return reading;
}

}  // namespace

ResultReading ReadAll(ResultDocument document, const MessageCatalogue& texts) {
    ResultReading reading;
    reading.document = std::move(document);
    const ResultDocument& read = reading.document;
    reading.sigLevel = read.sigLevel;
    reading.confidenceLevel = read.confidenceLevel;
    reading.tests.reserve(read.tests.size());
    for (const TestResult& test : read.tests) reading.tests.push_back(ReadTest(test, read, texts));
    for (const ResultTable& descriptive : read.descriptives) {
        reading.fields.push_back(ReadField(descriptive, read, texts));
    }
    reading.family = AdjustTogether(reading.tests);
    return reading;
}

std::vector<double> ConclusivePValues(const ResultReading& result) {
    std::vector<double> pValues(result.tests.size(), std::nan(""));
    for (std::size_t i = 0; i < pValues.size(); ++i) {
        const auto& own = result.family.tests[i];
        const Number& chosen = result.tests[i].supplement.chosenP;
        if (own) pValues[i] = chosen.empty() ? own->p : chosen.value;
    }
    return pValues;
}

}  // namespace tarn
