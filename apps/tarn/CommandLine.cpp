#include "apps/tarn/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>

#include "apps/tarn/ExplainCommand.h"
#include "apps/tarn/LookCommand.h"
#include "apps/tarn/ManPage.h"
#include "apps/tarn/OutputPaths.h"
#include "apps/tarn/RunCommand.h"
#include "apps/tarn/ShellCompletion.h"
#include "apps/tarn/ShowCommand.h"
#include "apps/tarn/VerifyCommand.h"
#include "apps/tarn/VersionText.h"
#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "host/NumberText.h"
#include "host/TestNames.h"
#include "host/TextList.h"
#include "host/analysis/TableLook.h"
#include "host/table/CellValue.h"
#include "host/table/ColumnPlan.h"

namespace tarn {

namespace {

constexpr const char* kSummary = "Nonparametric tests of one, related and independent samples.";

// Headings of the options in the help.
constexpr const char* kWhatToTest = "What to test";
constexpr const char* kHowToTest = "How to test it";
constexpr const char* kTable = "The table";
constexpr const char* kBeside = "Significances by choice";
constexpr const char* kOutput = "Output";

std::vector<std::string> NamesOfTests() {
    std::vector<std::string> names;
    for (const TestName& test : TestNames()) {
        if (std::ranges::find(names, test.name) == names.end()) names.emplace_back(test.name);
    }
    return names;
}

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

/// What is wrong with a word that is none of those that an option takes; "" for one of them.
std::string MistakeInChoice(const std::string& word, const std::vector<std::string>& choices) {
    if (std::ranges::find(choices, word) != choices.end()) return "";
    const std::vector<std::string_view> known(choices.begin(), choices.end());
    const std::vector<std::string_view> nearest = NearestNames(word, known);
    return Quoted(word) + (nearest.empty() ? "; expected one of " + JoinList(choices) : DidYouMean(nearest));
}

/// The same for a number.
std::string MistakeInNumber(const std::string& word) {
    if (ParseCell(FieldType::kNumber, word)) return "";
    const bool isPercent =
        word.ends_with('%') && ParseCell(FieldType::kNumber, word.substr(0, word.size() - 1)).has_value();
    return Quoted(word) + "; expected a number" +
           (isPercent ? ", percent without a sign: " + word.substr(0, word.size() - 1) : "");
}

/// Values that were cut at each comma, put together again where one was typed in double quotes: `"a, b",c`. A quote
/// within such a value is typed twice, as in CSV.
std::vector<std::string> Unquoted(const char* option, const std::vector<std::string>& parts) {
    std::vector<std::string> values;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (!parts[i].starts_with('"')) {
            values.push_back(parts[i]);
            continue;
        }
        const auto quotesIn = [](const std::string& text) { return std::ranges::count(text, '"'); };
        std::string value = parts[i];
        while (quotesIn(value) % 2 != 0 && i + 1 < parts.size()) value += "," + parts[++i];
        if (quotesIn(value) % 2 != 0 || !value.ends_with('"')) {
            throw InputError(std::string(option) + ": " + value +
                             ": a double quote opens and none closes; expected \"" + value.substr(1) + "\"");
        }
        std::string& bare = values.emplace_back();
        for (std::size_t at = 1; at + 1 < value.size(); ++at) {
            bare += value[at];
            if (value[at] == '"') ++at;
        }
    }
    return values;
}

/// The options of one heading of a command.
class Options {
 public:
    Options(CLI::App& app, const char* heading) : app_(app), heading_(heading) {}

    /// An option with one value; `argument` is what the help shows for it.
    template <typename T>
    CLI::Option* One(const char* name, T& value, const char* argument, const char* help) {
        CLI::Option* const option = app_.add_option(name, value, help)->option_text(argument)->group(heading_);
        if constexpr (std::is_same_v<T, double> || std::is_same_v<T, std::optional<double>>) {
            option->check(CLI::Validator(MistakeInNumber, ""));
        }
        // What a study keeps of an option that isn't typed.
        if constexpr (std::is_same_v<T, double>) option->capture_default_str();
        return option;
    }
    /// An option with values between commas; one with a comma in it stands in double quotes. What stands behind a blank
    /// is not part of it.
    void List(const char* name, std::vector<std::string>& values, const char* argument, const char* help) {
        app_.add_option_function<std::vector<std::string>>(
                name, [name, &values](const std::vector<std::string>& parts) { values = Unquoted(name, parts); }, help)
            ->delimiter(',')
            ->allow_extra_args(false)
            ->option_text(argument)
            ->group(heading_);
    }
    /// An option with values between commas, each for `take`.
    void Values(const char* name, const char* argument, const char* help,
                const std::function<void(const std::string&)>& take) {
        app_.add_option_function<std::vector<std::string>>(
                name, [take](const std::vector<std::string>& values) { std::ranges::for_each(values, take); }, help)
            ->delimiter(',')
            ->allow_extra_args(false)
            ->option_text(argument)
            ->group(heading_);
    }
    /// An option with a number or the word that stands behind "NUMBER|" in `argument`.
    void OneOf(const char* name, const char* argument, const char* help,
               const std::function<void(const std::string&)>& take) {
        const std::string other = Split(argument, '|').back();
        app_.add_option_function<std::string>(name, take, help)
            ->check(CLI::Validator(
                [other](const std::string& word) { return word == other ? std::string() : MistakeInNumber(word); }, ""))
            ->option_text(argument)
            ->group(heading_);
    }
    /// An option that may be given again, each time with one value for `take`.
    void Repeated(const char* name, const char* argument, const char* help,
                  const std::function<void(const std::string&)>& take) {
        app_.add_option_function<std::vector<std::string>>(
                name, [take](const std::vector<std::string>& values) { std::ranges::for_each(values, take); }, help)
            ->allow_extra_args(false)
            ->option_text(argument)
            ->group(heading_);
    }
    /// An option with one of the words that stand in `argument` between bars.
    void Choice(const char* name, const char* argument, const char* help,
                const std::function<void(const std::string&)>& take) {
        app_.add_option_function<std::string>(name, take, help)
            ->check(CLI::Validator(
                [choices = Split(argument, '|')](const std::string& word) { return MistakeInChoice(word, choices); },
                ""))
            ->option_text(argument)
            ->group(heading_);
    }
    /// An option with one value that is read as it stands.
    CLI::Option* Text(const char* name, const char* argument, const char* help,
                      const std::function<void(const std::string&)>& take) {
        return app_.add_option_function<std::string>(name, take, help)->option_text(argument)->group(heading_);
    }
    void Flag(const char* name, bool& value, const char* help) { app_.add_flag(name, value, help)->group(heading_); }

