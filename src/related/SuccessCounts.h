#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/Arithmetic.h"

/// The two terms of Cochran's Q over some fields: k times the sum of the squared successes of the fields less the
/// square of their sum, and k times that sum less the sum of the squared successes of the records. Over a subset the
/// second one need not go over the same fields in both of its halves, so that it can be negative.
struct CochranTerms {
    std::size_t k = 0;
    Whole numerator = 0;
    Whole spread = 0;

    /// `ofField`: the successes of k fields; `rowTerm`: of the records the sum of their squares.
    CochranTerms(const std::vector<std::int64_t>& ofField, const Whole& rowTerm);

    /// Both terms are 32 bits wide as defined; docs/limits.md says what a user sees.
    double Q(const Arithmetic& arithmetic) const;
    /// The same at full width, to compare with.
    double WideQ() const;
};

/// What Cochran's Q test counts, and the formulas over it. Counters and products of counters are 32 bits wide as
/// defined and wrap around where they are used.
struct SuccessCounts {
    std::int64_t n = 0;
    /// Per field the weight of its successes.
    std::vector<std::int64_t> ofField;
    /// Over the records the weight times L squared, L being the successes of a record.
    Whole sumRowSuccessSquared = 0;

    /// Borrows `by`.
    explicit SuccessCounts(const Arithmetic& by, std::size_t fields = 0) : ofField(fields, 0), arithmetic(&by) {}

    bool HasSuccess() const;
    /// Whether some field has a success, and some field not in every record.
    bool HasBothOutcomes() const;
    std::vector<double> Proportions() const;
    /// The truncated percentage of a field's successes.
    std::int32_t Percentage(std::size_t field) const;

    double Q() const { return CochranTerms(ofField, sumRowSuccessSquared).Q(*arithmetic); }

    /// The difference of two proportions, and its standard error.
    double Difference(std::size_t first, std::size_t second) const;
    double StandardError() const;

 private:
    double Cases() const;

    const Arithmetic* arithmetic;
};
