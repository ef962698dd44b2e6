// The module that the package stands on: the data of a call, its run, and the result as texts. It checks and names
// nothing that a user sees: that is for the package.

#include <nanobind/nanobind.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/string_view.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "host/ByteSource.h"
#include "host/InputError.h"
#include "host/TestNames.h"
#include "host/WholeFile.h"
#include "host/analysis/Analysis.h"
#include "host/report/CsvReport.h"
#include "host/report/Explanation.h"
#include "host/report/JsonReport.h"
#include "host/report/TextReport.h"
#include "python/src/AttendedWork.h"
#include "python/src/Request.h"
#include "python/src/TableInput.h"

namespace nb = nanobind;

namespace tarn {

namespace {

const MessageCatalogue& Texts() {
    return MessageCatalogue::English();
}

// ---- Data ----

/// Memory that a Python object lends by the buffer protocol.
class LentMemory {
 public:
    explicit LentMemory(nb::handle owner) {
        if (PyObject_GetBuffer(owner.ptr(), &view_, PyBUF_C_CONTIGUOUS) != 0) throw nb::python_error();
    }
    LentMemory(const LentMemory&) = delete;
    LentMemory& operator=(const LentMemory&) = delete;
    ~LentMemory() {
        const nb::gil_scoped_acquire locked;
        PyBuffer_Release(&view_);
    }

    const void* Values() const { return view_.buf; }
    std::int64_t Count() const { return view_.itemsize == 0 ? 0 : view_.len / view_.itemsize; }

 private:
    Py_buffer view_{};
};

/// The data of one call.
class Data {
 public:
    Data() = default;
    Data(const Data&) = delete;
    Data& operator=(const Data&) = delete;

    /// A stream of the Arrow C interface in its capsule, which is used up. `name`: of the column, where the stream has
    /// one; "" for a stream of whole rows.
    void AddStream(const nb::capsule& capsule, const std::string& name) {
        auto* const stream = static_cast<ArrowArrayStream*>(PyCapsule_GetPointer(capsule.ptr(), "arrow_array_stream"));
        if (stream == nullptr) throw nb::python_error();
        if (stream->release == nullptr) throw InputError("the data was read before; expected some that is new");
        sources_.push_back(std::make_unique<StreamSource>(*stream, name));
    }

    /// Numbers in a buffer; `format` as the Arrow C interface writes it.
    void AddNumbers(const std::string& name, const std::string& format, nb::handle values, bool areBooleans) {
        InputColumn column;
        column.name = name;
        column.format = ReadColumnFormat(format);
        column.type = areBooleans ? FieldType::kBoolean : column.format.Type();
        AddMemory(std::move(column), values);
    }

    /// Codes in a buffer, from 0 and below 0 for what is missing, with the texts that they stand for.
    void AddTexts(const std::string& name, const std::string& format, nb::handle codes,
                  const std::vector<std::string>& texts, bool areListed, bool areOrdered) {
        AddMemory(CodedColumn(name, format, "U", areListed, areOrdered), codes).SetEntries(texts);
    }

    /// The same with numbers.
    void AddNumberCodes(const std::string& name, const std::string& format, nb::handle codes,
                        std::vector<double> numbers, bool areBooleans, bool areOrdered) {
        InputColumn column = CodedColumn(name, format, "g", true, areOrdered);
        if (areBooleans) column.type = FieldType::kBoolean;
        AddMemory(std::move(column), codes).SetEntries(std::move(numbers));
    }

    /// A column that can't be tested, with what it holds: it is refused where a test asks for it.
    void AddRefused(const std::string& name, const std::string& what) {
        InputColumn column;
        column.name = name;
        column.format.refused = what;
        sources_.push_back(std::make_unique<MemorySource>(std::move(column), nullptr, 0, nullptr));
    }

    InputData Take() { return std::exchange(sources_, {}); }

 private:
    static InputColumn CodedColumn(const std::string& name, const std::string& format, const char* entries,
                                   bool areListed, bool areOrdered) {
        InputColumn column;
        column.name = name;
        column.codes = ReadColumnFormat(format);
        column.format = ReadColumnFormat(entries);
        column.type = column.format.Type();
        column.isListed = areListed;
        column.isOrdered = areOrdered;
        return column;
    }

    MemorySource& AddMemory(InputColumn column, nb::handle values) {
        const auto memory = std::make_shared<LentMemory>(values);
        auto source = std::make_unique<MemorySource>(std::move(column), memory->Values(), memory->Count(), memory);
        MemorySource& added = *source;
        sources_.push_back(std::move(source));
        return added;
    }

    InputData sources_;
};

// ---- Results ----

/// What a call leaves, from which its texts are made when they are asked for.
struct Report {
    std::string document;
    ResultReading reading;
    std::vector<std::string> notes;
    std::vector<std::string> remarks;  ///< what the engine says of the run
    bool isDone = true;                ///< whether there is a result
    long failureCode = 0;