 private:
    CLI::App& app_;
    const char* heading_;
};

/// The whole number that was typed for an option.
std::uint64_t WholeNumberOf(const char* option, const std::string& typed, std::uint64_t least, std::uint64_t most) {
    std::uint64_t number = 0;
    const char* const end = typed.data() + typed.size();
    const auto [rest, error] = std::from_chars(typed.data(), end, number);
    if (error == std::errc{} && rest == end && number >= least && number <= most) return number;
    throw InputError(std::string(option) + ": " + Quoted(typed) + "; expected a whole number from " +
                     std::to_string(least) + " to " + std::to_string(most));
}

/// "dose,again=low,high": one order for one field or several.
void AddOrder(const std::string& typed, std::vector<FieldOrder>& orders) {
    const std::size_t sign = typed.find('=');
    if (sign == std::string::npos || sign == 0 || sign + 1 == typed.size()) {
        throw InputError(std::string(kOrderOption) + ": " + Quoted(typed) +
                         "; expected a field and its categories from the lowest to the highest, like dose=low,high");
    }
    for (std::string& field : Split(typed.substr(0, sign), ',')) {
        orders.push_back({std::move(field), Split(typed.substr(sign + 1), ',')});
    }
}

/// A delimiter as it is typed, by itself or by its name.
char DelimiterTypedAs(const std::string& typed) {
    constexpr std::pair<std::string_view, char> kNames[] = {
        {",", ','},    {"comma", ','}, {";", ';'},   {"semicolon", ';'}, {"\t", '\t'},   {"\\t", '\t'},
        {"tab", '\t'}, {"|", '|'},     {"bar", '|'}, {" ", ' '},         {"blank", ' '}, {"space", ' '},
    };
    for (const auto& [name, delimiter] : kNames) {
        if (typed == name) return delimiter;
    }
    throw InputError("--delimiter: " + Quoted(typed) +
                     "; expected comma, semicolon, tab, bar or blank, or the character");
}

char DecimalTypedAs(const std::string& typed) {
    if (typed == "." || typed == "point") return '.';
    if (typed == "," || typed == "comma") return ',';
    throw InputError("--decimal: " + Quoted(typed) + "; expected a point or a comma");
}

std::vector<std::string> NamesOfEncodings() {
    std::vector<std::string> names;
    for (const auto& [name, encoding] : kEncodings) names.emplace_back(name);
    return names;
}

Encoding EncodingTypedAs(const std::string& typed) {
    std::string name = typed;
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::vector<std::string_view> names;
    for (const auto& [known, encoding] : kEncodings) {
        if (name == known) return encoding;
        names.push_back(known);
    }
    throw InputError("--encoding: " + Quoted(typed) + "; expected " + Alternatives(names));
}

/// "arm=placebo" for an option; `like` is an example of it.
FieldWord FieldWordOf(const char* option, const std::string& typed, const char* like) {
    const std::size_t sign = typed.find('=');
    if (sign == std::string::npos || sign == 0 || sign + 1 == typed.size()) {
        throw InputError(std::string(option) + ": " + Quoted(typed) + "; expected a field and " + like);
    }
    return {typed.substr(0, sign), typed.substr(sign + 1)};
}

/// "a=.2" as a part of --expected.
ExpectedCategory ExpectedOf(const std::string& typed) {
    const std::size_t sign = typed.rfind('=');
    const auto share = sign == std::string::npos ? std::nullopt : ParseCell(FieldType::kNumber, typed.substr(sign + 1));
    if (!share || sign == 0) {
        throw InputError("--expected: " + Quoted(typed) +
                         "; expected each category with its share or its count, like a=.2,b=.8");
    }
    return {typed.substr(0, sign), *share};
}

/// An argument that stands by its place.
template <typename T>
void AddArgument(CLI::App& app, const char* name, T& value, const char* help) {
    app.add_option(name, value, help)->required()->option_text("(required)");
}

void DescribeReading(CLI::App& app, ReadingOptions& reading) {
    const auto add = [&](const char* name, const char* argument, const char* help,
                         const std::function<void(const std::string&)>& take) {
        app.add_option_function<std::string>(name, take, help)->option_text(argument)->group(kTable);
    };
    add("--delimiter", "CHARACTER",
        "What stands between two cells: comma, semicolon, tab, bar or blanks; else recognised",
        [&](const std::string& typed) { reading.delimiter = DelimiterTypedAs(typed); });
    add("--decimal", "CHARACTER", "What stands in front of a fraction: a point or a comma; else recognised",
        [&](const std::string& typed) { reading.decimal = DecimalTypedAs(typed); });
    add("--encoding", "ENCODING", "How characters are written; UTF-8 if not given, or UTF-16 with a mark",
        [&](const std::string& typed) { reading.encoding = EncodingTypedAs(typed); });
    app.add_option_function<std::vector<std::string>>(
           "--na", [&](const std::vector<std::string>& texts) { reading.missingTexts = texts; },
           "The texts of a missing cell, in place of those of the descriptor and the usual ones")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->option_text("TEXT,..")
        ->group(kTable);
}

/// "8G" in bytes.
std::size_t BytesTypedAs(const std::string& typed) {
    constexpr std::string_view kUnits = "KMGT";
    constexpr unsigned kBitsOfUnit = 10;
    const std::size_t digits = std::min(typed.find_first_not_of("0123456789."), typed.size());
    const auto number = ParseCell(FieldType::kNumber, typed.substr(0, digits));
    const std::string_view unit = std::string_view(typed).substr(digits);
    const std::size_t place = unit.size() == 1 ? kUnits.find(unit.front()) : std::string_view::npos;
    if (!number || *number <= 0 || *number > 1e6 || place == std::string_view::npos) {
        throw InputError("--memory: " + Quoted(typed) + "; expected a size like 8G or 512M");
    }
    return static_cast<std::size_t>(*number * static_cast<double>(std::size_t{1} << (kBitsOfUnit * (place + 1))));
}

constexpr const char* kMemoryHelp = "What a table and a run may take, like 8G; half of the machine if not given";

void AddMemory(Options& options, TableOptions& table) {
    options.Text("--memory", "SIZE", kMemoryHelp,
                 [&](const std::string& typed) { table.memory = BytesTypedAs(typed); });
}

void DescribeTable(CLI::App& app, TableOptions& table, const std::function<void(std::string)>& takeCaseId) {
    DescribeReading(app, table.reading);
    Options options(app, kTable);
    options.One("--fields", table.fieldsPath, "FILE", "What the columns are: a table descriptor in JSON");
    options.One("--weight", table.weightField, "FIELD", "The field with the frequency weights");
    app.add_option_function<std::string>("--case-id", takeCaseId, "The field that names the cases")
        ->option_text("FIELD")
        ->group(kTable);
    options.List("--nominal", table.nominal, "FIELD,..", "Fields that are nominal");
    options.List("--ordinal", table.ordinal, "FIELD,..", "Fields that are ordinal");
    options.List("--continuous", table.continuous, "FIELD,..", "Fields that are continuous");
    options.One("--threads", table.threads, "NUMBER", "How many threads may work at a time; no result depends on it");
    AddMemory(options, table);
}

/// Hands the chosen format to `take`.
void AddFormat(Options& options, const char* help, const std::function<void(ReportFormat)>& take) {
    options.Choice("--format", "text|json|csv|xml|md|latex|typst|apa|xlsx|html", help, [take](const std::string& name) {
        const auto& names = FormatNames();
        take(static_cast<ReportFormat>(std::ranges::find(names, name) - names.begin()));
    });
}

void AddDetails(Options& options, bool& details) {
    options.Flag("--details", details, "As text, all that there is of each test, in the words of the result document");
}

void AddExplain(Options& options, bool& explain) {
    options.Flag("--explain", explain,
                 "Show below each test, in a page too, how its numbers came about: ranks, sums, formulas with the "
                 "numbers put in");
}

void DescribeOutput(CLI::App& app, OutputOptions& output, bool& brief, const char* outHelp) {
    Options options(app, kOutput);
    AddFormat(options, "What to write to standard output", [&](ReportFormat format) { output.format = format; });
    options.Text("--out", "FILE", outHelp,
                 [&](const std::string& typed) { output.outPath = PathTyped("--out", typed); });
    options.Flag("--brief", brief, "Statistics alone: no histograms, no box plots, no other descriptives; the fastest");
    options.Flag("--quiet", output.quiet, "Show neither a progress bar nor the table of results");
    AddDetails(options, output.details);
}

/// Pages, pictures and explanations, which are made of the table.
void DescribeReport(CLI::App& app, OutputOptions& output) {
    Options options(app, kOutput);
    options.One("--report", output.reportPath, "FILE",
                "Write the result there as a page of HTML, with a plot of each test");
    options.One("--plot", output.plotPath, "FILE",
                "Write the plot of the test there, as SVG; for an analysis of one test");
    options.One("--plot-dir", output.plotFolder, "FOLDER", "Write the plots of all tests into that folder, as SVG");
    AddExplain(options, output.explain);
}

void DescribeRun(CLI::App& app, RunOptions& run) {
    Options(app, kTable)
        .One("--data", run.table.dataPath, "FILE", "The table: a CSV file with a header row, or - for standard input")
        ->required();
    // No group of options of its own, whose name is empty: an empty word would be taken for it.
    Options request(app, kWhatToTest);
    request.One("--plan", run.planPath, "FILE",
                "A plan: the tests with their fields, as the engine's library takes them; this or --settings");
    request.One("--settings", run.settingsPath, "FILE",
                "A request in the user's terms, as a host hands it to the engine");
    Options how(app, kHowToTest);
    how.Flag("--strict", run.strict, "Run nothing if the engine would pass over anything in the plan or the request");
    how.Flag("--extended", run.extended,
             "Compute as wide as needed: no count wraps around, and tails keep their digits");
    run.table.reading.keepsPlainTables = true;
    DescribeTable(app, run.table, [&](std::string field) { run.caseIdField = std::move(field); });
    DescribeOutput(app, run.output, run.brief, "Write the result document there instead of to standard output");
}

/// The choices from which further significances are made, beside those of the document.
void DescribeSupplement(CLI::App& app, SupplementOptions& wanted) {
    Options beside(app, kBeside);
    beside.Flag("--exact", wanted.exact, "Exact significances, conditional on ties, also where they take their time");
    constexpr std::uint64_t kMostDraws = 1'000'000'000;
    beside.Text("--monte-carlo", "N", "Significances from so many random arrangements of the data",
                [&](const std::string& typed) { wanted.draws = WholeNumberOf("--monte-carlo", typed, 1, kMostDraws); });
    beside
        .Text("--seed", "N", "The seed of these arrangements, 1 if not given",
              [&](const std::string& typed) {
                  wanted.seed = WholeNumberOf("--seed", typed, 0, std::numeric_limits<std::int64_t>::max());
              })
        ->needs("--monte-carlo");
    beside.Choice("--alternative", "two-sided|less|greater",
                  "Whether the first sample is expected to lie lower or higher",
                  [&](const std::string& word) { wanted.alternative = *AlternativeOf(word); });
    beside.Choice("--continuity", "on|off", "The correction for continuity of a normal approximation",
                  [&](const std::string& word) { wanted.continuity = word == "on"; });
    beside.Choice("--zeros", "drop|pratt|split", "What becomes of differences of zero in signed ranks",
                  [&](const std::string& word) { wanted.zeros = ZeroMethodOf(word); });
    beside.Choice("--like", "r|scipy", "The choices that give the numbers of R or SciPy, with the call",
                  [&](const std::string& word) { wanted.like = OtherSystemOf(word); });
    beside.Choice("--adjust", "holm|hochberg|hommel|bh|by|bonferroni|none",
                  "How significances of pairs, and of the tests together, are adjusted for their number",
                  [&](const std::string& word) { wanted.adjustment = AdjustmentOf(word); });
}

void DescribeAnalyze(CLI::App& app, AnalyzeOptions& analyze) {
    AnalysisOptions& analysis = analyze.analysis;
    AddArgument(app, "DATA", analyze.table.dataPath,
                "The table: a CSV file with a header row, or - for standard input");

    app.add_option("FORMULA", analyze.words.formula,
                   "In place of fields: 'score ~ arm', 'a + b ~ arm', 'score ~ cond | subject' or 'score ~ 1'")
        ->option_text("(optional)");

    Options what(app, kWhatToTest);
    what.List("--one-sample", analysis.oneSample, "FIELD,..", "Fields to be tested each by itself");
    what.List("--related", analysis.related, "FIELD,..", "Fields measured on the same cases, to be compared");
    what.List("--independent", analysis.independent, "FIELD,..", "Fields to be compared between groups");
    what.One("--group,--by", analysis.group, "FIELD", "The field whose categories are the groups");
    what.One("--within", analyze.words.within, "FIELD",
             "The condition of repeated measures that stand below one another; with --related and --id");
    what.One("--id", analyze.words.subject, "FIELD", "The subject of these measures");
    what.One("--where", analyze.words.where, "CONDITION",
             "Which records are taken, like 'age > 40 & arm != \"low\"' or 'dose is not missing'");
    what.One("--split", analyze.words.split, "FIELD", "Test the records of each category of that field by themselves");
    what.List("--tests", analysis.tests, "NAME,..",
              "The tests, by the names of tarn tests; otherwise chosen by the fields");

    Options how(app, kHowToTest);
    how.Choice("--compare", "pairwise|stepwise", "Compare more than two samples with one another",
               [&](const std::string& compare) { analysis.compare = compare; });
    how.One("--against", analysis.against, "CATEGORY",
            "Of the pairs those with that group, or related field, alone, adjusted for their number");
    how.One("--test-value", analysis.testValue, "NUMBER",
            "The median that wilcoxon and median test against; of two groups or a pair, the difference expected");
    how.OneOf("--cut-point", "NUMBER|mean",
              "Where the binomial and runs tests cut a continuous field; else between its ends, and at its median",
              [&](const std::string& typed) {
                  analysis.cutAtMean = typed == "mean";
                  if (!analysis.cutAtMean) analysis.cutPoint = ParseCell(FieldType::kNumber, typed);
              });
    how.One("--probability", analysis.probability, "NUMBER",
            "The share of the first class that the binomial test expects, 0.5 if not given");
    how.List("--success", analysis.success, "CATEGORY,..", "The categories that count as the first class");
    how.List("--distribution", analysis.distributions, "NAME,..",
             "For kolmogorov-smirnov of one sample: normal, uniform, poisson, exponential");
    how.One("--mean", analysis.mean, "NUMBER", "The mean of that distribution; else from the data");
    how.One("--sd", analysis.standardDeviation, "NUMBER",
            "The standard deviation of the normal one; else from the data");
    how.One("--min", analysis.minimum, "NUMBER", "The lower end of the uniform one, with --max; else from the data");
    how.One("--max", analysis.maximum, "NUMBER", "The upper end of the uniform one, with --min; else from the data");
    how.Values("--expected", "CATEGORY=SHARE,..",
               "How frequent chi-square expects the categories, in any scale; all alike if not given",
               [&](const std::string& typed) { analysis.expected.push_back(ExpectedOf(typed)); });
    how.One("--outliers", analysis.outliers, "NUMBER", "How many extreme values the moses test trims");
    how.Flag("--descending", analysis.descending, "The jonckheere test expects values to fall with the groups");
    how.One("--alpha", analysis.alpha, "NUMBER",
            "The significance level, 0.05 if not given: a share up to 1, percent above it");
    how.One("--confidence", analysis.confidence, "NUMBER",
            "The confidence level, 95 if not given: a share up to 1, percent above it");
    how.Choice("--missing", "analysis|listwise",
               "Which records miss a test: those that miss its own fields, or any field",
               [&](const std::string& missing) { analysis.listwise = missing == "listwise"; });
    how.Choice("--user-missing", "exclude|include", "Whether user-missing values are missing or values like any other",
               [&](const std::string& user) { analysis.includeUserMissing = user == "include"; });

    how.Flag("--as-defined", analysis.asDefined, "Compute with the engine's fixed widths, as run does");
    DescribeSupplement(app, analyze.supplement);

    DescribeTable(app, analyze.table, [&](std::string field) { analysis.caseId = std::move(field); });
    Options table(app, kTable);
    table.Repeated(
        kOrderOption, "FIELD=CATEGORY,..",
        "The categories of a field from the lowest to the highest, which makes it ordinal; may be given again",
        [&](const std::string& order) { AddOrder(order, analysis.orders); });
    table.Repeated(
        "--reference", "FIELD=CATEGORY",
        "The category that stands first, from which differences count; may be given again",
        [&](const std::string& typed) {
            analyze.words.references.push_back(FieldWordOf("--reference", typed, "its category, like arm=placebo"));
        });
    table.Repeated(
        "--label", "FIELD=TEXT", "What the result calls a field beside its name; may be given again",
        [&](const std::string& typed) {
            analyze.words.labels.push_back(FieldWordOf("--label", typed, "its text, like hours='Hours of sleep'"));
        });
    DescribeOutput(app, analyze.output, analysis.brief, "Write the result document there as well");
    DescribeReport(app, analyze.output);
    Options(app, kOutput)
        .Text("--save", "FILE", "Write there what was typed, for tarn rerun",
              [&](const std::string& typed) { analyze.savePath = PathTyped("--save", typed); });
}

// ---- Studies ----

/// Where results go and how fast is no part of a study.
bool IsOfStudy(const CLI::Option& option) {
    const std::string name = option.get_name();
    if (option.get_positional() || name == "--threads" || name == "--memory" || name == "--help") return false;
    return option.get_group() != kOutput || name == "--brief";
}

/// A number as a number and a flag as true, so that a study reads as it was typed.
Json StudyValueOf(const CLI::Option& option, const std::vector<std::string>& typed) {
    if (option.get_items_expected_max() == 0) return typed.front() == "true";
    if (option.get_expected_max() > 1) return typed;
    const bool isNumber = option.get_option_text().starts_with("N");
    const auto number = isNumber ? ParseCell(FieldType::kNumber, typed.front()) : std::nullopt;
    return number && ExactText(*number) == typed.front() ? ParseJson(typed.front(), option.get_name())
                                                         : Json(typed.front());
}

/// What was typed behind a command, in that order; behind it what holds where nothing was typed.
Study StudyOf(const CLI::App& command, const std::string& dataPath, const std::string& formula) {
    Study study;
    study.dataPath = dataPath;
    study.formula = formula;
    std::vector<const CLI::Option*> options;
    for (const CLI::Option* const option : command.parse_order()) {
        if (std::ranges::find(options, option) == options.end()) options.push_back(option);
    }
    for (const CLI::Option* const option : command.get_options()) {
        if (option->count() == 0 && !option->get_default_str().empty()) options.push_back(option);
    }
    for (const CLI::Option* const option : options) {
        if (!IsOfStudy(*option)) continue;
        const std::vector<std::string> typed =
            option->count() > 0 ? option->results() : std::vector<std::string>{option->get_default_str()};
        study.options.push_back({option->get_name().substr(2), StudyValueOf(*option, typed)});
    }
    return study;
}

/// The same as it is typed.
void AddArguments(const CLI::Option& option, const Json& value, std::vector<std::string>& arguments) {
    const std::string name = option.get_name();
    if (value.is_boolean()) {
        if (value.get<bool>()) arguments.push_back(name);
        return;
    }
    std::vector<std::string> values;
    if (value.is_array()) values = value.get<std::vector<std::string>>();
    if (value.is_string()) values = {value.get<std::string>()};
    if (value.is_number()) values = {value.dump()};
    if (option.get_delimiter() != '\0') values = {JoinList(values, std::string(1, option.get_delimiter()))};
    for (const std::string& each : values) arguments.push_back(name + "=" + each);
}

/// What the user typed behind `tarn rerun`.
struct RerunOptions {
    std::string studyPath;
    std::string dataPath;
    std::string memory;  ///< as it was typed
    OutputOptions output;
    bool brief = false;
};

void DescribeRerun(CLI::App& app, RerunOptions& rerun) {
    AddArgument(app, "STUDY", rerun.studyPath,
                "A study that tarn analyze --save wrote, or a result of --format json, which is then compared");
    Options table(app, kTable);
    table.One("--data", rerun.dataPath, "FILE", "Another table than that of the study");
    table.Text("--memory", "SIZE", kMemoryHelp, [&](const std::string& typed) {
        static_cast<void>(BytesTypedAs(typed));  // a slip is told before anything is read
        rerun.memory = typed;
    });
    DescribeOutput(app, rerun.output, rerun.brief, "Write the result document there as well");
    DescribeReport(app, rerun.output);
}

void DescribeLook(CLI::App& app, LookOptions& look) {
    AddArgument(app, "DATA", look.table.dataPath, "The table, or - for standard input");
    Options options(app, kTable);
    options.One("--fields", look.table.fieldsPath, "FILE", "What the columns are: a table descriptor in JSON");
    DescribeReading(app, look.table.reading);
    options.One("--threads", look.table.threads, "NUMBER",
                "How many threads may work at a time; no result depends on it");
    AddMemory(options, look.table);
    Options(app, kOutput)
        .Choice("--format", "text|json", "What to write: a text, or a table descriptor for --fields",
                [&](const std::string& format) { look.asJson = format == "json"; });
}

void DescribeVerify(CLI::App& app, VerifyOptions& verify) {
    app.add_option("NAME", verify.names, "Cases or tests, all if not given; a case alone is shown with its data")
        ->option_text("(optional)");
    Options what(app, kWhatToTest);
    what.Flag("--functions", verify.functions, "Check the distribution functions in place of published results");
    what.Flag("--as-defined", verify.asDefined, "Compute with the engine's fixed widths, as run does");
    what.One("--pack", verify.packFolder, "FOLDER", "Other reference data than those that tarn is installed with");
    Options output(app, kOutput);
    output.Choice("--format", "text|json|html", "What to write to standard output", [&](const std::string& format) {
        verify.format = format == "json"   ? VerifyFormat::kJson
                        : format == "html" ? VerifyFormat::kHtml
                                           : VerifyFormat::kText;
    });
    output.Flag("--quiet", verify.quiet, "Show only what doesn't agree, and the summary");
}

/// The same for whoever has a table of his own.
WordsRead WordsOf(const std::vector<std::string>& words) {
    const AnalyzeOptions read = ReadAnalyzeWords(words);
    WordsRead result{read.words, read.analysis, read.supplement, {}, LevelsOf(read)};
    result.load.nominal = read.table.nominal;
    result.load.ordinal = read.table.ordinal;
    result.load.continuous = read.table.continuous;
    result.load.weightField = read.table.weightField;
    return result;
}

/// The commands, with what each of them is given and does. One object of this class is one run of the program.
class CommandLine {
 public:
    CommandLine() : app_(kSummary, "tarn") {
        app_.set_version_flag("--version", &VersionText, "Show the versions of the program and of the engine");
        app_.set_help_flag("-h,--help", "Show what can be typed");
        app_.require_subcommand(1);
        app_.footer(
            "tarn analyze DATA.csv 'FIELD ~ GROUPS' is the shortest way to a result.\n"
            "tarn COMMAND --help shows what a command takes.");

        DescribeAnalyze(Add("analyze", "Test fields of a table and show the results", [this] { return RunAnalyze(); }),
                        analyze_);
        DescribeRun(Add("run", "Run tests on a table and write the result document", [this] { return RunRun(); }),
                    run_);
        DescribeLook(Add("look", "Show what a table holds and what can be asked of it; so does tarn DATA",
                         [this] { return RunLook(); }),
                     look_);
        DescribeRerun(Add("rerun", "Analyze once more what --save kept, or what made a result in JSON",
                          [this] { return Rerun(); }),
                      rerun_);
        Add("tests", "List the names of the tests", ListTests);

        DescribeVerify(Add("verify", "Check the numbers of this engine against published ones",
                           [this] { return Verify(verify_, WordsOf); }),
                       verify_);

        CLI::App& show = Add("show", "Show a stored result document", [this] { return Show(resultPath_, shown_); });
        AddArgument(show, "RESULT", resultPath_, "A result document, or - for standard input");
        Options shown(show, kOutput);
        AddFormat(shown, "How to show it, as text if not given",
                  [this](ReportFormat format) { shown_.format = format; });
        AddDetails(shown, shown_.details);

        CLI::App& explain = Add("explain", "Explain a code or a test", [this] { return ExplainTopic(topic_); });
        AddArgument(explain, "TOPIC", topic_, "A code of a message, or the name of a test");

        Add("man", "Write the manual page", [this] { return Print(ManPage(Describe())); });
        CLI::App& completion = Add("completion", "Write the script by which a shell completes what is typed",
                                   [this] { return Print(ShellCompletion(shell_, Describe())); });
        completion.add_option("SHELL", shell_, "bash or zsh")
            ->required()
            ->option_text("(required)")
            ->check(CLI::IsMember(ShellNames()));
    }

