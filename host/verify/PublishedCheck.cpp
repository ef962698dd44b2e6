#include "host/verify/PublishedCheck.h"

#include <algorithm>
#include <utility>

#include "host/ByteSource.h"
#include "host/InputError.h"
#include "host/TextList.h"
#include "host/table/TableReading.h"
#include "host/verify/Quantities.h"

namespace tarn {

namespace {

constexpr const char* kTable = "the data";

Table TableOf(const std::string& csv, const WordsRead& read, const WordedAnalysis& worded) {
    LoadOptions load = read.load;
    load.orders = read.analysis.orders;
    load.nominalByDefault = worded.NominalByDefault();
    load.excludeUserMissing = !read.analysis.includeUserMissing;
    return ReadTable(ByteSource::FromMemory(kTable, csv), TableDescriptor(), std::move(load), ReadingOptions());
}

/// The error of a significance that is one minus a distribution function.
double AllowanceOf(const Expectation& expected, ArithmeticMode arithmetic) {
    constexpr double kErrorOfComplement = 2e-16;
    const bool isSignificance = expected.quantity == "p" || expected.quantity.starts_with("p ");
    return arithmetic == ArithmeticMode::kAsDefined && isSignificance ? kErrorOfComplement : 0;
}

ComparedNumber ComparedOf(const Expectation& expected, const TestReading& test, ArithmeticMode arithmetic,
                          const std::string& place) {
    const PrintedNumber& wanted = expected.Wanted(arithmetic);
    ComparedNumber compared{&expected, &wanted, QuantityOf(test, expected.quantity, expected.of, place), {}};
    compared.agreement = Compare(wanted, compared.ours, AllowanceOf(expected, arithmetic));
    compared.isNeedlesslyExcused = expected.Differs() && Compare(expected.printed, compared.ours).agrees;
    return compared;
}

}  // namespace

bool CheckedCase::IsRight() const {
    return mistake.empty() && std::ranges::all_of(numbers, &ComparedNumber::IsRight);
}

ResultReading RunWords(const std::string& csv, const WordsRead& words, const AnalysisEnvironment& environment) {
    WordedAnalysis worded(words.words, words.analysis);
    std::vector<std::string> notes;
    AnalysisPart part = std::move(worded.PartsOf(TableOf(csv, words, worded), words.levels, notes).front());
    PrepareTable(part.table, part.options);
    AnalysisOutcome outcome = Analyze(part.table, part.options, environment);
    if (!outcome.succeeded) throw InputError(JoinList(outcome.remarks, "; "));
    ResultReading result = ReadAnalysis(std::move(outcome.document), part.options, environment);
    SupplyFigures(result, part.table, part.options, words.supplement, environment);
    return result;
}

const TestReading* FindTest(const ResultReading& result, const std::string& name) {
    const auto found = std::ranges::find(result.tests, name, &TestReading::name);
    return found == result.tests.end() ? nullptr : &*found;
}

CheckedCase CheckCase(const ReferenceCase& reference, ArithmeticMode arithmetic, const WordReader& readWords,
                      const AnalysisEnvironment& environment) {
    CheckedCase checked{&reference, {}, {}};
    try {
        WordsRead words = readWords(reference.request);
        words.analysis.asDefined = arithmetic == ArithmeticMode::kAsDefined;
        const ResultReading result = RunWords(reference.Csv(), words, environment);
        const TestReading* const test = FindTest(result, reference.test);
        if (test == nullptr) throw InputError("its request makes no " + reference.test);
        for (const Expectation& expected : reference.expectations) {
            checked.numbers.push_back(ComparedOf(expected, *test, arithmetic, reference.name));
        }
    } catch (const InputError& mistake) {
        checked.mistake = mistake.what();
    }
    return checked;
}

}  // namespace tarn
