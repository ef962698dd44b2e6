// The command line: says what can be typed, and hands what was typed to a command. One file per command.

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "apps/tarn/RunCommand.h"
#include "host/InputError.h"

namespace {

using tarn::ExitStatus;
using tarn::RunOptions;

void DescribeRun(CLI::App& run, RunOptions& options) {
    run.add_option("--data", options.dataPath, "The table: a CSV file with a header row, or - for standard input")
        ->required()
        ->type_name("FILE");
    run.add_option("--fields", options.fieldsPath, "What the columns are: a table descriptor in JSON")
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
    run.add_option("--out", options.outPath, "Write the result document there instead of to standard output")
        ->type_name("FILE");
    run.add_option("--weight", options.weightField, "The field with the frequency weights")->type_name("FIELD");
    run.add_option("--case-id", options.caseIdField, "The field that names the cases")->type_name("FIELD");
    run.add_option("--nominal", options.nominal, "Fields that are nominal")->delimiter(',')->type_name("FIELD,..");
    run.add_option("--ordinal", options.ordinal, "Fields that are ordinal")->delimiter(',')->type_name("FIELD,..");
    run.add_option("--continuous", options.continuous, "Fields that are continuous")
        ->delimiter(',')
        ->type_name("FIELD,..");
    run.add_flag("--quiet", options.quiet, "Show neither a progress bar nor the table of results");
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
    const std::string mistake =
        unknown.empty() ? std::string(error.what()) : "unknown argument " + tarn::Quoted(unknown.front());
    return Report(mistake + "; tarn --help tells what can be typed", ExitStatus::kWrongUsage);
}

ExitStatus Execute(int argc, char** argv) {
    CLI::App app("Nonparametric tests of one, related and independent samples.", "tarn");
    app.set_version_flag("--version", "tarn " TARN_VERSION);
    app.require_subcommand(1);
    app.failure_message(CLI::FailureMessage::simple);
    RunOptions runOptions;
    CLI::App* run = app.add_subcommand("run", "Run tests on a table and write the result document");
    DescribeRun(*run, runOptions);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return Explain(app, error);
    }
    return tarn::Run(runOptions);
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