    std::string Text() const { return TextReport(reading, Texts(), {}, notes); }
    std::string Json() const { return JsonReport(reading, Texts(), notes); }
    std::string Csv() const { return CsvReport(reading, Texts()); }
};

/// Reads the data and runs the request. Raises what a signal or the function of the progress raises meanwhile.
Report Analyse(Data& data, const std::string& requestJson, const std::string& libraryFolder, nb::object onProgress) {
    const Request request = ReadRequest(requestJson);
    InputData sources = data.Take();
    AttendedWork attended(std::move(onProgress));
    AnalysisEnvironment environment;
    environment.applicationVersion = TARN_VERSION;
    environment.libraryFolders = {libraryFolder};
    environment.threads = request.load.threads;
    environment.onProgress = [&attended](double percent) { attended.Report(percent); };
    environment.isCancelled = [&attended] { return attended.IsCancelled(); };

    // Libraries may want their data to be read on the thread that they lent it on.
    Table table;
    {
        const nb::gil_scoped_release unlocked;
        table = ReadTable(sources, request.Fields(), request.load, &AttendedWork::HearSignals);
        sources.clear();
    }
    Report report;
    attended.Run([&] {
        PrepareTable(table, request.analysis);
        AnalysisOutcome outcome = Analyze(table, request.analysis, environment);
        report.notes = std::move(outcome.notes);
        report.remarks = std::move(outcome.remarks);
        report.isDone = outcome.succeeded;
        report.failureCode = outcome.failureCode;
        if (!outcome.succeeded) return;
        report.document = outcome.document;
        report.reading = ReadAnalysis(std::move(outcome.document), request.analysis, environment);
        SupplyFigures(report.reading, table, request.analysis, request.supplement, environment);
    });
    return report;
}

Report Load(const std::string& path) {
    ByteSource source(path);
    Report report;
    report.document = source.ReadAll();
    report.reading = ReadAll(ReadResult(report.document, source.Name()), Texts());
    return report;
}

/// Name, family, title and question of each test that can be asked for.
std::vector<std::tuple<std::string, std::string, std::string, std::string>> Tests() {
    std::vector<std::tuple<std::string, std::string, std::string, std::string>> tests;
    for (const TestName& test : TestNames()) {
        const TestTexts& texts = *Texts().Test(test.resultName);
        tests.emplace_back(texts.name, texts.family, texts.title, texts.question);
    }
    return tests;
}

}  // namespace

}  // namespace tarn

NB_MODULE(_binding, m) {
    using tarn::Data;
    using tarn::Report;
    using Unlocked = nb::call_guard<nb::gil_scoped_release>;

    m.doc() = "The engine of tarn, for the package alone.";
    m.attr("__version__") = TARN_VERSION;
    nb::exception<tarn::InputError>(m, "InputMistake", PyExc_ValueError);

    nb::class_<Data>(m, "Data")
        .def(nb::init<>())
        .def("add_stream", &Data::AddStream, nb::arg("capsule"), nb::arg("name"))
        .def("add_numbers", &Data::AddNumbers, nb::arg("name"), nb::arg("format"), nb::arg("values"),
             nb::arg("are_booleans"))
        .def("add_texts", &Data::AddTexts, nb::arg("name"), nb::arg("format"), nb::arg("codes"), nb::arg("texts"),
             nb::arg("are_listed"), nb::arg("are_ordered"))
        .def("add_number_codes", &Data::AddNumberCodes, nb::arg("name"), nb::arg("format"), nb::arg("codes"),
             nb::arg("numbers"), nb::arg("are_booleans"), nb::arg("are_ordered"))
        .def("add_refused", &Data::AddRefused, nb::arg("name"), nb::arg("what"));

    nb::class_<Report>(m, "Report")
        .def_ro("document", &Report::document)
        .def_ro("notes", &Report::notes)
        .def_ro("remarks", &Report::remarks)
        .def_ro("is_done", &Report::isDone)
        .def_ro("failure_code", &Report::failureCode)
        .def("text", &Report::Text, Unlocked())
        .def("json", &Report::Json, Unlocked())
        .def("csv", &Report::Csv, Unlocked());

    m.def("analyze", &tarn::Analyse, nb::arg("data"), nb::arg("request"), nb::arg("library_folder"),
          nb::arg("on_progress").none());
    m.def("load", &tarn::Load, nb::arg("path"), Unlocked());
    m.def(
        "explain", [](const std::string& topic) { return tarn::Explanation(topic, tarn::Texts()); }, nb::arg("topic"));
    m.def("tests", &tarn::Tests);
    m.def("write", &tarn::WriteWholeFile, nb::arg("path"), nb::arg("content"), Unlocked());
}
