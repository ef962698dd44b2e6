#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/common/IQKAlgorithm.h"
#include "platform/common/Progress.h"
#include "platform/hx/HXContext.h"
#include "platform/hx/HXHost.h"
#include "platform/hx/HXProgress.h"
#include "platform/peer/DataModelParser.h"
#include "platform/peer/HxCppHelper.h"

/// The base of a component: what every component does alike for a host. The order of the virtual operations is fixed.
///
/// Operations answer with a value of `HXStatus`. `errorCode` is never null and is written where something failed. A
/// text goes into a buffer by the rule that stands at `HXHost`; `needed` may be null.
class QKPeer {
 public:
    /// Borrows the context; of the host it keeps a copy, whose handle it borrows. Both may be null, and the component
    /// then can't be configured.
    QKPeer(HXContext* context, HXHost* host);
    QKPeer(const QKPeer&) = delete;
    QKPeer& operator=(const QKPeer&) = delete;
    virtual ~QKPeer();

    virtual unsigned Configure(int* errorCode) = 0;
    /// The model of the component's output, without fields. `index` is 0.
    virtual unsigned GetDataModel(int index, char* buffer, std::size_t size, std::size_t* needed, int* errorCode);
    /// Serves the document that was given to `SetExeRequirements`.
    virtual unsigned GetExecutionRequirements(char* buffer, std::size_t size, std::size_t* needed, int* errorCode);
    /// Fetches an input iterator from the context.
    virtual unsigned GetInputIterator(int inputIndex, HXIterator** iterator, int* errorCode);
    /// For components with several inputs.
    virtual unsigned BeginExecution(const std::vector<HXIterator*>& iterators, HXProgress* progress, int* errorCode);
    virtual unsigned BeginExecution(HXIterator* iterator, HXProgress* progress, int* errorCode) = 0;
    virtual unsigned EndExecution(int* errorCode) = 0;
    /// Turns the answer of the cancel query; may come from another thread while an execution runs.
    virtual unsigned CancelExecution(int* errorCode);
    /// There is none.
    virtual unsigned NextRecord(int* errorCode);
    /// There is none.
    virtual unsigned GetRecordValue(std::size_t index, void** value, std::size_t* size, int* errorCode);
    /// The collected messages, as a document.
    virtual unsigned GetErrorDetail(char* buffer, std::size_t size, std::size_t* needed, int* errorCode);

    // For components whose work is divided among processes; this base takes no part in it.
    virtual unsigned GetPSMControlInformation(int* errorCode);
    virtual unsigned PSMMerge(int* errorCode);
    virtual unsigned GetWorkerTask(int* errorCode);
    virtual unsigned GetWorkerDataModel(int* errorCode);
    virtual unsigned GetWorkerIterator(int* errorCode);
    virtual unsigned ReadWorkerInputContainer(int* errorCode);
    virtual unsigned FollowOnTaskStartExe(int* errorCode);
    virtual unsigned FollowOnTaskEndExe(int* errorCode);

    /// One input, read as often as the tests ask. `*passes` is the base's, valid as long as the library is loaded.
    virtual unsigned GetIteratorRequirements(long long* inputCount, long long** passes, long long* passCount,
                                             int* errorCode);
    virtual unsigned GetInputFieldsFixed(int* errorCode);
    virtual unsigned GetRecordSynchronizedProcessing(int* errorCode);
    virtual unsigned GetWorkerTaskNumber(int* errorCode);

    /// Takes the settings document. HX_OK, or anything else for a document that it can't take.
    virtual unsigned MakeSettings(HxCppHelperV1::XMLDocument& model, int* errorCode) = 0;

    HXContext* GetHXContextHandle() const { return context_; }
    /// Reports to the host that the work has come to `step` of `total`. `secondsLeft` is -1 where nobody knows.
    unsigned Report_Progress(double step, double total, int* errorCode, int secondsLeft) const;

 protected:
    /// Types of messages.
    static constexpr int kWarning = HX_MESSAGE_WARNING;
    static constexpr int kError = HX_MESSAGE_ERROR;

    /// Fetches the settings document and gives it to `MakeSettings`.
    unsigned ScanParameters(int* errorCode);
    /// Fetches the data model: of the source, or once it is prepared for an execution. `inputCount` is 1.
    unsigned ParseDataModel(int* errorCode, bool forExecution, int inputCount);
    void SetExeRequirements(const HxCppHelperV1::XMLDocument& document);

    /// Keeps a message for `GetErrorDetail` and hands it to the host, whose answer it returns.
    unsigned CollectMsgs(int type, long code, int* errorCode);
    unsigned CollectMsgs(int type, long code, const std::vector<std::string>& parameters, int* errorCode);
    void ClearMessages() { messages_.clear(); }
    /// Gives back what is no part of an execution; the component can only be destroyed after it.
    void ReleaseConfiguration() noexcept;

    /// False where there is no host to ask; the parameters are then empty.
    bool GetHostInformation(QKOutputParameters& parameters) const;

    /// Null where there is no usable host.
    const HxCppHelperV1::HostHelper* GetHostHelper() const { return hostHelper_.get(); }
    /// Null before a data model was parsed.
    const DataModelParser* GetDataModelParser() const { return dataModelParser_.get(); }
    /// Null outside an execution.
    HxCppHelperV1::DataHelper* GetDataHelper() const { return dataHelper_.get(); }
    void SetDataHelper(std::unique_ptr<HxCppHelperV1::DataHelper> dataHelper) { dataHelper_ = std::move(dataHelper); }
    /// Borrowed; null ends it.
    void SetProgress(HXProgress* progress) { progress_ = progress; }
    QKQueryCancel* GetQueryCancel() { return &queryCancel_; }
    /// Forgets a cancel.
    void ResetCancel() { queryCancel_.cancelled = false; }

 private:
    /// The answer may be changed by another thread than the one that asks.
    struct CancelQuery : QKQueryCancel {
        bool IsCancelled() override { return cancelled.load(std::memory_order_relaxed); }
        std::atomic<bool> cancelled = false;
    };

    struct Message {
        int type;
        long code;
        std::vector<std::string> parameters;
    };

    /// Without a root where there is no text or it is not well formed.
    HxCppHelperV1::XMLDocument DocumentOf(const std::optional<std::string>& text) const;

    HXContext* context_;
    std::unique_ptr<HxCppHelperV1::HostHelper> hostHelper_;
    std::unique_ptr<HxCppHelperV1::DataHelper> dataHelper_;
    std::unique_ptr<DataModelParser> dataModelParser_;
    HXProgress* progress_ = nullptr;
    CancelQuery queryCancel_;
    std::string requirements_;
    std::vector<Message> messages_;
};
