// The module that the package stands on: the data of a call, its run, and the result as texts. It checks and names
// nothing that a user sees: that is for the package.

#include <nanobind/nanobind.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string_view.h>
#include <nanobind/stl/tuple.h>

#include <new>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "host/InputError.h"
#include "host/TestNames.h"
#include "host/WholeFile.h"
#include "host/report/AdjustedPValues.h"
#include "host/report/Explanation.h"
#include "host/report/HtmlReport.h"
#include "machine/ExceptionStorage.h"
#include "python/src/ArgumentCasters.h"
#include "python/src/AttendedWork.h"
#include "python/src/CallData.h"
#include "python/src/Calls.h"
#include "python/src/Report.h"
#include "python/src/Request.h"

namespace nb = nanobind;

namespace {

using namespace nb::literals;
using Unlocked = nb::call_guard<nb::gil_scoped_release>;
using tarn::CallData;
using tarn::DataLook;
using tarn::Report;
using tarn::Request;

/// Name, family, title and question of each test that can be asked for.
std::vector<std::tuple<std::string, std::string, std::string, std::string>> ListOfTests() {
    std::vector<std::tuple<std::string, std::string, std::string, std::string>> tests;
    for (const tarn::TestName& test : tarn::TestNames()) {
        const tarn::TestTexts& texts = *tarn::MessageCatalogue::English().Test(test.resultName);
        tests.emplace_back(texts.name, texts.family, texts.title, texts.question);
    }
    return tests;
}

Report Run(CallData& data, bool isPlan, const std::string& name, const std::string& json, const std::string& weights,
           unsigned threads, std::size_t memory, bool isStrict, bool isExtended, bool isBrief,
           const std::string& libraryFolder, nb::object onProgress) {
    return RunOnData(data, isPlan, name, json, {weights, threads, memory, isStrict, isExtended, isBrief},
                     {libraryFolder, std::move(onProgress)});
}

/// Throws an `InputError` for a name of the request that none of these columns has.
void CheckColumns(const Request& request, const std::vector<std::string>& columns) {
    request.Columns().Check({columns.begin(), columns.end()});
}

/// `adjust`: the name of a method, "" for none.
Report Join(const std::vector<std::pair<std::string, Report>>& reports, const std::string& adjust) {
    return Report::Joined(reports, tarn::AdjustmentOf(adjust));
}

/// The significances of one family adjusted by the method of that name. NaN stays, and doesn't count.
std::vector<double> AdjustedBy(const std::vector<double>& pValues, const std::string& adjust) {
    return tarn::Adjusted(pValues, tarn::AdjustmentOf(adjust).value());
}

void AddData(nb::module_& m) {
    nb::class_<CallData>(m, "Data")
        .def(nb::init<>())
        .def("add_stream", &CallData::AddStream, "capsule"_a, "name"_a)
        .def("add_numbers", &CallData::AddNumbers, "name"_a, "format"_a, "values"_a, "are_booleans"_a)
        .def("add_texts", &CallData::AddTexts, "name"_a, "format"_a, "codes"_a, "texts"_a, "are_listed"_a,
             "are_ordered"_a)
        .def("add_number_codes", &CallData::AddNumberCodes, "name"_a, "format"_a, "codes"_a, "numbers"_a,
             "are_booleans"_a, "are_ordered"_a)
        .def("add_samples", &CallData::AddSamples, "name"_a, "group"_a, "samples"_a, "names"_a, "are_ordered"_a)
        .def("add_refused", &CallData::AddRefused, "name"_a, "what"_a);
    nb::class_<Request>(m, "Request")
        .def(nb::init<const std::string&>(), "json"_a)
        .def(
            "wants", [](const Request& request, const std::string& column) { return request.Columns().Wants(column); },
            "column"_a)
        .def("check", &CheckColumns, "columns"_a);
}

void AddResults(nb::module_& m) {
    nb::class_<Report::Figures>(m, "Figures")
        .def_ro("kind", &Report::Figures::kind)
        .def_ro("statistic", &Report::Figures::statistic)
        .def_ro("pvalue", &Report::Figures::pvalue);
    nb::class_<Report>(m, "Report")
        .def_prop_ro("document", &Report::Document)
        .def_prop_ro("notes", &Report::Notes)
        .def_prop_ro("remarks", &Report::Remarks)
        .def_prop_ro("is_done", &Report::IsDone)
        .def_prop_ro("failure_code", &Report::FailureCode)
        .def("deciding", &Report::Deciding, Unlocked())
        .def("chosen", &Report::Chosen, Unlocked())
        .def("text", &Report::Text, "is_full"_a, Unlocked())
        .def("json", &Report::Json, Unlocked())
        .def("csv", &Report::Csv, Unlocked())
        .def("in_format", &Report::InFormat, "format"_a, Unlocked())
        .def("has_cases", &Report::HasCases, Unlocked())
        .def(
            "html",
            [](const Report& report, const std::string& request, std::vector<std::string> notes, bool withPlots,
               bool withSteps) {
                return report.Html(request, std::move(notes), {withPlots, withSteps});
            },
            "request"_a, "notes"_a, "with_plots"_a, "with_steps"_a, Unlocked())
        .def("html_of", &Report::HtmlOf, "test"_a, "id"_a, Unlocked())
        .def("svg", &Report::Svg, "test"_a, Unlocked())
        .def("explanation", &Report::Explanation, "test"_a, Unlocked())
        .def("part_count", &Report::PartCount)
        .def("part", &Report::PartAt, "place"_a)
        .def("add_note", &Report::AddNote, "note"_a);
    nb::class_<tarn::FieldLook>(m, "FieldLook")
        .def_ro("name", &tarn::FieldLook::name)
        .def_ro("kind", &tarn::FieldLook::kind)
        .def_ro("values", &tarn::FieldLook::values)
        .def_ro("remarks", &tarn::FieldLook::remarks);
    nb::class_<DataLook>(m, "DataLook")
        .def_prop_ro("title", [](const DataLook& look) { return look.look.title; })
        .def_prop_ro("fields", [](const DataLook& look) { return look.look.fields; })
        .def_prop_ro("calls", [](const DataLook& look) { return look.look.calls; })
        .def_ro("others", &DataLook::others);
}

/// All objects of the package stand in one table of nanobind's, which grows where nothing can be thrown: no memory for
/// that ends the process. It never shrinks, so that what is live at once up to this number needs none later.
void MakeRoomForObjects(nb::module_& m) {
    constexpr std::size_t kLiveObjects = 1024;
    std::vector<nb::object> objects;
    for (std::size_t i = 0; i < kLiveObjects; ++i) objects.push_back(m.attr("Data")());
}

}  // namespace

