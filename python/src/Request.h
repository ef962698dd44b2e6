#pragma once

#include <string>
#include <vector>

#include "host/Json.h"
#include "host/beyond/SupplementOptions.h"
#include "host/engine/AnalysisRequest.h"
#include "host/table/TableLoader.h"
#include "host/words/AnalysisWords.h"
#include "python/src/WantedColumns.h"

namespace tarn {

/// What a call of `tarn.analyze` asks for.
class Request {
 public:
    /// Reads one in JSON, an object whose keys are the arguments of the call; one that is absent stays as it is by
    /// itself. The package has checked the words. Throws an `InputError` for a formula or a condition that can't be
    /// read, a `std::exception` for another shape.
    explicit Request(const std::string& json);

    WordedAnalysis& Words() { return words_; }
    const SupplementOptions& Supplement() const { return supplement_; }
    const LoadOptions& Load() const { return load_; }
    const WantedColumns& Columns() const { return columns_; }
    /// The fields whose levels are given.
    std::vector<std::string> Levels() const;
    bool IsSplit() const { return isSplit_; }
    /// What was asked for, as a record has it: without what no result depends on.
    const Json& Recorded() const { return recorded_; }

 private:
    SupplementOptions supplement_;
    WordedAnalysis words_;
    LoadOptions load_;
    WantedColumns columns_;
    bool isSplit_ = false;
    Json recorded_;
};

}  // namespace tarn
