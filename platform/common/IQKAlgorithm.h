#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "platform/common/Progress.h"
#include "platform/common/QKStatus.h"
#include "platform/common/Record.h"

class QKSettings;
class QKVarList;

/// What the host says of itself for the header of a result document. An empty text means that it said nothing.
struct QKOutputParameters {
    std::string applicationName;
    std::string applicationVersion;
    std::string copyright;
};

/// An algorithm that reads a stream of records and writes one result document.
///
/// Order of calls: `SetQueryCancel` and `SetProgressListener` as wished, `Run`, then `WriteResults`. `Run` may be
/// called again and releases what the earlier run left.
class IQKAlgorithm {
 public:
    virtual ~IQKAlgorithm() = default;
    virtual QKStatus Run(RecordIterator& data) = 0;
    virtual bool IsComplete() = 0;
    virtual QKStatus QueryStatus() = 0;
    /// Writes the document of a complete run; of any other run it writes nothing and returns code 6.
    virtual QKStatus WriteResults(std::ostream& out, const QKOutputParameters& parameters) = 0;
    virtual QKStatus GetStatus() = 0;
    /// Borrowed until the algorithm is destroyed; null keeps the one that is set.
    virtual void SetProgressListener(ProgressListener* listener) = 0;
    /// Borrowed until the algorithm is destroyed; null keeps the one that is set.
    virtual void SetQueryCancel(QKQueryCancel* queryCancel) = 0;
    /// Asks a running `Run` to end; may be called from another thread.
    virtual void Cancel() = 0;
    virtual std::string GetDescription() = 0;
    virtual std::vector<QKStatus>& GetWarnings() = 0;
    /// Keeps the last place of the table; nothing calls it.
    virtual void Reserved() = 0;
};

/// Makes algorithms.
class IQKFactory {
 public:
    virtual ~IQKFactory() = default;
    /// The caller owns the algorithm, which borrows both arguments until it is destroyed. Null on failure.
    virtual IQKAlgorithm* CreateQKAlgorithm(QKSettings& settings, QKVarList& varList) = 0;
    virtual QKStatus GetStatus() = 0;
};
