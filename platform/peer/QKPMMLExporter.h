#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "platform/common/Progress.h"
#include "platform/common/QKStatus.h"
#include "platform/common/QKVarList.h"

/// How a data model is exported.
enum class ExportFormat {
    /// A text without any white space of its own.
    kCompact,
    /// A text to be read by people.
    kIndented
};

/// Writes the data dictionary of a run's fields as PMML.
class QKPMMLExporter {
 public:
    /// Borrows the query, which may be null.
    explicit QKPMMLExporter(QKQueryCancel* queryCancel) : queryCancel_(queryCancel) {}

    /// Writes the fields with these indices, in this order, into `stream`, and returns it; null where nothing was
    /// written: the query said to stop, or an index is in no field's place. Throws a `std::bad_alloc` where no
    /// memory is left.
    std::ostream* ExportDataModel(const QKVarList& varList, const std::vector<int>& indices, ExportFormat format,
                                  std::ostream* stream);
    /// The outcome of the last export.
    QKStatus GetStatus() const { return status_; }

 private:
    QKQueryCancel* queryCancel_;
    QKStatus status_;
};
