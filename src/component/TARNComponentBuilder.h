#pragma once

#include <memory>
#include <string>

#include "catalogue/TARNFactory.h"
#include "component/ExecutionRequirements.h"
#include "component/PublicFields.h"
#include "component/RequiredFields.h"
#include "component/TARNProgressListener.h"
#include "planning/TARNPlanner.h"
#include "platform/common/QKSettings.h"
#include "platform/common/QKStatus.h"
#include "platform/peer/InputAdapter.h"
#include "platform/peer/QKPeer.h"

/// The component that a host drives: created, configured, then executed as often as wished, each execution ended.
///
/// At configuration it reads the request, works out which fields the tests need, and tells the host how to prepare
/// the data. An execution reads the host's records, runs the tests and stores the result document.
///
/// Failures are collected as messages. An operation then answers with the host's own answer to the message, or where
/// that is 0 with a fixed value.
class TARNComponentBuilder : public QKPeer {
 public:
    /// Borrows the context and the host's handle; both may be null.
    TARNComponentBuilder(HXContext* context, HXHost* host);
    ~TARNComponentBuilder() override;

    unsigned Configure(int* errorCode) override;
    using QKPeer::BeginExecution;
    unsigned BeginExecution(HXIterator* iterator, HXProgress* progress, int* errorCode) override;
    unsigned EndExecution(int* errorCode) override;
    /// Gives back what is no part of an execution: settings, data model, requirements, messages. The component can only
    /// be destroyed after it.
    void ReleaseConfiguration() noexcept;
    unsigned MakeSettings(HxCppHelperV1::XMLDocument& model, int* errorCode) override;

 private:
    // Configuration.
    void MakeInputAdapter(bool forExecution);
    unsigned BuildVarlist(int* errorCode);
    unsigned MakeExecutionRequirements(int* errorCode);
    unsigned ReportRequest(const QKStatus& status, int* errorCode);

    // Execution.
    unsigned Execute(int* errorCode);
    unsigned BuildAlgorithm(TARNFactory& factory, int* errorCode);
    unsigned ExpandSettings(int* errorCode);
    unsigned RunAlgorithm(int* errorCode);
    unsigned WriteDocument(int* errorCode);
    QKStatus MakeDocument(std::string& text);
    unsigned StoreDocument(const std::string& text, int* errorCode);

    unsigned ReportError(long code, int* errorCode, unsigned otherwise);
    unsigned ReportStatus(const QKStatus& status, int* errorCode);

    std::unique_ptr<QKSettings> modelSettings;  // empty until configured, so that there is no test to execute
    std::unique_ptr<QKSettings> executionSettings;
    std::unique_ptr<InputAdapter> inputAdapter;
    std::unique_ptr<PublicFields> publicFields;  // of the execution; the algorithm's documents need them
    std::unique_ptr<TARNPlanner> algorithm;
    std::unique_ptr<TARNProgressListener> progressListener;
    RequiredFields requiredFields;
    ExecutionRequirements::RenamedFields renamedFields;
};
