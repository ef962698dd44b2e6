// The command line: says what can be typed, and hands what was typed to a command. One file per command.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "apps/tarn/AnalyzeCommand.h"
#include "apps/tarn/Command.h"
#include "apps/tarn/ExplainCommand.h"
#include "apps/tarn/RunCommand.h"
#include "apps/tarn/ShowCommand.h"
#include "host/InputError.h"
#include "host/TestNames.h"

namespace {

using tarn::AnalyzeOptions;
using tarn::ExitStatus;
using tarn::OutputOptions;
using tarn::RunOptions;
using tarn::TableOptions;

CLI::Option* AddList(CLI::App& app, const char* name, std::vector<std::string>& fields, const char* help,
                     const char* type = "FIELD,..") {
    return app.add_option(name, fields, help)->delimiter(',')->type_name(type);
}

void DescribeTable(CLI::App& app, TableOptions& options) {
    app.add_option("--fields", options.fieldsPath, "What the columns are: a table descriptor in JSON")
        ->type_name("FILE");
    app.add_option("--weight", options.weightField, "The field with the frequency weights")->type_name("FIELD");
    AddList(app, "--nominal", options.nominal, "Fields that are nominal");
    AddList(app, "--ordinal", options.ordinal, "Fields that are ordinal");
    AddList(app, "--continuous", options.continuous, "Fields that are continuous");
}

/// Hands the chosen format to `take`.
template <typename Take>
CLI::Option* AddFormat(CLI::App& app, const char* help, Take take) {
    const auto& names = tarn::FormatNames();
    const auto read = [&names, take](const std::string& name) {
        take(static_cast<tarn::ReportFormat>(std::find(names.begin(), names.end(), name) - names.begin()));
    };
    return app.add_option_function<std::string>("--format", read, help)
        ->check(CLI::IsMember(names))
        ->type_name("FORMAT");
}

void DescribeOutput(CLI::App& app, OutputOptions& options, const char* outHelp) {
    AddFormat(app, "What to write to standard output: text, json, csv or xml",
              [&options](tarn::ReportFormat format) { options.format = format; });
    app.add_option("--out", options.outPath, outHelp)->type_name("FILE");
    app.add_flag("--quiet", options.quiet, "Show neither a progress bar nor the table of results");
}

void DescribeRun(CLI::App& run, RunOptions& options) {
    run.add_option("--data", options.table.dataPath, "The table: a CSV file with a header row, or - for standard input")
        ->required()
        ->type_name("FILE");
    CLI::Option_group* request = run.add_option_group("The tests", "Exactly one of them");
    request
        ->add_option("--plan", options.planPath,
                     "A plan: the tests with their fields, as the engine's library takes them")
        ->type_name("FILE");
    request
        ->add_option("--settings", options.settingsPath,
                     "A request in the user's terms, as a host hands it to the engine")
        ->type_name("FILE");
    request->require_option(1);
    DescribeTable(run, options.table);
    run.add_option("--case-id", options.caseIdField, "The field that names the cases")->type_name("FIELD");
    DescribeOutput(run, options.output, "Write the result document there instead of to standard output");
}

void DescribeAnalyze(CLI::App& analyze, AnalyzeOptions& options) {
    tarn::AnalysisOptions& analysis = options.analysis;
    analyze
        .add_option("DATA", options.table.dataPath, "The table: a CSV file with a header row, or - for standard input")
        ->required()
        ->type_name("FILE");
    AddList(analyze, "--one-sample", analysis.oneSample, "Fields to be tested each by itself");
    AddList(analyze, "--related", analysis.related, "Fields measured on the same cases, to be compared");
    AddList(analyze, "--independent", analysis.independent, "Fields to be compared between groups");
    analyze.add_option("--group", analysis.group, "The field that tells the groups")->type_name("FIELD");
    AddList(analyze, "--tests", analysis.tests, "The tests, by the names of tarn tests; otherwise chosen by the fields",
            "NAME,..");
    analyze.add_option("--compare", analysis.compare, "Compare more than two samples with one another")
        ->check(CLI::IsMember({"pairwise", "stepwise"}))
        ->type_name("HOW");
    analyze
        .add_option("--test-value", analysis.testValue, "The median that the wilcoxon and median tests test against")
        ->type_name("NUMBER");
    analyze.add_option("--cut-point", analysis.cutPoint, "Where the binomial and runs tests cut a continuous field")
        ->type_name("NUMBER");
    analyze.add_option("--probability", analysis.probability, "The share that the binomial test expects")
        ->check(CLI::Range(0.0, 1.0))
        ->type_name("NUMBER");
    AddList(analyze, "--success", analysis.success, "The categories that count as the first class", "CATEGORY,..");
    AddList(analyze, "--distribution", analysis.distributions,
            "For kolmogorov-smirnov of one sample: normal, uniform, poisson, exponential", "NAME,..");
    analyze.add_option("--outliers", analysis.outliers, "How many extreme values the moses test trims")
        ->type_name("NUMBER");
    analyze.add_flag("--descending", analysis.descending, "The jonckheere test expects values to fall with the groups");
    analyze.add_option("--alpha", analysis.alpha, "The significance level")
        ->check(CLI::Range(0.0, 1.0))
        ->capture_default_str();
    analyze.add_option("--confidence", analysis.confidence, "The confidence level in percent")
        ->check(CLI::Range(0.0, 100.0))
        ->capture_default_str();
    analyze
        .add_option_function<std::string>(
            "--missing", [&](const std::string& how) { analysis.listwise = how == "listwise"; },
            "Which records miss a test: those that miss its own fields, or any field")
        ->check(CLI::IsMember({"analysis", "listwise"}))
        ->type_name("HOW");
    analyze
        .add_option_function<std::string>(
            "--user-missing", [&](const std::string& how) { analysis.includeUserMissing = how == "include"; },
            "Whether user-missing values are missing or values like any other")
        ->check(CLI::IsMember({"exclude", "include"}))
        ->type_name("HOW");
    DescribeTable(analyze, options.table);
    analyze.add_option("--case-id", analysis.caseId, "The field that names the cases")->type_name("FIELD");
    DescribeOutput(analyze, options.output, "Write the result document there as well");
}

ExitStatus Report(const std::string& line, ExitStatus status) {
    std::cerr << "tarn: " << line << "\n";
    return status;
}

/// What CLI11 refuses is wrong usage, told in one line; help and version are answers.
ExitStatus Explain(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        app.exit(error);
        return ExitStatus::kDone;
    }
    // An argument that nothing takes is the likelier mistake than the one that it leaves missing.
    const std::vector<std::string> unknown = app.remaining(true);
    std::string mistake = error.what();
    if (!unknown.empty()) {
        std::vector<std::string> names;
        for (const CLI::App* command : app.get_subcommands(nullptr)) {
            names.push_back(command->get_name());
            if (!command->parsed()) continue;
            for (const CLI::Option* option : command->get_options()) names.push_back(option->get_name());
        }
        const std::vector<std::string_view> known(names.begin(), names.end());
        mistake = "unknown argument " + tarn::Quoted(unknown.front());
        const std::vector<std::string_view> nearest = tarn::NearestNames(unknown.front(), known);
        if (!nearest.empty()) mistake += ", did you mean " + std::string(nearest.front()) + "?";
    }
    return Report(mistake + "; tarn --help tells what can be typed", ExitStatus::kWrongUsage);
}

