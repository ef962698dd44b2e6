#pragma once

#include <vector>

#include "platform/Export.h"
#include "platform/common/IQKAlgorithm.h"

/// Makes the engine's algorithm. Usually lives on the caller's stack.
class TARN_EXPORT TARNFactory : public IQKFactory {
 public:
    TARNFactory();
    ~TARNFactory() override;
    TARNFactory(const TARNFactory&);
    TARNFactory& operator=(const TARNFactory&);

    /// The caller owns the algorithm, which borrows the execution settings and the fields until it is destroyed.
    /// Null on failure, with the reason in `GetStatus`: 220012 if no memory was left.
    IQKAlgorithm* CreateQKAlgorithm(QKSettings& settings, QKVarList& varList) override;
    /// The outcome of the last creation.
    QKStatus GetStatus() override;
    /// A copy of the warnings of the process, those of the calling thread's runs.
    std::vector<QKStatus> GetWarnings() const;

 private:
    QKStatus status;
};
