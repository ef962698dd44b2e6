#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "support/Arithmetic.h"
#include "support/Int32.h"

/// Counts the runs of group membership in the ascending order of a field. Equal values of both groups leave their order
/// open, so there are two counts: the smallest and the largest number that an order of them could give. Equal values
/// are a block. As defined, counts and products are 32 bits wide, and a block without weight may be a run of its own;
/// by the textbook it is none. Extended there are no records of weight 0, but weights below 0 can cancel others.
class RunCounter {
 public:
    using GroupCounts = std::array<std::int64_t, 2>;
    /// The size of a group that had no record; no real size is meant to equal it.
    static constexpr std::int32_t kNoRecord = -1;

    /// Borrows `by`.
    explicit RunCounter(const Arithmetic& by) : arithmetic_(&by) {}

    /// The values have to ascend; those of a group below 0 take no part.
    void Add(const double* values, const std::int32_t* groups, const std::int32_t* weights, std::size_t count);
    /// After the last value.
    void Close();

    GroupCounts Counts() const;
    std::int64_t MinRuns() const;
    std::int64_t MaxRuns() const;
    /// Blocks that hold both groups, and the cases in them.
    std::int64_t TieBlocks() const;
    std::int64_t TieCases() const;

 private:
    /// Numbers of 32 bits that wrap around.
    struct Narrow {
        using Number = std::int32_t;
        static Number Sum(Number a, Number b) { return Add32(a, b); }
        static Number Difference(Number a, Number b) { return Subtract32(a, b); }
        static Number Product(Number a, Number b) { return Multiply32(a, b); }
    };
    /// Sums of weights, which don't. Of a product the sign is enough.
    struct Wide {
        using Number = std::int64_t;
        static Number Sum(Number a, Number b) { return a + b; }
        static Number Difference(Number a, Number b) { return a - b; }
        static Number Product(Number a, Number b) { return Sign(a) * Sign(b); }
        static Number Sign(Number a) { return static_cast<Number>(a > 0) - static_cast<Number>(a < 0); }
    };

    /// The walk over the values in numbers of one width.
    template <typename Width>
    class Walk {
     public:
        using Number = typename Width::Number;

        /// Goes on where a narrow walk has come to.
        static Walk GoingOn(const Walk<Narrow>& from);

        void Add(const double* values, const std::int32_t* groups, const std::int32_t* weights, std::size_t count);
        void Close();

        std::array<Number, 2> groupCount{kNoRecord, kNoRecord};
        // The counts, and for each the last difference of the groups in a block that had one: its sign gives the group
        // at the end.
        Number minRuns = 1;
        Number maxRuns = 0;
        Number minSign = 0;
        Number maxSign = 0;
        Number tieBlocks = 0;
        Number tieCases = 0;
        bool passesOverWeightless = false;
        // What has been seen: the bits of the counts of blocks, and whether one had no weight in sum.
        Number bitsOfBlocks = 0;
        bool hasWeightless = false;

        bool isFirstRecord = true;
        // The block in hand.
        double blockValue = 0;
        std::array<Number, 2> blockCount{};

     private:
        void AddOne(double value, std::size_t group, std::int32_t weight);
        void CloseBlock();
        void CloseOfOneGroup(Number difference);
        void CloseOfBothGroups(Number smaller, Number difference);
        void CountTies();
    };

    void GoApart(const Walk<Narrow>& before);
    template <typename Member>
    std::int64_t Of(Member member) const;

    const Arithmetic* arithmetic_;
    Walk<Narrow> asDefined_;
    double weightSeen_ = 0;  // whatever the signs
    // From where on they may come to something else.
    bool areApart_ = false;
    Walk<Wide> wide_;
    Walk<Wide> byTextbook_;
};
