#include "host/engine/EmbeddedHost.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <new>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "host/engine/DataModelDocument.h"
#include "host/engine/PreparedData.h"
#include "host/engine/Requirements.h"
#include "platform/hx/HXDocuments.h"

namespace tarn {

namespace {

/// Puts a text into a buffer by the rule of the interface.
unsigned GiveText(const std::string& text, char* buffer, std::size_t size, std::size_t* needed) {
    *needed = text.size() + 1;
    if (*needed > size) return HX_BUFFER_TOO_SMALL;
    std::memcpy(buffer, text.c_str(), *needed);
    return HX_OK;
}

/// Takes a text of any length from a function of the interface; empty where it fails.
template <typename Function>
std::string TakeText(Function function) {
    std::size_t needed = 0;
    int errorCode = 0;
    function(nullptr, 0, &needed, &errorCode);
    std::string text(needed, '\0');
    if (needed == 0 || function(text.data(), text.size(), &needed, &errorCode) != HX_OK) return {};
    text.pop_back();  // the terminating zero
    return text;
}

/// The records of prepared data: its columns as they are, or for a library that asks for rows blocks of them, which are
/// gathered one after the other.
class RecordStream {
 public:
    explicit RecordStream(const PreparedData& data) : data_(data), functions_{this, &Rewind, &NextBlock, &Columns} {}
    RecordStream(const RecordStream&) = delete;
    RecordStream& operator=(const RecordStream&) = delete;

    HXIterator* Functions() { return &functions_; }

 private:
    static unsigned Rewind(void* handle, int*) {
        static_cast<RecordStream*>(handle)->next_ = 0;
        return HX_OK;
    }
    static unsigned NextBlock(void* handle, const double** values, std::size_t* recordCount, std::size_t* fieldCount,
                              int* errorCode);
    static unsigned Columns(void* handle, const double* const** columns, std::size_t* recordCount,
                            std::size_t* fieldCount, int*) {
        const PreparedData& data = static_cast<RecordStream*>(handle)->data_;
        *columns = data.columns.data();
        *recordCount = data.recordCount;
        *fieldCount = data.fields.size();
        return HX_OK;
    }

    const PreparedData& data_;
    std::size_t next_ = 0;
    std::vector<double> block_;
    HXIterator functions_;
};

unsigned RecordStream::NextBlock(void* handle, const double** values, std::size_t* recordCount, std::size_t* fieldCount,
                                 int* errorCode) {
    constexpr std::size_t kBlockRecords = 4096;
    auto& stream = *static_cast<RecordStream*>(handle);
    const PreparedData& data = stream.data_;
    const std::size_t width = data.fields.size();
    const std::size_t count = std::min(kBlockRecords, data.recordCount - stream.next_);
    try {
        stream.block_.resize(count * width);
    } catch (const std::exception&) {
        *errorCode = HX_ERROR_OUT_OF_MEMORY;
        return HX_FAILED;
    }
    for (std::size_t field = 0; field < width; ++field) {
        const double* const column = data.columns[field] + stream.next_;
        for (std::size_t i = 0; i < count; ++i) stream.block_[i * width + field] = column[i];
    }
    stream.next_ += count;
    *values = stream.block_.data();
    *recordCount = count;
    *fieldCount = width;
    return HX_OK;
}

/// Keeps what a component puts into its container.
class MemoryContainer {
 public:
    MemoryContainer() : functions_{this, &SetMetadata, &PutString, &Close} {}
    MemoryContainer(const MemoryContainer&) = delete;
    MemoryContainer& operator=(const MemoryContainer&) = delete;

    HXContainer* Functions() { return &functions_; }
    bool IsComplete() const { return isClosed_ && hasContent_; }
    /// Gives up what it keeps.
    std::string TakeContent() { return std::move(content_); }

 private:
    static unsigned SetMetadata(void*, const char*, const char* fileName, int*) {
        return std::strcmp(fileName, HX_RESULT_FILE_NAME) == 0 ? HX_OK : HX_FAILED;
    }
    static unsigned PutString(void* handle, const char* text, std::size_t length, int* errorCode);
    static unsigned Close(void* handle, int*) {
        static_cast<MemoryContainer*>(handle)->isClosed_ = true;
        return HX_OK;
    }