ExitStatus Execute(int argc, char** argv) {
    CLI::App app("Nonparametric tests of one, related and independent samples.", "tarn");
    app.set_version_flag("--version", "tarn " TARN_VERSION);
    app.require_subcommand(1);
    RunOptions runOptions;
    AnalyzeOptions analyzeOptions;
    CLI::App* analyze = app.add_subcommand("analyze", "Test fields of a table and show the results");
    CLI::App* run = app.add_subcommand("run", "Run tests on a table and write the result document");
    CLI::App* tests = app.add_subcommand("tests", "List the names of the tests");
    CLI::App* show = app.add_subcommand("show", "Tell a stored result document");
    std::string resultPath;
    tarn::ReportFormat shownFormat = tarn::ReportFormat::kText;
    show->add_option("RESULT", resultPath, "A result document, or - for standard input")->required()->type_name("FILE");
    AddFormat(*show, "How to tell it: text (the default), json, csv or xml",
              [&shownFormat](tarn::ReportFormat format) { shownFormat = format; });
    CLI::App* explain = app.add_subcommand("explain", "Tell what a code or a test means");
    std::string topic;
    explain->add_option("TOPIC", topic, "A code of a message, or the name of a test")->required()->type_name("TOPIC");
    DescribeAnalyze(*analyze, analyzeOptions);
    DescribeRun(*run, runOptions);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return Explain(app, error);
    }
    if (tests->parsed()) return tarn::ListTests();
    if (show->parsed()) return tarn::Show(resultPath, shownFormat);
    if (explain->parsed()) return tarn::ExplainTopic(topic);
    return run->parsed() ? tarn::Run(runOptions) : tarn::Analyze(analyzeOptions);
}

}  // namespace

int main(int argc, char** argv) {
    ExitStatus status = ExitStatus::kRunFailed;
    try {
        status = Execute(argc, argv);
    } catch (const tarn::InputError& error) {
        status = Report(error.what(), ExitStatus::kWrongUsage);
    } catch (const std::bad_alloc&) {
        status = Report("not enough memory", ExitStatus::kRunFailed);
    } catch (const std::exception& error) {
        status = Report(error.what(), ExitStatus::kRunFailed);
    }
    return static_cast<int>(status);
}
