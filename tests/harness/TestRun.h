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

/// Rows that are there as columns, too.
class ColumnStream : public RowStream, public ColumnSource {
 public:
    explicit ColumnStream(const std::vector<std::vector<double>>& rows);

    std::size_t RecordCount() const override { return recordCount_; }
    std::size_t FieldCount() const override { return columns_.size(); }
    const double* Column(std::size_t field) const override { return columns_[field].data(); }

 private:
    std::size_t recordCount_;
    std::vector<std::vector<double>> columns_;
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

/// Runs the execution settings over the records of a stream and writes the document.
Outcome RunStream(const QKSettings& settings, Fields& fields, MultiPassRecordIter& stream,
                  ProgressListener* listener = nullptr, QKQueryCancel* cancel = nullptr);

/// The rows that have a weight: where there is a field for it, those for which it isn't 0 once its fraction is cut.
std::vector<std::vector<double>> WeightyRows(Fields& fields, const std::vector<std::vector<double>>& rows);

/// Runs the execution settings over the rows and writes the document. Unless the settings say which arithmetic they
/// want, or somebody watches the run, the extended one has to give the document of the rows that have a weight, and
/// that has to be the same as defined or to say that it isn't.
Outcome Run(const QKSettings& settings, Fields& fields, const std::vector<std::vector<double>>& rows,
            ProgressListener* listener = nullptr, QKQueryCancel* cancel = nullptr);

/// Adds a test with "variableName" as a list of names, the shape of most entries of the related family.
void AddListTest(QKSettings& settings, const std::string& test, const std::vector<std::string>& names);

}  // namespace harness
