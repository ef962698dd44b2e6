#include "catalogue/TARNFactory.h"

#include <exception>
#include <memory>

#include "catalogue/TARNTestCatalog.h"
#include "planning/TARNPlanner.h"
#include "planning/TARNWarning.h"
#include "vocabulary/StatusCodes.h"

TARNFactory::TARNFactory() = default;
TARNFactory::~TARNFactory() = default;
TARNFactory::TARNFactory(const TARNFactory&) = default;
TARNFactory& TARNFactory::operator=(const TARNFactory&) = default;

IQKAlgorithm* TARNFactory::CreateQKAlgorithm(QKSettings& settings, QKVarList& varList) {
    status = QKStatus();
    std::unique_ptr<TARNPlanner> planner;
    try {
        planner = std::make_unique<TARNPlanner>(settings, varList, FindTest);
    } catch (const std::exception&) {
        status = QKStatus(StatusCode::kOutOfMemory);
    }
    if (planner != nullptr && !planner->GetStatus().IsOK()) status = planner->GetStatus();
    return status.IsError() ? nullptr : planner.release();
}

QKStatus TARNFactory::GetStatus() {
    return status;
}

std::vector<QKStatus> TARNFactory::GetWarnings() const {
    return TARNWarning::Instance().Get();
}