NB_MODULE(_binding, m) {
    m.doc() = "The engine of tarn, for the package alone.";
    m.attr("version") = TARN_VERSION;
    nb::exception<tarn::InputError>(m, "InputMistake", PyExc_ValueError);
    if (!PreparesForExceptions()) throw std::bad_alloc();
    AddData(m);
    MakeRoomForObjects(m);
    AddResults(m);
    m.def(
        "analyze",
        [](CallData& data, Request& request, const std::string& libraryFolder, nb::object onProgress, bool isLater) {
            return AnalyzeData(data, request, {libraryFolder, std::move(onProgress)}, isLater);
        },
        "data"_a, "request"_a, "library_folder"_a, "on_progress"_a.none(), "is_later"_a);
    m.def("run", &Run, "data"_a, "is_plan"_a, "name"_a, "json"_a, "weights"_a, "threads"_a, "memory"_a, "is_strict"_a,
          "is_extended"_a, "is_brief"_a, "library_folder"_a, "on_progress"_a.none());
    m.def("look", &tarn::LookAtData, "data"_a, "name"_a, "memory"_a);
    m.def("load", &tarn::LoadDocument, "path"_a, Unlocked());
    m.def(
        "explain", [](const std::string& topic) { return tarn::Explanation(topic, tarn::MessageCatalogue::English()); },
        "topic"_a);
    m.def("join", &Join, "reports"_a, "adjust"_a, Unlocked());
    m.def("adjusted", &AdjustedBy, "pvalues"_a, "adjust"_a, Unlocked());
    m.def("tests", &ListOfTests);
    m.def("style_sheet", &tarn::HtmlStyleSheet);
    m.def("write", &tarn::WriteWholeFile, "path"_a, "content"_a, Unlocked());
}