    ExitStatus Execute(int argc, const char* const* argv) {
        if (argc <= 1) return Mistake("no command, expected one like tarn analyze DATA.csv --one-sample FIELD");
        // A table without a command is looked at.
        std::vector<const char*> arguments(argv, argv + argc);
        if (IsTable(argv[1])) arguments.insert(arguments.begin() + 1, "look");
        try {
            app_.parse(static_cast<int>(arguments.size()), arguments.data());
        } catch (const CLI::ParseError& error) {
            return Answer(error);
        }
        for (const auto& [command, action] : actions_) {
            if (command->parsed()) return action();
        }
        return ExitStatus::kDone;
    }

    /// Reads what is typed behind the table of `tarn analyze`.
    AnalyzeOptions ReadAnalyze(const std::vector<std::string>& words) {
        std::vector<const char*> arguments{"tarn", "analyze", "DATA.csv"};
        for (const std::string& word : words) arguments.push_back(word.c_str());
        try {
            app_.parse(static_cast<int>(arguments.size()), arguments.data());
        } catch (const CLI::ParseError& error) {
            throw InputError(error.what());
        }
        NoteOrderOfFamilies();
        return analyze_;
    }

    std::vector<CommandDescription> Describe() const {
        std::vector<CommandDescription> commands;
        for (const auto& [command, action] : actions_) {
            CommandDescription& described = commands.emplace_back();
            described.name = command->get_name();
            described.help = command->get_description();
            for (const CLI::Option* option : command->get_options()) described.options.push_back(Describe(*option));
        }
        return commands;
    }

