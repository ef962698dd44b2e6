#include "host/plan/PlanRun.h"

#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <utility>

#include "catalogue/TARNFactory.h"
#include "host/engine/KnownKeys.h"
#include "host/plan/PlanData.h"
#include "planning/TARNReporter.h"

namespace tarn {

namespace {

/// Hands on the engine's own reports.
class ProgressRelay : public ProgressListener {
 public:
    explicit ProgressRelay(const PlanRun& run) : run_(run) {}
    void OnProgress(ProgressReport& report) override {
        if (run_.onProgress) run_.onProgress(dynamic_cast<TARNReporter&>(report).GetCurrentStepNum());
    }

 private:
    const PlanRun& run_;
};

class CancelQuery : public QKQueryCancel {
 public:
    explicit CancelQuery(const PlanRun& run) : run_(run) {}
    bool IsCancelled() override { return run_.isCancelled && run_.isCancelled(); }

 private:
    const PlanRun& run_;
};

/// What is written to a stream, as a text. It grows in few steps, as each copies what is there: room that isn't written
/// to takes no memory where it counts, in a document of many megabytes.
class TextOfStream : public std::streambuf {
 public:
    std::string Take() { return std::move(text_); }

 protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        constexpr std::size_t kGrowth = 4;
        const std::size_t size = text_.size() + static_cast<std::size_t>(count);
        if (size > text_.capacity()) text_.reserve(kGrowth * size);
        text_.append(text, static_cast<std::size_t>(count));
        return count;
    }
    int_type overflow(int_type character) override {
        if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
        text_.push_back(traits_type::to_char_type(character));
        return character;
    }

 private:
    std::string text_;
};

EngineOutcome Failed(const QKStatus& status) {
    return {false, "", {{true, status.GetErrorCode(), {}}}};
}

}  // namespace

EngineOutcome RunInFactory(PlanSettings& plan, const Table& table, const PlanRun& run) {
    if (run.threads > 0) plan.settings.AddSetting(kThreads, static_cast<int>(run.threads));
    QKVarList varList = MakeVarList(table);
    TARNFactory factory;
    const std::unique_ptr<IQKAlgorithm> algorithm(factory.CreateQKAlgorithm(plan.settings, varList));
    if (algorithm == nullptr) return Failed(factory.GetStatus());

    CancelQuery query(run);
    ProgressRelay listener(run);
    algorithm->SetQueryCancel(&query);
    algorithm->SetProgressListener(&listener);
    TableRecords records(table);
    QKStatus status = algorithm->Run(records);
    if (status.IsError()) return Failed(status);

    TextOfStream text;
    std::ostream document(&text);
    document.exceptions(std::ios::badbit);  // or memory that runs out would end the text and no more
    status = algorithm->WriteResults(document, {run.applicationName, run.applicationVersion, ""});
    if (status.IsError()) return Failed(status);
    return {true, text.Take(), {}};
}

}  // namespace tarn
