#pragma once

#include <optional>

#include "platform/common/QKMV.h"
#include "support/Arithmetic.h"
#include "support/ResultElements.h"

/// What the Kolmogorov-Smirnov tests of one and of two samples share.

/// P(K > z) of Kolmogorov's distribution by its first terms: 1 below z = 0.27, 0 from 3.1 on and for a z that is
/// negative or no number, and one of two series between, which meet at z = 1. Nothing if the exponential has no value.
/// Worked out with care it is one of the two series for any z, and goes down to the smallest double.
///
/// Source: Smirnov (1948), Annals of Mathematical Statistics 19, 279-281.
std::optional<double> KolmogorovSignificance(double z, const Arithmetic& arithmetic);

/// The most extreme differences of two distribution functions, as a walk over the values finds them.
struct ExtremeDifferences {
    /// The value for a side, and for the absolute value, where no difference was found.
    static constexpr double kNoneAbove = QKMV::Missing();
    static constexpr double kNoneBelow = -QKMV::Missing();

    double absolute = kNoneAbove;
    double positive = kNoneAbove;
    double negative = kNoneBelow;

    bool operator==(const ExtremeDifferences&) const = default;

    /// Whether any difference was found on that side.
    bool HasPositive() const;
    bool HasNegative() const;

    /// Writes the table "MostExtremeDifferences"; what was not found shows as 0.
    void AddTable(StructuredTable& statistics) const;
};
