#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "support/WideNumber.h"

/// The sum of t cubed minus t over the sizes t of tied runs, which arrive in the order of their openers. A value has
/// one size, and a later run of an equal opener takes the place of the one before it: infinite values, which are tied
/// with nothing, have such runs. A NaN is unequal to nothing, so that its run takes the place of the first one, and any
/// run takes the place of a NaN. A run of less than 2 is no tie.
class TieCorrection {
 public:
    void AddRun(double opener, std::int64_t size) {
        if (size < 2) return;
        const Term term = TermOf(size);
        if (firstTerm.rounded == 0) {
            isFirstNaN = std::isnan(opener);
            firstTerm = sum = term;
        } else if (isFirstNaN || std::isnan(opener)) {
            ReplaceFirst(term);
            return;
        } else if (opener == lastOpener) {
            if (sumBelowLast.rounded == 0) firstTerm = term;
            sum = sumBelowLast + term;
        } else {
            AddLast(term);
        }
        lastOpener = opener;
    }
    /// Of an opener that is finite and above all before it; the quick way for many.
    void AddHigherRun(std::int64_t size) {
        if (size < 2) return;
        const Term term = TermOf(size);
        if (isFirstNaN) {
            ReplaceFirst(term);
            return;
        }
        if (firstTerm.rounded == 0) firstTerm = term;
        AddLast(term);
        lastOpener = std::numeric_limits<double>::quiet_NaN();  // nothing equals it
    }
    double Sum() const { return sum.rounded; }

    /// n cubed minus n less the sum, for a total of n: 0 where all are tied. Not rounded before it is subtracted as
    /// long as n^3 allows it.
    long double SpreadOf(std::int64_t n) const {
        constexpr std::int64_t kMostExact = std::int64_t{1} << 42;
        constexpr double kMostExactSum = 0x1p126;
        if (n >= 0 && n <= kMostExact && sum.rounded <= kMostExactSum) {
            const WideNumber total = n;
            return static_cast<long double>(total * total * total - total - static_cast<WideNumber>(sum.exact));
        }
        const auto total = static_cast<double>(n);  // rounded like the terms, so that a single run still leaves 0
        return total * total * total - total - sum.rounded;
    }

 private:
    /// A number as the definition rounds it, and as it is, in a register that wraps around.
    struct Term {
        double rounded = 0;
        WideBits exact = 0;

        friend Term operator+(const Term& a, const Term& b) { return {a.rounded + b.rounded, a.exact + b.exact}; }
        friend Term operator-(const Term& a, const Term& b) { return {a.rounded - b.rounded, a.exact - b.exact}; }
    };

    static Term TermOf(std::int64_t size) {
        const auto t = static_cast<double>(size);
        const auto bits = static_cast<WideBits>(size);
        return {t * t * t - t, bits * bits * bits - bits};
    }
    void AddLast(const Term& term) {
        sumBelowLast = sum;
        sum = sum + term;
    }
    void ReplaceFirst(const Term& term) {
        sum = sum + (term - firstTerm);
        if (sumBelowLast.rounded > 0) sumBelowLast = sumBelowLast + (term - firstTerm);  // there are several
        firstTerm = term;
    }

    Term sum;
    Term sumBelowLast;      // without the last run, ...
    double lastOpener = 0;  // ... which this value opened
    Term firstTerm;         // 0: no run yet; every term is above it
    bool isFirstNaN = false;
};
