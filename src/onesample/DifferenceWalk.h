#pragma once

#include <cstddef>
#include <cstdint>

#include "onesample/TheoreticalDistribution.h"
#include "platform/common/QKMV.h"
#include "support/Arithmetic.h"
#include "support/KolmogorovSignificance.h"

/// The walk over the ascending values of a sample that finds where its distribution function is farthest from a
/// theoretical one. Equal values are one run, and the function has one step for them.
class DifferenceWalk {
 public:
    DifferenceWalk() = default;
    /// `totalN`: the weight of all values to come. Borrows the distribution and `by`.
    DifferenceWalk(TheoreticalDistribution& theory, std::int64_t totalN, const Arithmetic& by);

    void Add(const double* values, const std::int32_t* weights, std::size_t count);
    /// After the last value.
    void Close();

    const ExtremeDifferences& Extremes() const { return extremes; }

 private:
    /// The share of the cases up to a value, as defined and in the textbook's form.
    struct Levels {
        double defined = 0;
        double textbook = 0;
    };

    template <typename Counter>
    void AddValues(const double* values, const std::int32_t* weights, std::size_t count);
    void CloseRun();
    Levels LevelsAt(double value, std::int64_t count) const;
    void Take(const Levels& levels, double theoretical);

    TheoreticalDistribution* distribution = nullptr;
    std::int64_t totalN = 0;
    const Arithmetic* arithmetic = nullptr;
    ExtremeDifferences extremes;
    ExtremeDifferences textbookExtremes;  // where a level was another one
    bool isTextbookApart = false;
    std::int64_t cumulativeCount = 0;
    std::int64_t runWeight = 0;
    std::int64_t weightSeen = 0;             // whatever the signs
    double previousValue = QKMV::Missing();  // of the run being built
    Levels previous;                         // behind the run before
};