    std::string content_;
    bool hasContent_ = false;
    bool isClosed_ = false;
    HXContainer functions_;
};

unsigned MemoryContainer::PutString(void* handle, const char* text, std::size_t length, int* errorCode) {
    auto& container = *static_cast<MemoryContainer*>(handle);
    try {
        container.content_.assign(text, length);
    } catch (const std::exception&) {
        *errorCode = HX_ERROR_OUT_OF_MEMORY;
        return HX_FAILED;
    }
    container.hasContent_ = true;
    return HX_OK;
}

// ---- The host of the process ----

/// The run that this thread is in, null outside one.
thread_local const EngineRun* runOfThread = nullptr;

/// What the application says of itself. The library asks on the thread of the run; outside a run it gets empty texts.
unsigned GetInformation(void*, int item, char* buffer, std::size_t size, std::size_t* needed, int*) {
    const EngineRun* const run = runOfThread;
    if (run == nullptr) return GiveText("", buffer, size, needed);
    if (item == HX_APPLICATION_NAME) return GiveText(run->applicationName, buffer, size, needed);
    if (item == HX_APPLICATION_VERSION) return GiveText(run->applicationVersion, buffer, size, needed);
    return GiveText("", buffer, size, needed);
}

/// Gives the library its host. It keeps the pointer for good, and runs on other threads take it from there: so there is
/// one host that outlives them all, and what belongs to a run is found by the thread.
void Initialise(const EngineLibrary& engine) {
    static HXHost host{nullptr, HX_INTERFACE_VERSION, &GetInformation};
    engine.initialise(&host);
}

// ---- A run ----

/// One run: the functions that the component calls, over what they answer with.
class HostedRun {
 public:
    HostedRun(const EngineLibrary& engine, const Table& table, const EngineRun& run);
    HostedRun(const HostedRun&) = delete;
    HostedRun& operator=(const HostedRun&) = delete;
    ~HostedRun();

    EngineOutcome Run();

 private:
    void Execute();
    void NoteFailure(int errorCode);
    static HostedRun& Of(void* handle) { return *static_cast<HostedRun*>(handle); }

    // The functions of the context and the progress.
    static unsigned GetSettings(void* handle, char* buffer, std::size_t size, std::size_t* needed, int*);
    static unsigned GetDataModel(void* handle, int, int stage, char* buffer, std::size_t size, std::size_t* needed,
                                 int*);
    static unsigned TakeMessage(void* handle, int type, int code, const char* const* parameters,
                                std::size_t parameterCount, int* errorCode);
    static unsigned GetModelId(void*, int* id, int*);
    static unsigned GetInputIterator(void* handle, int, HXIterator** iterator, int*);
    static unsigned DeclareOutputs(void*, const int*, int, int*) { return HX_OK; }
    static unsigned OpenOutputContainer(void* handle, const char*, int, HXContainer** container, int*);
    static unsigned ReportProgress(void* handle, double step, double total, int, int*);

