#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

/// The sum of t cubed minus t over the sizes t of tied runs, which arrive in the order of their openers. A value has
/// one size, and a later run of an equal opener takes the place of the one before it: infinite values, which are tied
/// with nothing, have such runs. A NaN is unequal to nothing, so that its run takes the place of the first one, and any
/// run takes the place of a NaN. A run of less than 2 is no tie.
class TieCorrection {
 public:
    void AddRun(double opener, std::int64_t size) {
        if (size < 2) return;
        const double term = TermOf(size);
        if (firstTerm == 0) {
            isFirstNaN = std::isnan(opener);
            firstTerm = sum = term;
        } else if (isFirstNaN || std::isnan(opener)) {
            ReplaceFirst(term);
            return;
        } else if (opener == lastOpener) {
            if (sumBelowLast == 0) firstTerm = term;
            sum = sumBelowLast + term;
        } else {
            AddLast(term);
        }
        lastOpener = opener;
    }
    /// Of an opener that is finite and above all before it; the quick way for many.
    void AddHigherRun(std::int64_t size) {
        if (size < 2) return;
        const double term = TermOf(size);
        if (isFirstNaN) {
            ReplaceFirst(term);
            return;
        }
        if (firstTerm == 0) firstTerm = term;
        AddLast(term);
        lastOpener = std::numeric_limits<double>::quiet_NaN();  // nothing equals it
    }
    double Sum() const { return sum; }

 private:
    static double TermOf(std::int64_t size) {
        const auto t = static_cast<double>(size);
        return t * t * t - t;
    }
    void AddLast(double term) {
        sumBelowLast = sum;
        sum += term;
    }
    void ReplaceFirst(double term) {
        sum += term - firstTerm;
        if (sumBelowLast > 0) sumBelowLast += term - firstTerm;  // there are several
        firstTerm = term;
    }

    double sum = 0;
    double sumBelowLast = 0;  // without the last run, ...
    double lastOpener = 0;    // ... which this value opened
    double firstTerm = 0;     // 0: no run yet; every term is above it
    bool isFirstNaN = false;
};
