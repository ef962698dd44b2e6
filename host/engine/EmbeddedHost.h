#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/engine/EngineLibrary.h"
#include "host/table/Table.h"

namespace tarn {

/// A message of the engine to its host. A code is the whole message; its text is the host's.
struct EngineMessage {
    bool isError = false;
    long code = 0;
    std::vector<std::string> parameters;
};

/// What a run left.
struct EngineOutcome {
    /// Whether a result document came.
    bool succeeded = false;
    std::string document;
    /// In the order in which they came, warnings of a run that succeeded included.
    std::vector<EngineMessage> messages;
};

/// What a run needs besides its table.
struct EngineRun {
    std::string settingsDocument;
    std::string applicationName;
    std::string applicationVersion;
    /// Called with 0 to 100, on the thread of the run. May be empty.
    std::function<void(double percent)> onProgress;
    /// Asked from another thread some times a second; true stops the run. May be empty.
    std::function<bool()> isCancelled;
};

/// Runs a request on a table the whole way of a host: makes a component, hands it settings and data model, prepares
/// the data as its requirements say, executes it, and takes the document out of its container. Runs may go on at the
/// same time, each on a thread of its own. Throws an `InputError` for a table that the engine can't be given, and a
/// `std::runtime_error` if the engine breaks a rule of the interface.
EngineOutcome RunInEngine(const EngineLibrary& engine, const Table& table, const EngineRun& run);

/// What the engine says of itself: the root "ModuleInformation" with name, provider, version and copyright. Throws a
/// `std::runtime_error` if it says nothing.
std::string ModuleInformation(const EngineLibrary& engine);

}  // namespace tarn
