#include "host/verify/FunctionCheck.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <span>
#include <string_view>

#include "host/ByteSource.h"
#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "host/NearestNames.h"
#include "host/NumberText.h"
#include "host/verify/JsonKeys.h"
#include "platform/common/QKDistFun.h"

namespace tarn {

namespace {

using QKMath::QKDistFun;

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// ---- The functions ----

using Arguments = std::span<const double>;

/// What a function with a status gives; no number where the status is one of a failure.
template <typename Function>
double Checked(const Function& function) {
    int status = 0;
    const double value = function(status);
    return status == 0 ? value : kNone;
}

struct NamedFunction {
    std::string_view name;
    std::size_t argumentCount;
    double (*function)(Arguments x);  ///< null for one that only the library has
};

constexpr std::string_view kKolmogorov = "Kolmogorov";

constexpr std::array kFunctions{
    NamedFunction{"CdfStdNorm", 1, [](Arguments x) { return QKDistFun::CdfStdNorm(x[0]); }},
    NamedFunction{"SfStdNorm", 1, [](Arguments x) { return QKDistFun::SfStdNorm(x[0]); }},
    NamedFunction{"IdfStdNorm", 1, [](Arguments x) { return QKDistFun::IdfStdNorm(x[0]); }},
    NamedFunction{"CdfChi", 2, [](Arguments x) { return QKDistFun::CdfChi(x[0], x[1]); }},
    NamedFunction{"SfChi", 2, [](Arguments x) { return QKDistFun::SfChi(x[0], x[1]); }},
    NamedFunction{"IdfChi", 2, [](Arguments x) { return QKDistFun::IdfChi(x[0], x[1]); }},
    NamedFunction{"IdfF", 3, [](Arguments x) { return QKDistFun::IdfF(x[0], x[1], x[2]); }},
    NamedFunction{"IdfBeta", 3, [](Arguments x) { return QKDistFun::IdfBeta(x[0], x[1], x[2]); }},
    NamedFunction{
        "CdfBin", 3,
        [](Arguments x) { return Checked([&](int& status) { return QKDistFun::CdfBin(x[0], x[1], x[2], status); }); }},
    NamedFunction{
        "SfBin", 3,
        [](Arguments x) { return Checked([&](int& status) { return QKDistFun::SfBin(x[0], x[1], x[2], status); }); }},
    NamedFunction{"CDFHyper", 4,
                  [](Arguments x) {
                      return Checked([&](int& status) { return QKDistFun::CDFHyper(x[0], x[1], x[2], x[3], status); });
                  }},
    NamedFunction{"SfHyper", 4,
                  [](Arguments x) {
                      return Checked([&](int& status) { return QKDistFun::SfHyper(x[0], x[1], x[2], x[3], status); });
                  }},
    NamedFunction{"zomrdnlgam", 1, [](Arguments x) { return QKDistFun::zomrdnlgam(x[0]); }},
    NamedFunction{kKolmogorov, 2, nullptr},
};

const NamedFunction* FindFunction(std::string_view name) {
    const auto found = std::ranges::find(kFunctions, name, &NamedFunction::name);
    return found == kFunctions.end() ? nullptr : &*found;
}

/// Kolmogorov's significance at z = sqrt(weight / cells) / 2: of `cells` values in the middles of as many parts of the
/// range from 0 to 1, each `weight` times, whose largest difference from the uniform distribution is 1 / (2 cells).
double KolmogorovByTest(Arguments x, const WordReader& readWords, const AnalysisEnvironment& environment) {
    const auto cells = static_cast<int>(x[0]);
    std::string csv = "value,weight\n";
    for (int i = 0; i < cells; ++i) csv += ExactText((i + 0.5) / cells) + "," + ExactText(x[1]) + "\n";
    const ResultReading result =
        RunWords(csv,
                 readWords({"--one-sample", "value", "--weight", "weight", "--tests", "kolmogorov-smirnov",
                            "--distribution", "uniform", "--min", "0", "--max", "1"}),
                 environment);
    const StatisticSet* const set = result.tests.empty() ? nullptr : result.tests.front().Leading();
    return set == nullptr || set->pValues.empty() ? kNone : set->pValues.front().value.value;
}

// ---- Reading ----

std::string NumberTextOf(const Json& cell, const std::string& place) {
    if (cell.is_string() && !ReadPrintedNumber(cell.get<std::string>(), place).isUpperBound) {
        return cell.get<std::string>();
    }
    throw InputError(place + ": expected a number as a text, so that no digit is lost");
}

FunctionRange RangeOf(const Json& json, const std::string& place, std::size_t argumentCount) {
    const JsonKeys keys(json, place, {"range", "bound", "points"});
    FunctionRange range;
    range.name = keys.Text("range");
    range.bound = NumberTextOf(keys.Text("bound"), keys.PlaceOf("bound"));
    for (const Json& point : keys.List("points")) {
        const std::string here = keys.PlaceOf("points");
        if (!point.is_array() || point.size() != argumentCount + 1) {
            throw InputError(here + ": expected lists of " + std::to_string(argumentCount) +
                             " arguments and the value");
        }
        FunctionPoint& read = range.points.emplace_back();
        for (const Json& cell : point) read.arguments.push_back(NumberTextOf(cell, here));
        read.value = read.arguments.back();
        read.arguments.pop_back();
    }
    if (range.points.empty()) throw InputError(keys.PlaceOf("points") + ": no points");
    return range;
}

FunctionTable TableOf(const std::string& path) {
    ByteSource source(path);
    const Json json = ReadJson(source);
    const JsonKeys keys(json, path, {"format", "function", "title", "arguments", "made", "ranges"});
    if (keys.Text("format") != kFunctionsFormat) {
        throw InputError(keys.PlaceOf("format") + ": expected " + Quoted(kFunctionsFormat));
    }
    FunctionTable table{keys.Text("function"), keys.Text("title"), {}, keys.Text("made"), {}};
    const NamedFunction* const function = FindFunction(table.function);
    const Json& arguments = keys.List("arguments");
    if (function == nullptr || arguments.size() != function->argumentCount) {
        throw InputError(keys.PlaceOf("function") + ": " + Quoted(table.function) + " of " +
                         std::to_string(arguments.size()) + " arguments is no distribution function of the engine");
    }
    for (const Json& argument : arguments)
        table.arguments.push_back(argument.is_string() ? argument.get<std::string>() : "");
    const Json& ranges = keys.List("ranges");
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        table.ranges.push_back(
            RangeOf(ranges[i], keys.PlaceOf("ranges") + "[" + std::to_string(i) + "]", arguments.size()));
    }
    return table;
}

// ---- Comparing ----

double RelativeError(double ours, const std::string& text) {
    const long double value = std::strtold(text.c_str(), nullptr);
    const long double distance = std::fabs(static_cast<long double>(ours) - value);
    if (distance == 0) return 0;
    return static_cast<double>(distance / std::fabs(value));
}

std::string PlaceText(const FunctionTable& table, const FunctionPoint& point) {
    std::string text;
    for (std::size_t i = 0; i < point.arguments.size(); ++i) {
        text += (i > 0 ? ", " : "") + table.arguments[i] + " = " + point.arguments[i];
    }
    return text;
}

using Evaluation = std::function<double(Arguments)>;

void CheckPoints(CheckedRange& checked, const Evaluation& evaluate) {
    for (const FunctionPoint& point : checked.range->points) {
        std::vector<double> arguments;
        for (const std::string& argument : point.arguments) arguments.push_back(std::strtod(argument.c_str(), nullptr));
        const double error = RelativeError(evaluate(arguments), point.value);
        if (error <= checked.worst) continue;
        checked.worst = error;
        checked.worstAt = PlaceText(*checked.table, point);
        if (std::isnan(error)) return;
    }
}

}  // namespace

bool CheckedRange::IsRight() const {
    return mistake.empty() && worst <= std::strtod(range->bound.c_str(), nullptr);
}

std::vector<FunctionTable> ReadFunctionTables(const std::string& folder) {
    std::vector<FunctionTable> tables;
    for (const std::string& file : JsonFilesIn(folder)) tables.push_back(TableOf(file));
    return tables;
}

std::vector<CheckedRange> CheckFunctions(const std::vector<FunctionTable>& tables, const WordReader& readWords,
                                         const AnalysisEnvironment& environment) {
    std::vector<CheckedRange> results;
    for (const FunctionTable& table : tables) {
        Evaluation evaluate = FindFunction(table.function)->function;
        if (table.function == kKolmogorov) {
            evaluate = [&](Arguments x) { return KolmogorovByTest(x, readWords, environment); };
        }
        for (const FunctionRange& range : table.ranges) {
            CheckedRange& checked = results.emplace_back(CheckedRange{&table, &range, 0, {}, {}});
            try {
                CheckPoints(checked, evaluate);
            } catch (const InputError& mistake) {
                checked.mistake = mistake.what();
            }
        }
    }
    return results;
}

}  // namespace tarn