    const EngineLibrary& engine_;
    const Table& table_;
    const EngineRun& run_;
    PreparedData data_;
    std::string sourceModel_;
    std::string executionModel_;
    RecordStream records_{data_};
    MemoryContainer container_;
    EngineOutcome outcome_;
    HXContext context_{};
    HXProgress progress_{};
    void* component_ = nullptr;
    /// A progress report may begin another run on this thread, which is over when it returns.
    const EngineRun* outerRun_;
};

HostedRun::HostedRun(const EngineLibrary& engine, const Table& table, const EngineRun& run)
    : engine_(engine),
      table_(table),
      run_(run),
      sourceModel_(MakeDataModel(table)),
      outerRun_(std::exchange(runOfThread, &run)) {
    context_.handle = this;
    context_.GetSettings = &GetSettings;
    context_.GetDataModel = &GetDataModel;
    context_.TakeMessage = &TakeMessage;
    context_.GetModelId = &GetModelId;
    context_.GetInputIterator = &GetInputIterator;
    context_.DeclareOutputs = &DeclareOutputs;
    context_.OpenOutputContainer = &OpenOutputContainer;
    progress_.handle = this;
    progress_.Report = &ReportProgress;
}

HostedRun::~HostedRun() {
    runOfThread = outerRun_;
    if (component_ == nullptr) return;
    int errorCode = 0;
    engine_.endExecution(component_, &errorCode);
    engine_.destroyComponent(component_);
}

EngineOutcome HostedRun::Run() {
    int errorCode = 0;
    Initialise(engine_);
    if (engine_.createComponent(&context_, nullptr, &component_, &errorCode) != HX_OK) {
        throw std::bad_alloc();  // for no other reason
    }
    if (engine_.configure(component_, &errorCode) != HX_OK) {
        NoteFailure(errorCode);
        return std::move(outcome_);
    }

    const Requirements requirements = ReadRequirements(
        TakeText([&](auto... arguments) { return engine_.getExecutionRequirements(component_, arguments...); }));
    data_ = PrepareData(table_, requirements);
    executionModel_ = MakeDataModel(data_);
    Execute();
    outcome_.succeeded = outcome_.succeeded && container_.IsComplete();
    outcome_.document = container_.TakeContent();
    return std::move(outcome_);
}

void HostedRun::Execute() {
    // The engine is busy on this thread until it is done, so another one watches for the user.
    std::mutex mutex;
    std::condition_variable_any pause;
    std::jthread watcher;
    if (run_.isCancelled) {
        // Nothing in it allocates: nobody could take what it throws.
        const auto watch = [&](const std::stop_token& done) {
            constexpr std::chrono::milliseconds kPause(10);
            std::unique_lock lock(mutex);
            while (!done.stop_requested()) {
                int errorCode = 0;
                if (run_.isCancelled()) engine_.cancelExecution(component_, &errorCode);
                pause.wait_for(lock, done, kPause, [] { return false; });
            }
        };
        try {
            watcher = std::jthread(watch);
        } catch (const std::system_error&) {
            // There is no other thread to be had: the run goes on and can't be stopped.
        }
    }
    int errorCode = 0;
    outcome_.succeeded = engine_.beginExecution(component_, &progress_, &errorCode) == HX_OK;
    if (!outcome_.succeeded) NoteFailure(errorCode);
}

/// A component without memory may fail without a message; the code says why.
void HostedRun::NoteFailure(int errorCode) {
    if (outcome_.messages.empty() && errorCode != 0) outcome_.messages.push_back({true, errorCode, {}});
}

unsigned HostedRun::GetSettings(void* handle, char* buffer, std::size_t size, std::size_t* needed, int*) {
    return GiveText(Of(handle).run_.settingsDocument, buffer, size, needed);
}

unsigned HostedRun::GetDataModel(void* handle, int, int stage, char* buffer, std::size_t size, std::size_t* needed,
                                 int*) {
    const HostedRun& hosted = Of(handle);
    return GiveText(stage == HX_MODEL_OF_SOURCE ? hosted.sourceModel_ : hosted.executionModel_, buffer, size, needed);
}

unsigned HostedRun::TakeMessage(void* handle, int type, int code, const char* const* parameters,
                                std::size_t parameterCount, int* errorCode) {
    try {
        Of(handle).outcome_.messages.push_back(
            {type == HX_MESSAGE_ERROR, code, std::vector<std::string>(parameters, parameters + parameterCount)});
    } catch (const std::exception&) {
        *errorCode = HX_ERROR_OUT_OF_MEMORY;
        return HX_FAILED;
    }
    return HX_OK;
}

unsigned HostedRun::GetModelId(void*, int* id, int*) {
    *id = 0;
    return HX_OK;
}

unsigned HostedRun::GetInputIterator(void* handle, int, HXIterator** iterator, int*) {
    *iterator = Of(handle).records_.Functions();
    return HX_OK;
}

unsigned HostedRun::OpenOutputContainer(void* handle, const char*, int, HXContainer** container, int*) {
    *container = Of(handle).container_.Functions();
    return HX_OK;
}

unsigned HostedRun::ReportProgress(void* handle, double step, double total, int, int*) {
    const EngineRun& run = Of(handle).run_;
    try {
        if (run.onProgress && total > 0) run.onProgress(step / total * 100);
    } catch (const std::exception&) {
        return HX_FAILED;  // nothing is thrown across the boundary, and a report can't fail the run
    }
    return HX_OK;
}

}  // namespace

EngineOutcome RunInEngine(const EngineLibrary& engine, const Table& table, const EngineRun& run) {
    return HostedRun(engine, table, run).Run();
}

std::string ModuleInformation(const EngineLibrary& engine) {
    Initialise(engine);
    std::string text = TakeText([&](auto... arguments) { return engine.getModuleInformation(arguments...); });
    if (text.empty()) throw std::runtime_error("the engine tells no module information");
    return text;
}

}  // namespace tarn
