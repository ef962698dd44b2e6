#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/TARNTestCatalog.h"
#include "contract/ColumnPass.h"
#include "planning/TARNTestWorker.h"
#include "platform/common/Truncation.h"
#include "records/TARNSortedDataSet.h"
#include "support/UnivariateCollector.h"
#include "tests/harness/AllTests.h"
#include "tests/harness/TestRun.h"

namespace harness {

/// A run up to the point where its one test meets the records, and the ways in which it can: each returns the element
/// of the test, to be compared to the letter. An object is driven once, if it is ready.
class PlannedTest : private TARNPlan {
 public:
    PlannedTest(const Entry& entry, harness::Fields& fields, const Rows& rows, const Scene& scene, bool isExtended)
        : varList_(fields.List()),
          isExtended_(isExtended),
          analysisMissing_(scene.analysisMissing),
          stream_(rows),
          markers_(QKTarn::MarkersOfPasses(varList_)),
          allFields_(static_cast<std::size_t>(varList_.Size())),
          reader_(&stream_, !scene.analysisMissing, &allFields_, &varList_) {
        for (std::size_t i = 0; i < allFields_.size(); ++i) allFields_[i] = static_cast<int>(i);
        if (reader_.ReadAll().IsError()) return;
        sorted_ = std::make_unique<TARNSortedDataSet>(reader_.Begin());
        univariates_ = std::make_unique<UnivariateCollector>(reader_.Begin(), varList_);
        univariates_->Extend(isExtended);
        if (GetWeightIndex() >= 0) univariates_->SetWeight(GetWeightIndex());
        FindTest(entry.setting)->plan(entry.settings, *this);
        if (sorted_->Build().IsError() || univariates_->Compute().IsError()) return;
        results_ = std::make_unique<UnivariateResults>(*univariates_);
    }

    /// Whether the run came so far; it doesn't where no record is left.
    bool IsReady() const { return results_ != nullptr; }

    TARNTest& Test() { return *test_; }

    /// One by one, by a loop that knows nothing of columns.
    std::string ByRecords() {
        return Drive([&](const std::vector<int>& used) {
            for (Record& record : Visible(used)) {
                if (test_->ProcessRecord(record).IsError()) return false;
            }
            return true;
        });
    }

    /// In batches of random sizes, down to one record.
    std::string ByBatches(std::mt19937& random) {
        return ByBatchesOf([&] {
            const std::size_t most = random() % 3 == 0 ? 3 : random() % 2 == 0 ? 100 : ColumnBatch::kMostRecords;
            return 1 + random() % most;
        });
    }

    /// In batches of as many records as `nextSize` says, the last of them of what is left.
    std::string ByBatchesOf(const std::function<std::size_t()>& nextSize) {
        auto& test = dynamic_cast<ColumnTest&>(*test_);
        return Drive([&](const std::vector<int>& used) {
            std::vector<Record> records = Visible(used);
            for (std::size_t begin = 0; begin < records.size();) {
                const std::size_t end = std::min(records.size(), begin + nextSize());
                GivenBatch batch(records, begin, end);
                if (test.ProcessColumns(batch).IsError()) return false;
                begin = end;
            }
            return true;
        });
    }

    /// As a run does it.
    std::string ByWorker() {
        const bool isSorted = sortField_ >= 0;
        QKTarn::TarnMemoIterator memo = reader_.Begin();
        TARNTestWorker worker(markers_, analysisMissing_, isSorted ? static_cast<MultiPassRecordIter&>(memo) : stream_,
                              isSorted ? reader_.IncompleteInStore() : reader_.IncompleteInSource());
        QKTarn::ColumnView view(reader_.Columns(), reader_.IncompleteInStore());
        if (isSorted) {
            worker.SetSorted(sortField_, *sorted_);
        } else if (reader_.SourceColumns() != nullptr) {
            worker.SetColumns(view);
        }
        worker.SetUnivariateResults(std::make_unique<UnivariateResults>(*univariates_));
        worker.AddTest(std::move(test_));
        EXPECT_TRUE(worker.RunTests(WorkShare(2)).IsOK());
        EXPECT_TRUE(worker.CollectResults().IsOK());
        return TextOf(*worker.Results().front()->AsElement());
    }

