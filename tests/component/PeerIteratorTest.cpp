// The records of a host as streams: of blocks, which are read in passes, and of columns.

#include "platform/peer/QKPeerIterator.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "tests/component/HostedComponent.h"

namespace component_test {

namespace {

using Rows = std::vector<std::vector<double>>;

/// Two continuous fields and one with the categories 0 and 1.
class PeerStream : public HostedComponent {
 protected:
    PeerStream()
        : parser_(HxCppHelperV1::XMLDocument::FromText(
              ModelText().Continuous("x").Continuous("y").Categories("c", "nominal", {"1", "2"}).Build())) {
        GiveRows({{1, 2, 0}, {3, 4, 1}, {5, 6, -1}, {7, 8, 0}});
    }

    QKPeerStream& Stream(int interfaceVersion = HX_INTERFACE_VERSION) {
        helper_ = std::make_unique<HxCppHelperV1::DataHelper>(&host.iterator, 1, interfaceVersion);
        adapter_ = std::make_unique<InputAdapter>(helper_.get(), parser_, false, false, false, true, false);
        EXPECT_TRUE(adapter_->BuildVarlist(&errorCode));
        stream_ = QKPeerStream::Create(*helper_, *adapter_);
        return *stream_;
    }

    /// One pass from the first record to the last one that comes.
    static Rows Pass(QKPeerStream& stream) {
        stream.Rewind();
        Rows rows;
        while (stream.HasMore()) {
            const Record& record = *stream.Next();
            rows.emplace_back(record.begin(), record.end());
        }
        return rows;
    }

    void GiveColumns() {
        columns_ = {{1, 3, 5}, {2, 4, 6}, {0, 1, -1}};
        pointers_.clear();
        for (const std::vector<double>& column : columns_) pointers_.push_back(column.data());
        host.user = &pointers_;
        host.iterator.Columns = [](void* handle, const double* const** columns, size_t* recordCount, size_t* fieldCount,
                                   int*) {
            const auto& pointers = *static_cast<std::vector<const double*>*>(static_cast<TinyHost*>(handle)->user);
            *columns = pointers.data();
            *recordCount = 3;
            *fieldCount = pointers.size();
            return unsigned{HX_OK};
        };
    }

    Rows columns_;
    std::vector<const double*> pointers_;

 private:
    DataModelParser parser_;
    std::unique_ptr<HxCppHelperV1::DataHelper> helper_;
    std::unique_ptr<InputAdapter> adapter_;
    std::unique_ptr<QKPeerStream> stream_;
};

const Rows kRows = {{1, 2, 0}, {3, 4, 1}, {5, 6, -1}, {7, 8, 0}};

TEST_F(PeerStream, BlocksComeInEachPass) {
    QKPeerStream& stream = Stream();
    EXPECT_EQ(Pass(stream), kRows);
    EXPECT_EQ(Pass(stream), kRows);
    EXPECT_EQ(stream.GetState(), QKPeerStream::kAtEnd);
    EXPECT_EQ(dynamic_cast<ColumnSource*>(&stream), nullptr);
}

TEST_F(PeerStream, ALaterPassOfAnotherLengthFails) {
    for (const std::size_t size : {std::size_t{3}, std::size_t{2}, std::size_t{0}}) {
        host.passes = 0;
        host.recordsOfLaterPasses = size;
        QKPeerStream& stream = Stream();
        Pass(stream);
        EXPECT_FALSE(stream.HasFailed());
        EXPECT_EQ(Pass(stream).size(), size);
        EXPECT_TRUE(stream.HasFailed());
        EXPECT_EQ(stream.GetErrorCode(), HX_ERROR_RECORDS);
    }
    host.passes = 0;
    host.recordCount = 3;
    host.recordsOfLaterPasses = 4;
    QKPeerStream& stream = Stream();
    Pass(stream);
    EXPECT_EQ(Pass(stream).size(), 3u) << "the block with the fourth one is not handed on";
    EXPECT_TRUE(stream.HasFailed());
    EXPECT_EQ(Pass(stream), Rows()) << "it stays so";
}

TEST_F(PeerStream, ColumnsAreHandedOnWhereTheyAre) {
    GiveColumns();
    QKPeerStream& stream = Stream();
    const auto* const source = dynamic_cast<ColumnSource*>(&stream);
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(source->RecordCount(), 3u);
    EXPECT_EQ(source->FieldCount(), 3u);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(source->Column(i), columns_[i].data());
    EXPECT_TRUE(stream.HasDelivered()) << "also when nobody asks for a record";
}

TEST_F(PeerStream, ColumnsAreRecordsForEverybodyElse) {
    GiveColumns();
    QKPeerStream& stream = Stream();
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(Pass(stream), Rows(kRows.begin(), kRows.begin() + 3));
        EXPECT_EQ(stream.GetState(), QKPeerStream::kAtEnd);
    }
    EXPECT_EQ(host.passes, 0);
}

TEST_F(PeerStream, ColumnsThatDontFitAreNone) {
    GiveColumns();
    columns_[2][1] = 2;
    QKPeerStream& stream = Stream();
    EXPECT_TRUE(stream.HasFailed());
    EXPECT_TRUE(stream.HasDelivered());
    EXPECT_EQ(dynamic_cast<ColumnSource&>(stream).RecordCount(), 0u);
    EXPECT_EQ(Pass(stream), Rows());
    EXPECT_EQ(stream.GetState(), QKPeerStream::kFailed);
}

TEST_F(PeerStream, AHostOfVersionOneHasBlocksAlone) {
    GiveColumns();
    QKPeerStream& stream = Stream(1);
    EXPECT_EQ(dynamic_cast<ColumnSource*>(&stream), nullptr);
    EXPECT_EQ(Pass(stream), kRows);
}

}  // namespace

}  // namespace component_test
