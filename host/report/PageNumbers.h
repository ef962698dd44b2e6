#pragma once

#include <string>
#include <vector>

#include "host/report/Number.h"

namespace tarn {

/// Numbers as a paper has them. None shows more digits than a reader can use, and none says 0 or 1 of what is neither.

/// A significance: ".063" of relation "=", ".001" of "<", ".200" of ">" for a bound; words of relation "" for what is
/// no number or was not computed.
struct WrittenP {
    std::string relation;
    std::string text;
};
WrittenP WriteP(const Number& p, bool isBound = false);
/// The same for a cell: ".063", "< .001"; "" for none.
std::string PCellText(const Number& p, bool isBound = false);

/// With so many decimals, "undefined" for what is no number, and never "-0.00".
std::string FixedText(double value, int decimals);
/// What can't pass 1 in size: two decimals, or more where told, without a leading zero; more of them near 0 and near 1.
std::string ShareText(double value, int decimals = 2);
/// A count or a sum of ranks: whole and half numbers as they are, others with two decimals.
std::string CountText(const Number& value);
/// Another statistic: two decimals.
std::string StatisticText(const Number& value);

/// Numbers in the unit of a field, all with as many decimals: so many digits of the largest, two of the smallest,
/// fewer where none needs them.
class SameDecimals {
 public:
    static constexpr int kUsualDigits = 4;
    explicit SameDecimals(const std::vector<double>& values, int digits = kUsualDigits);
    /// "" for a number that is not there.
    std::string Text(const Number& value) const;
    /// "4.25 to 5.50"; "" without a lower end.
    std::string Range(const Number& lower, const Number& upper) const;

 private:
    int decimals_ = 0;
    bool isPlain_ = true;  ///< whether the numbers can be written without an exponent
};

}  // namespace tarn