 private:
    class GivenBatch : public ColumnBatch {
     public:
        GivenBatch(const std::vector<Record>& records, std::size_t begin, std::size_t end)
            : records_(records), begin_(begin) {
            SetSize(end - begin);
        }
        const double* Values(int field) override {
            std::vector<double>& values = values_[field];
            for (std::size_t i = values.size(); i < Size(); ++i) values.push_back(At(i, field));
            return values.data();
        }
        const std::int32_t* WholeNumbers(int field) override {
            std::vector<std::int32_t>& numbers = numbers_[field];
            for (std::size_t i = numbers.size(); i < Size(); ++i) numbers.push_back(TruncateToInt32(At(i, field)));
            return numbers.data();
        }

     private:
        double At(std::size_t i, int field) const { return records_[begin_ + i][static_cast<std::size_t>(field)]; }
        const std::vector<Record>& records_;
        std::size_t begin_;
        std::map<int, std::vector<double>> values_;
        std::map<int, std::vector<std::int32_t>> numbers_;
    };

    std::string Drive(const std::function<bool(const std::vector<int>&)>& pass) {
        if (!IsReady()) throw std::logic_error("driven without records");
        test_->SetUnivariateResults(results_.get());
        do {
            const bool isBegun = !test_->BeginPass().IsError();
            std::vector<int> used;
            test_->GetUsedVariables(used);
            if (isBegun && pass(used)) static_cast<void>(test_->EndPass());
        } while (test_->NeedsAnotherPass());
        const std::unique_ptr<QKXML::XMLElement> element(test_->MakeResultElement());
        std::string ways;
        if (test_->GetArithmetic().WasWider()) ways = "extended";
        if (test_->GetArithmetic().TookTextbook()) ways += ways.empty() ? "textbook" : " textbook";
        if (!ways.empty()) element->AddAttribute("arithmetic", ways);
        return TextOf(*element);
    }

    /// The records that the test may see: by its own fields or, listwise, by all of them.
    std::vector<Record> Visible(const std::vector<int>& used) {
        std::vector<Record> records;
        MultiPassRecordIter* stream = &stream_;
        if (sortField_ >= 0) stream = sorted_->IteratorOf(sortField_);
        const std::vector<int>& judged = analysisMissing_ && !used.empty() ? used : allFields_;
        for (stream->Rewind(); stream->HasMore();) {
            const Record& record = *stream->Next();
            const bool misses = std::any_of(judged.begin(), judged.end(),
                                            [&](int field) { return QKTarn::IsMissingIn(record, field, markers_); });
            if (!misses) records.push_back(record);
        }
        return records;
    }

    static std::string TextOf(const QKXML::XMLElement& element) {
        std::ostringstream text;
        QKXML::WriteTree(text, nullptr, &element, 1);
        return text.str();
    }

    double GetSigLevel() const override { return 0.9; }  // so that comparisons are made
    double GetConfidenceLevel() const override { return 0.95; }
    int GetWeightIndex() const override { return varList_.GetFreqWeightIndex(); }
    int GetCaseIdIndex() const override { return kNoCaseId; }
    const QKVarList& GetVarList() const override { return varList_; }
    bool IsBrief() const override { return false; }
    bool IsExtended() const override { return isExtended_; }
    int GetMeasureLevel(const std::string& name) override { return varList_.GetVariable(name)->GetKind(); }
    bool Request(int field, int statistic) override { return univariates_->Request(field, statistic); }
    void RegisterSorted(int field) override { sorted_->Register(field); }
    void RequestSorted(int field) override {
        sorted_->Register(field);
        univariates_->Request(field, Statistic::kHistogram);
        univariates_->Request(field, Statistic::kMeanAndStdDev);
    }
    void AddToMainWorker(std::unique_ptr<TARNTest> test) override { test_ = std::move(test); }
    void AddSortedTest(std::unique_ptr<TARNTest> test, int field, const QKStatus& status) override {
        test_ = std::move(test);
        if (status.IsError()) return;
        sortField_ = field;
        sorted_->Register(field);
        sorted_->ExpectReader(field);
        univariates_->SetSortedData(sorted_.get());
    }

    QKVarList& varList_;
    bool isExtended_;
    bool analysisMissing_;
    harness::RowStream stream_;
    QKTarn::MissingMarkers markers_;
    std::vector<int> allFields_;
    QKTarn::InitialDataReader reader_;
    std::unique_ptr<TARNSortedDataSet> sorted_;
    std::unique_ptr<UnivariateCollector> univariates_;
    std::unique_ptr<UnivariateResults> results_;
    std::unique_ptr<TARNTest> test_;
    int sortField_ = -1;
};

}  // namespace harness
