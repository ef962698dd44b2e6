#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/report/PartsReport.h"

namespace tarn {

/// What a run left: one result, or one for each category of the field that splits the records. Texts are made when
/// they are asked for.
class Report {
 public:
    /// One that failed: there is no result.
    Report(std::vector<std::string> remarks, long failureCode);
    /// A whole analysis. `notes` are on its data, `remarks` what the engine says of the run.
    Report(ResultReading reading, std::string document, std::vector<std::string> notes,
           std::vector<std::string> remarks);
    /// One in parts, at least one. `notes` are on all of them.
    Report(std::vector<ResultPart> parts, std::vector<std::string> documents, std::vector<std::string> notes);

    bool IsDone() const { return isDone_; }
    long FailureCode() const { return failureCode_; }
    const std::vector<std::string>& Notes() const { return notes_; }
    const std::vector<std::string>& Remarks() const { return remarks_; }

    /// "" where there are several.
    const std::string& Document() const;
    std::string Text() const;
    std::string Json() const;
    std::string Csv() const;

    /// How many parts there are; 0 of a whole analysis.
    std::size_t PartCount() const { return isSplit_ ? parts_->size() : 0; }
    /// A part by itself, which shares what it is made of. One that couldn't be tested is not done, and says why.
    Report PartAt(std::size_t place) const;

 private:
    std::shared_ptr<const std::vector<ResultPart>> parts_;  // of a whole analysis one without a field
    std::shared_ptr<const std::vector<std::string>> documents_;
    std::size_t first_ = 0;  // the one that this report is about, unless it is about all
    std::vector<std::string> notes_;
    std::vector<std::string> remarks_;
    bool isDone_ = true;
    bool isSplit_ = false;
    long failureCode_ = 0;
};

}  // namespace tarn