 private:
    CLI::App& Add(const char* name, const char* help, std::function<ExitStatus()> action) {
        CLI::App* const command = app_.add_subcommand(name, help);
        actions_.emplace_back(command, std::move(action));
        return *command;
    }

    /// Whether the first word is a table and not a command: a file, or what has a folder or an ending as files have.
    bool IsTable(const std::string& word) const {
        for (const auto& [command, action] : actions_) {
            if (command->get_name() == word) return false;
        }
        if (word == "-") return true;
        if (word.starts_with('-')) return false;
        std::error_code unreadable;
        if (word.find('/') != std::string::npos || std::filesystem::is_regular_file(word, unreadable)) return true;
        const std::size_t point = word.rfind('.');
        const bool hasEnding = point != std::string::npos && point > 0 && point + 1 < word.size();
        // A call of another tool has a point in it, too: wilcox.test.
        return hasEnding && (IsNameOfTable(word) || TestsMeant(word).empty());
    }

    static bool IsNameOfTable(const std::string& word) {
        return word.ends_with(".csv") || word.ends_with(".tsv") || word.ends_with(".txt");
    }

    /// The tests that a word of another tool may mean.
    static std::vector<std::string> TestsMeant(const std::string& typed) {
        const std::vector<std::string> tests = NamesOfTests();
        if (std::ranges::find(tests, typed) != tests.end()) return {typed};
        const std::vector<std::string_view> known(tests.begin(), tests.end());
        const std::vector<std::string_view> meant = NearestNames(typed, known);
        return {meant.begin(), meant.end()};
    }

