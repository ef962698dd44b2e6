#pragma once

#include <string>

#include "host/report/Number.h"

namespace tarn {

/// A number as a source prints it. Its text says how many digits it claims: "0.0390" claims four decimals, "4.115e-05"
/// eight, and "< 2.2e-16" a bound.
struct PrintedNumber {
    std::string text;
    long double value = 0;
    int decimals = 0;  ///< behind the point, once an exponent is taken into account; may be negative
    int digits = 0;    ///< significant ones; at least 1
    bool isUpperBound = false;
};

/// Reads one. `place` stands for it in the `InputError` that is thrown for a text that is no such number.
PrintedNumber ReadPrintedNumber(const std::string& text, const std::string& place);

/// How well a number agrees with a printed one.
struct Agreement {
    bool agrees = false;
    int digits = 0;  ///< significant digits in which both agree, up to those that are printed
};

/// Whether `ours`, rounded to the decimals of the printed number, is the printed number. Both roundings of a tie are
/// right. Our numbers are written with 15 digits, so that of a longer one the first 15 count. A number that was never
/// computed agrees with none. `allowance` is an absolute error that ours may have beside that.
Agreement Compare(const PrintedNumber& printed, const Number& ours, double allowance = 0);

}  // namespace tarn
