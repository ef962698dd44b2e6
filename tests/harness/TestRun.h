#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "platform/common/IQKAlgorithm.h"
#include "platform/common/QKMV.h"
#include "platform/common/QKSettings.h"
#include "platform/common/QKVarList.h"
#include "platform/common/Record.h"
#include "tests/harness/Document.h"

/// A small table in memory and runs of the engine over it, so that a test says its data in a few lines.
namespace harness {

/// The cell of a missing value: of a continuous field, and of a categorical one.
inline constexpr double kNone = QKMV::Missing();
inline constexpr double kNoCategory = -1.0;

/// A multi-pass stream over rows in memory, which counts how it is used.
class RowStream : public MultiPassRecordIter {
 public:
    explicit RowStream(std::vector<std::vector<double>> rows);

    bool HasMore() override { return next_ < records_.size(); }
    Record* Next() override;
    int GetState() override { return HasMore() ? 0 : 1; }
    int Rewind() override;

    int RewindCount() const { return rewindCount_; }
    int NextCount() const { return nextCount_; }

 private:
    std::vector<Record> records_;
    std::size_t next_ = 0;
    int rewindCount_ = 0;
    int nextCount_ = 0;
};

/// Fields of a table, added one by one.
class Fields {
 public:
    Fields& Continuous(const std::string& name, const std::string& label = "");
    /// A field of kind 2 with these category values.
    Fields& Numeric(const std::string& name, std::vector<double> categories, bool ordinal = false);
    /// A field of kind 3 with these category texts.
    Fields& Text(const std::string& name, std::vector<std::string> categories, bool ordinal = false);
    /// A field of kind 4.
    Fields& Other(const std::string& name);
    /// The frequency weight, a continuous field.
    Fields& Weight(const std::string& name);

    QKVarList& List() { return list_; }

 private:
    QKVarList list_;
};

/// What a run of the engine left.
struct Outcome {
    QKStatus status;       ///< of `Run`
    QKStatus writeStatus;  ///< of `WriteResults`
    bool complete = false;
    std::string text;   ///< the document, empty if none was written
    Document document;  ///< the same, parsed
};

/// Runs the execution settings over the rows and writes the document. Unless the settings say which arithmetic they
/// want, or somebody watches the run, the extended one has to give the same document or to say that it doesn't.
Outcome Run(const QKSettings& settings, Fields& fields, const std::vector<std::vector<double>>& rows,
            ProgressListener* listener = nullptr, QKQueryCancel* cancel = nullptr);

/// Adds a test with "variableName" as a list of names, the shape of most entries of the related family.
void AddListTest(QKSettings& settings, const std::string& test, const std::vector<std::string>& names);

}  // namespace harness