    /// Results come in the order in which the families were typed.
    void NoteOrderOfFamilies() {
        for (const CLI::Option* const option : app_.get_subcommand("analyze")->parse_order()) {
            for (const auto& [name, family] :
                 {std::pair{"--one-sample", TestFamily::kOneSample}, std::pair{"--related", TestFamily::kRelated},
                  std::pair{"--independent", TestFamily::kIndependent}}) {
                if (option->get_name() == name) analyze_.analysis.familyOrder.push_back(family);
            }
        }
    }

    ExitStatus RunAnalyze() {
        NoteOrderOfFamilies();
        const CLI::App& command = *app_.get_subcommand("analyze");
        analyze_.study = StudyOf(command, analyze_.table.dataPath, analyze_.words.formula);
        return Analyze(analyze_);
    }

    ExitStatus RunRun() {
        const CLI::App& command = *app_.get_subcommand("run");
        const bool hasPlan = command.count("--plan") > 0;
        if (hasPlan == (command.count("--settings") > 0)) {
            return Mistake(hasPlan ? "--plan and --settings exclude one another" : "--plan or --settings is required");
        }
        run_.study = StudyOf(command, "", "");
        run_.study.command = "run";
        return Run(run_);
    }

    ExitStatus RunLook() {
        const CLI::App& command = *app_.get_subcommand("look");
        for (const CLI::Option* const option : command.parse_order()) {
            const std::string name = option->get_name();
            if (name == "DATA" || name == "--format" || name == "--threads" || name == "--memory") continue;
            look_.readingOptions += " " + name + " " + ShellWord(JoinList(option->results(), ","));
        }
        return Look(look_);
    }

