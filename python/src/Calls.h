#pragma once

#include <nanobind/nanobind.h>

#include <string>
#include <utility>
#include <vector>

#include "host/analysis/TableLook.h"
#include "python/src/CallData.h"
#include "python/src/Report.h"
#include "python/src/Request.h"

namespace tarn {

// What the package offers, each from the data of a call to what it leaves. Called with the interpreter locked, which is
// free while they work. They raise what a signal or the function of the progress raises meanwhile.

/// Where the library of the engine stands, and who wants to see the progress: a function of the percent, or None.
struct CallEnvironment {
    std::string libraryFolder;
    nanobind::object onProgress;
};

/// Analyses the data as a request asks. `isLater`: what stands beside the document of a whole analysis is worked out
/// when it is asked for, and the report keeps the table until then.
Report AnalyzeData(CallData& data, Request& request, const CallEnvironment& environment, bool isLater);

/// How a plan or a request in the terms of the engine is run.
struct RunWishes {
    std::string weights;  ///< a column; "" for none
    unsigned threads = 0;
    std::size_t memory = 0;   ///< bytes that table and run may take; 0: half of the machine, and what it takes
    bool isStrict = false;    ///< whether what the engine would pass over is a mistake
    bool isExtended = false;  ///< whether it computes as wide as needed
    bool isBrief = false;
};

/// Runs a plan (`isPlan`) or a request, a text in JSON that `name` stands for in messages, on all columns that can be
/// tested. What the engine passes over is among the remarks.
Report RunOnData(CallData& data, bool isPlan, const std::string& name, const std::string& json, const RunWishes& wishes,
                 const CallEnvironment& environment);

/// A first look at all columns, with the names of those that can't be tested and what they hold.
struct DataLook {
    TableLook look;
    std::vector<std::pair<std::string, std::string>> others;
};
/// `memory`: bytes that the table may take; 0: half of the machine.
DataLook LookAtData(CallData& data, const std::string& name, std::size_t memory);

/// Reads a stored document. Throws an `InputError` for a file that is none.
Report LoadDocument(const std::string& path);

}  // namespace tarn
