#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// What Cochran's Q test counts, and the formulas over it. Counters and products of counters are 32 bits wide by
/// definition and wrap around; docs/limits.md says what a user sees.
struct SuccessCounts {
    std::uint32_t n = 0;
    /// Per field the weight of its successes.
    std::vector<std::uint32_t> ofField;
    /// Over the records the weight times L, and times L squared, L being the successes of a record.
    std::uint32_t sumRowSuccess = 0;
    std::uint32_t sumRowSuccessSquared = 0;

    explicit SuccessCounts(std::size_t fields = 0) : ofField(fields, 0) {}

    /// Whether some field has a success, and some field not in every record.
    bool HasBothOutcomes() const;
    std::vector<double> Proportions() const;
    /// The truncated percentage of a field's successes.
    std::int32_t Percentage(std::size_t field) const;

    double Q() const;
    /// Q over the fields first .. last; `rowTerm` is what `sumRowSuccessSquared` is over all fields.
    double SubsetQ(std::size_t first, std::size_t last, std::uint32_t rowTerm) const;

    /// The difference of two proportions, and its standard error.
    double Difference(std::size_t first, std::size_t second) const;
    double StandardError() const;
};