    /// Types what a study holds, with another table or output where that is asked for.
    ExitStatus Rerun() const {
        const Study study = ReadStudy(rerun_.studyPath);
        const std::string data = rerun_.dataPath.empty() ? study.dataPath : rerun_.dataPath;
        CheckOutputPaths(std::vector<NamedPath>{{"--out", rerun_.output.outPath}},
                         std::vector<NamedPath>{{"the study", rerun_.studyPath}});
        if (data.empty()) throw InputError(rerun_.studyPath + ": data.file: no table; expected it, or --data");
        std::vector<std::string> arguments{"tarn", "analyze"};
        for (const StudyOption& option : study.options)
            AddArguments(OptionOfStudy(option.name), option.value, arguments);
        const OutputOptions& output = rerun_.output;
        if (!study.result.is_null()) CheckComparison(output);
        if (!rerun_.memory.empty()) arguments.push_back("--memory=" + rerun_.memory);
        if (!output.outPath.empty()) arguments.push_back("--out=" + output.outPath);
        if (!output.reportPath.empty()) arguments.push_back("--report=" + output.reportPath);
        if (!output.plotPath.empty()) arguments.push_back("--plot=" + output.plotPath);
        if (!output.plotFolder.empty()) arguments.push_back("--plot-dir=" + output.plotFolder);
        if (output.quiet) arguments.emplace_back("--quiet");
        if (output.details) arguments.emplace_back("--details");
        if (output.explain) arguments.emplace_back("--explain");
        if (rerun_.brief) arguments.emplace_back("--brief");
        if (output.format) arguments.push_back("--format=" + FormatNames()[static_cast<std::size_t>(*output.format)]);
        arguments.emplace_back("--");
        arguments.push_back(data);
        if (!study.formula.empty()) arguments.push_back(study.formula);
        CommandLine line;
        line.analyze_.studiedData = study.data;
        line.analyze_.compared = study.result;
        std::vector<const char*> words;
        for (const std::string& argument : arguments) words.push_back(argument.c_str());
        return line.Execute(static_cast<int>(words.size()), words.data());
    }

