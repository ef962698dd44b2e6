#pragma once

#include <atomic>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "platform/common/Truncation.h"
#include "support/Int32.h"

/// A whole number in both of its readings: as it is, in the digits of a `long double` (exact up to 2^64), and as a
/// register holds it that wraps around. Sums, differences and products of such numbers are again right in both.
class Whole {
 public:
    template <typename Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
    Whole(Integer value)  // NOLINT(google-explicit-constructor): a number is one
        : value_(static_cast<long double>(value)), bits_(static_cast<std::uint64_t>(value)) {}

    friend Whole operator+(const Whole& a, const Whole& b) { return {a.value_ + b.value_, a.bits_ + b.bits_}; }
    friend Whole operator-(const Whole& a, const Whole& b) { return {a.value_ - b.value_, a.bits_ - b.bits_}; }
    friend Whole operator*(const Whole& a, const Whole& b) { return {a.value_ * b.value_, a.bits_ * b.bits_}; }

    long double Value() const { return value_; }
    std::uint64_t Bits() const { return bits_; }

 private:
    Whole(long double value, std::uint64_t bits) : value_(value), bits_(bits) {}

    long double value_;
    std::uint64_t bits_;
};

/// What came of a number: whether it is wider than defined, and whether it is the textbook's where that differs.
struct Departure {
    bool isWider = false;
    bool isTextbook = false;
};

/// How a run computes where its definition costs digits. As defined, counters and some products have 32 or 64 bits
/// and wrap around, an upper tail is one minus the lower one, and a handful of statistics have the form of the
/// documents that depend on it. Extended, numbers are as wide as they need to be, tails are worked out by themselves,
/// and those statistics have the textbook's form. Where nothing wraps both give the same numbers, but for the digits
/// of tails and of sums that cancel.
///
/// A test asks here at each such place and doesn't know which of the two it runs in. Counters are kept in 64 bits and
/// folded where they are used: a sum that wrapped at each step is the same as one that is folded at its end.
class Arithmetic {
 public:
    Arithmetic() = default;
    Arithmetic(const Arithmetic&) = delete;
    Arithmetic& operator=(const Arithmetic&) = delete;

    /// As defined, for whoever is made without a run.
    static const Arithmetic& AsDefined() {
        static const Arithmetic arithmetic;
        return arithmetic;
    }
    /// Before any number is asked for.
    void Extend(bool extended) { isExtended_ = extended; }

    // ---- Widths ----

    /// A counter of 32 bits with a sign.
    std::int64_t Count(std::int64_t sum) const { return Choose<std::int64_t>(Wrap32(sum), sum); }
    /// Whether a counter of 32 bits does for sums that are never further from 0 than `most`: then both ways are one.
    bool IsNarrow(std::int64_t most) const {
        if (!isExtended_ || most <= std::numeric_limits<std::int32_t>::max()) return true;
        Note();
        return false;
    }
    /// The same of sums that are folded where they are used, which says whether any was wider.
    bool StaysNarrow(std::int64_t most) const {
        return !isExtended_ || most <= std::numeric_limits<std::int32_t>::max();
    }
    /// A number that was worked out in both widths, where steps on the way depend on them, so that folding what comes
    /// out won't do.
    template <typename Number>
    Number Either(Number narrow, Number wide) const {
        return Choose(narrow, wide);
    }
    /// A counter of 32 bits without one.
    std::int64_t UnsignedCount(std::int64_t sum) const {
        return Choose<std::int64_t>(static_cast<std::uint32_t>(sum), sum);
    }
    /// A number that is cut to a count of 32 bits.
    std::int64_t Truncated(double number) const {
        constexpr double kTooWide = 0x1p63;
        if (isExtended_ && number > -kTooWide && number < kTooWide) {
            return Choose<std::int64_t>(TruncateToInt32(number), static_cast<std::int64_t>(number));
        }
        return TruncateToInt32(number);
    }
    /// A product, or any other number, of 32 bits with a sign; of 32 without one; of 64 with one; of 64 without one.
    double Signed32(const Whole& number) const { return Fold(static_cast<std::int32_t>(number.Bits()), number); }
    double Unsigned32(const Whole& number) const { return Fold(static_cast<std::uint32_t>(number.Bits()), number); }
    double Signed64(const Whole& number) const { return Fold(static_cast<std::int64_t>(number.Bits()), number); }
    double Unsigned64(const Whole& number) const { return Fold(number.Bits(), number); }

    // ---- Digits ----

    /// The upper tail of a distribution: one minus the lower one, or the one that is worked out by itself. Both are
    /// functions, of which one is called.
    template <typename Lower, typename Upper>
    double UpperTail(const Lower& lower, const Upper& upper) const {
        return isExtended_ ? static_cast<double>(upper()) : 1 - lower();
    }
    /// A number by a formula that loses digits, or by one that keeps them; in exact numbers both are equal.
    template <typename Formula, typename Careful>
    double Carefully(const Formula& formula, const Careful& careful) const {
        return isExtended_ ? static_cast<double>(careful()) : formula();
    }

    // ---- Textbook ----

    /// Whether the textbook's form is wanted of a statistic that documents have in another one, for whoever has to find
    /// out whether the two differ.
    bool WantsTextbook() const { return isExtended_; }
    /// The same where it is taken. `differs`: whether the two differ for the data at hand.
    bool TakesTextbook(bool differs = true) const {
        if (!isExtended_) return false;
        if (differs) tookTextbook_.store(true, std::memory_order_relaxed);
        return true;
    }

    // ---- What came of it ----

    /// Whether any number was wider than defined, and whether any statistic was the textbook's where that differs: an
    /// element says both.
    bool WasWider() const { return wasWider_.load(std::memory_order_relaxed); }
    bool TookTextbook() const { return tookTextbook_.load(std::memory_order_relaxed); }
    Departure GetDeparture() const { return {WasWider(), TookTextbook()}; }
    /// Takes over a number that was worked out elsewhere.
    void Adopt(const Departure& departure) const {
        if (departure.isWider) Note();
        if (departure.isTextbook) tookTextbook_.store(true, std::memory_order_relaxed);
    }

 private:
    void Note() const { wasWider_.store(true, std::memory_order_relaxed); }
    template <typename Number>
    Number Choose(Number folded, Number whole) const {
        if (!isExtended_ || folded == whole) return folded;
        Note();
        return whole;
    }
    template <typename Register>
    double Fold(Register folded, const Whole& number) const {
        if (!isExtended_ || static_cast<long double>(folded) == number.Value()) return static_cast<double>(folded);
        Note();
        return static_cast<double>(number.Value());
    }

    bool isExtended_ = false;
    mutable std::atomic<bool> wasWider_ = false;  // the threads of a run ask, too
    mutable std::atomic<bool> tookTextbook_ = false;
};

static_assert(std::numeric_limits<long double>::digits >= 64, "a whole number of 64 bits needs as many digits");
