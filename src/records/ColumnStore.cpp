#include "records/ColumnStore.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "machine/Lanes.h"
#include "platform/common/QKMV.h"
#include "platform/common/Truncation.h"

namespace QKTarn {

namespace {

/// Records that are parted into columns together: by one alone each write would be a miss of the cache.
constexpr std::size_t kTogether = 64;
constexpr std::size_t kFieldsTogether = 16;

}  // namespace

// ---- Filling ----

void ColumnStore::Borrow(const ColumnSource& source, std::size_t fieldCount) {
    count_ = source.RecordCount();
    width_ = fieldCount;
    columns_.clear();
    for (std::size_t field = 0; field < width_; ++field) columns_.push_back(source.Column(field));
}

void ColumnStore::CopyFrom(const ColumnStore& other, const RecordFlags& kept, std::size_t keptCount,
                           const WorkShare& share) {
    std::vector<std::uint32_t> positions;
    positions.reserve(keptCount);
    for (std::size_t record = 0; record < other.Count(); ++record) {
        if (kept[record]) positions.push_back(static_cast<std::uint32_t>(record));
    }
    own_.resize(other.Width());
    share.Run(other.Width(), [&](std::size_t field) {
        const double* const from = other.Column(field);
        LargeArray<double> to(positions.size());
        for (std::size_t i = 0; i < positions.size(); ++i) to[i] = from[positions[i]];
        own_[field] = std::move(to);
    });
    count_ = positions.size();
    width_ = other.Width();
    capacity_ = count_;
    Close();
}

void ColumnStore::Append(const Record& record) {
    if (count_ == 0 && pendingCount_ == 0) {
        own_.resize(record.Size());
        pending_.resize(kTogether * record.Size());
        width_ = record.Size();
    }
    if (count_ + pendingCount_ == capacity_) Grow();
    const std::size_t copied = std::min(width_, record.Size());
    double* const target = pending_.data() + pendingCount_ * width_;
    std::copy_n(record.begin(), copied, target);
    std::fill(target + copied, target + width_, QKMV::Missing());
    if (++pendingCount_ == kTogether) FlushPending();
}

/// One column after the other, so that no more than one of them is there twice.
void ColumnStore::Grow() {
    FlushPending();
    constexpr std::size_t kFewest = 1024;
    const std::size_t grown = std::max(kFewest, capacity_ * 2);
    for (LargeArray<double>& column : own_) {
        LargeArray<double> larger(grown);
        std::copy_n(column.data(), count_, larger.data());
        column = std::move(larger);
    }
    capacity_ = grown;
}

void ColumnStore::FlushPending() {
    for (std::size_t first = 0; first < width_; first += kFieldsTogether) {
        const std::size_t end = std::min(width_, first + kFieldsTogether);
        for (std::size_t field = first; field < end; ++field) {
            double* const column = own_[field].data() + count_;
            for (std::size_t record = 0; record < pendingCount_; ++record) {
                column[record] = pending_[record * width_ + field];
            }
        }
    }
    count_ += std::exchange(pendingCount_, 0);
}

void ColumnStore::Close() {
    if (pendingCount_ > 0) FlushPending();
    columns_.clear();
    for (const LargeArray<double>& column : own_) columns_.push_back(column.data());
}

// ---- Reading ----

const std::int32_t* ColumnStore::WholeColumn(std::size_t field) const {
    const std::lock_guard lock(mutex_);
    if (whole_.empty()) whole_.resize(width_);
    LargeArray<std::int32_t>& whole = whole_[field];
    if (whole.empty() && count_ > 0) {
        LargeArray<std::int32_t> made(count_);
        std::transform(columns_[field], columns_[field] + count_, made.begin(), TruncateToInt32);
        whole = std::move(made);
    }
    return whole.data();
}

void ColumnStore::Read(std::size_t record, double* values) const {
    for (std::size_t field = 0; field < width_; ++field) values[field] = columns_[field][record];
}

void ColumnStore::Read(std::size_t record, std::span<const int> fields, double* values) const {
    for (const int field : fields) {
        const auto position = static_cast<std::size_t>(field);
        values[position] = columns_[position][record];
    }
}

// ---- What is known of the columns ----

/// Looks at all values rather than stops at the first one: without a branch the loop is a few vector instructions.
ColumnStore::Facts ColumnStore::FindFacts(std::span<const double> values, double marker) {
    Facts facts;
    DoubleLanes markers;
    for (std::size_t lane = 0; lane < kLanes; ++lane) markers[lane] = marker;
    WholeLanes areMissing{};
    WholeLanes areNoNumbers{};
    const std::size_t whole = values.size() / kLanes * kLanes;
    for (std::size_t place = 0; place < whole; place += kLanes) {
        const DoubleLanes lanes = LoadLanes(values.data() + place, kLanes);
        areMissing |= lanes == markers;
        areNoNumbers |= lanes != lanes;
    }
    facts.hasMissing = SumOfLanes(areMissing) != 0;
    facts.hasNaN = SumOfLanes(areNoNumbers) != 0;
    for (const double value : values.subspan(whole)) {
        facts.hasMissing |= value == marker;
        facts.hasNaN |= std::isnan(value);
    }
    return facts;
}

void ColumnStore::Examine(const MissingMarkers& markers, const WorkShare& share, RecordFlags* incomplete) {
    facts_.assign(width_, {});
    share.Run(width_, [&](std::size_t field) {
        const bool canMiss = field < markers.size();
        facts_[field] = FindFacts(ColumnSpan(field), canMiss ? markers[field] : QKMV::Missing());
        facts_[field].hasMissing &= canMiss;
    });
    hasMissing_ = std::any_of(facts_.begin(), facts_.end(), [](const Facts& facts) { return facts.hasMissing; });
    if (incomplete == nullptr) return;
    incomplete->assign(count_, false);
    for (std::size_t field = 0; field < width_; ++field) {
        if (!facts_[field].hasMissing) continue;
        for (std::size_t record = 0; record < count_; ++record) {
            if (columns_[field][record] == markers[field]) (*incomplete)[record] = true;
        }
    }
}

}  // namespace QKTarn