    /// A result is compared as a whole, and the comparison takes the place of what is shown otherwise.
    void CheckComparison(const OutputOptions& output) const {
        const std::string what = rerun_.studyPath + " is a result, which is compared; expected ";
        if (output.format && *output.format != ReportFormat::kText && *output.format != ReportFormat::kJson) {
            throw InputError("--format: " + what + "text or json, or a study");
        }
        if (output.details) throw InputError("--details: " + what + "no details, or a study");
        if (rerun_.brief) throw InputError("--brief: " + what + "all of its figures, or a study");
    }

    const CLI::Option& OptionOfStudy(const std::string& name) const {
        std::vector<std::string> names;
        for (const CLI::Option* const option : app_.get_subcommand_ptr("analyze")->get_options()) {
            if (!IsOfStudy(*option)) continue;
            if (option->check_lname(name)) return *option;
            names.push_back(option->get_name().substr(2));
        }
        const std::vector<std::string_view> known(names.begin(), names.end());
        throw InputError(rerun_.studyPath + ": options." + name + ": no option of tarn analyze that a study has" +
                         DidYouMean(NearestNames(name, known)));
    }

    static OptionDescription Describe(const CLI::Option& option) {
        OptionDescription described;
        described.help = option.get_description();
        if (option.get_positional()) {
            described.argument = option.get_name();
        } else {
            for (const std::string& name : option.get_snames()) described.names.push_back("-" + name);
            for (const std::string& name : option.get_lnames()) described.names.push_back("--" + name);
            described.argument = option.get_option_text();
        }
        if (described.argument.find('|') != std::string::npos) described.choices = Split(described.argument, '|');
        std::erase(described.choices, "NUMBER");
        const std::string name = option.get_name();
        if (name == "--tests" || name == "TOPIC") described.choices = NamesOfTests();
        if (name == "--distribution") described.choices.assign(DistributionNames().begin(), DistributionNames().end());
        if (name == "--encoding") described.choices = NamesOfEncodings();
        if (name == "--delimiter") described.choices = {"comma", "semicolon", "tab", "bar", "blank"};
        if (name == "--decimal") described.choices = {"point", "comma"};
        if (name == "SHELL") described.choices = ShellNames();
        return described;
    }

    static ExitStatus Print(const std::string& text) {
        PrintResult(text);
        return ExitStatus::kDone;
    }

    /// "tarn analyze --help" once that command was typed.
    std::string Help() const {
        const auto parsed = std::ranges::find_if(actions_, [](const auto& action) { return action.first->parsed(); });
        return "tarn " + (parsed == actions_.end() ? "" : parsed->first->get_name() + " ") + "--help";
    }

    ExitStatus Mistake(const std::string& mistake) const {
        // What names the thing to type needs no other help.
        const bool isAnswer =
            mistake.find("did you mean") != std::string::npos || mistake.find("; expected ") != std::string::npos;
        return TellMistake(mistake + (isAnswer ? "" : "; " + Help() + " shows what can be typed"),
                           ExitStatus::kWrongUsage);
    }

    /// What somebody means who types a table, a test or the fields where something else is expected; "" for anything
    /// else.
    std::string MistakeAtWord(const std::string& typed) const {
        const std::string what = "unknown argument " + Quoted(typed) + "; ";
        const bool isOption = typed.starts_with('-');
        if (app_.get_subcommand_ptr("analyze")->parsed()) {
            const std::string& formula = analyze_.words.formula;
            if (typed == "--data") return what + "the table stands by itself: tarn analyze DATA.csv";
            const std::string name = typed.substr(std::min(typed.find_first_not_of('-'), typed.size()));
            if (isOption && std::ranges::find(FormatNames(), name) != FormatNames().end()) {
                return what + "did you mean --format " + name + "?";
            }
            if (isOption || formula.empty()) return "";
            if (formula.find('~') != std::string::npos) return what + "what follows the formula are options";
            return what + "fields stand in one formula, '" + formula + " ~ " + typed + "'";
        }
        if (isOption || std::ranges::any_of(actions_, [](const auto& action) { return action.first->parsed(); }))
            return "";
        if (IsNameOfTable(typed)) {
            return what + "did you mean tarn analyze " + typed + "?";
        }
        std::vector<std::string> names;
        for (const auto& action : actions_) names.push_back(action.first->get_name());
        const std::vector<std::string_view> commands(names.begin(), names.end());
        if (!NearestNames(typed, commands).empty()) return "";
        const std::vector<std::string> meant = TestsMeant(typed);
        if (meant.empty()) return "";
        return what + "a test is asked for by tarn analyze DATA.csv FORMULA --tests " + JoinList(meant, " or ");
    }

    /// What the parser throws is wrong usage, or the wish for help or the version, which are answers.
    ExitStatus Answer(const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            app_.exit(error);
            return ExitStatus::kDone;
        }
        // An argument that nothing takes is the likelier mistake than the one that it leaves missing. The "--" in front
        // of the table is left over, too, where the parser stopped before it.
        std::vector<std::string> unknown = app_.remaining(true);
        std::erase(unknown, "--");
        if (unknown.empty()) return Mistake(error.what());
        const std::string& typed = unknown.front();
        if (const std::string mistake = MistakeAtWord(typed); !mistake.empty()) {
            return TellMistake(mistake, ExitStatus::kWrongUsage);
        }
        const std::string name = typed.substr(0, typed.find('='));
        std::vector<std::string> names;
        for (const CLI::Option* option : app_.get_options()) {
            for (const std::string& own : Describe(*option).names) names.push_back(own);
        }
        for (const CommandDescription& command : Describe()) {
            if (app_.get_subcommand_ptr(command.name)->parsed()) {
                names.clear();
                for (const OptionDescription& option : command.options) {
                    names.insert(names.end(), option.names.begin(), option.names.end());
                }
                break;
            }
            names.push_back(command.name);
        }
        const std::vector<std::string_view> known(names.begin(), names.end());
        const std::vector<std::string_view> nearest = NearestNames(name, known);
        return TellMistake("unknown argument " + Quoted(typed) +
                               (nearest.empty() ? "; " + Help() + " shows what can be typed" : DidYouMean(nearest)),
                           ExitStatus::kWrongUsage);
    }

    CLI::App app_;
    std::vector<std::pair<CLI::App*, std::function<ExitStatus()>>> actions_;
    AnalyzeOptions analyze_;
    RunOptions run_;
    LookOptions look_;
    VerifyOptions verify_;
    RerunOptions rerun_;
    std::string resultPath_;
    OutputOptions shown_;
    std::string topic_;
    std::string shell_;
};

}  // namespace

ExitStatus RunCommandLine(int argc, const char* const* argv) {
    return CommandLine().Execute(argc, argv);
}

AnalyzeOptions ReadAnalyzeWords(const std::vector<std::string>& words) {
    return CommandLine().ReadAnalyze(words);
}

std::vector<CommandDescription> DescribeCommands() {
    return CommandLine().Describe();
}

}  // namespace tarn
