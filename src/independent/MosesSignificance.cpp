#include "independent/MosesSignificance.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "independent/TextbookForm.h"
#include "platform/common/QKDistFun.h"

// The sum has as many terms as there are other cases inside the span: billions, for large weights, and all of them
// may matter. It is walked in another order. The i-th term counts the arrangements with i other cases in front of the
// last case that is left; summed up to t, these are the arrangements whose first s - 1 places hold at least
// r = m - 2 h - 1 control cases. That number of control cases is hypergeometric: few values of it have any weight, and
// the ratio of neighbours is a small fraction, so that nothing large cancels.

namespace {

/// A term that is smaller by this factor can't change the last digit of a sum, nor can all that follow it: they fall
/// at least as fast as those of a normal distribution beyond ten standard deviations.
constexpr double kNegligible = 1e-25;

/// P(X >= least), X the number of marked ones among `drawn` out of `total`, of which `marked` are marked.
double UpperTail(double total, double marked, double drawn, double least) {
    const double lowest = std::max(0.0, drawn - (total - marked));
    const double highest = std::min(marked, drawn);
    if (least <= lowest) return 1;
    if (least > highest) return 0;
    const double mode = std::clamp(std::floor((drawn + 1) * ((marked + 1) / (total + 2))), lowest, highest);
    // P(X = k + 1) / P(X = k)
    const auto ratio = [&](double k) {
        return (marked - k) / (k + 1) * ((drawn - k) / (total - marked - drawn + k + 1));
    };
    double sum = 0;
    double tail = 0;
    // From the mode, taken as 1, upwards. The terms may vanish before the tail begins: then it is 0, too. Numbers below
    // the smallest normal one must count as vanished, since rounding keeps the very smallest from falling further.
    constexpr double kVanished = std::numeric_limits<double>::min();
    double term = 1;
    for (double k = mode; k <= highest && term >= kVanished; ++k) {
        sum += term;
        if (k >= least) {
            tail += term;
            if (term < tail * kNegligible) break;
        }
        term *= ratio(k);
    }
    term = 1;
    for (double k = mode - 1; k >= lowest && term > sum * kNegligible; --k) {
        term /= ratio(k);
        sum += term;
        if (k >= least) tail += term;
    }
    return tail / sum;
}

}  // namespace

double MosesSignificance(std::int64_t s, std::int64_t m, std::int64_t n, std::int64_t h, const Arithmetic& arithmetic) {
    if (m < 1 || n < 1) return std::numeric_limits<double>::quiet_NaN();
    const std::int64_t left = m - 2 * h;
    const auto total = static_cast<double>(m) + static_cast<double>(n);
    const auto marked = static_cast<double>(m);
    const auto least = static_cast<double>(left - 1);
    const auto chanceOf = [&](std::int64_t span) {
        const double drawn = std::min(static_cast<double>(span - 1), total);
        return arithmetic.Carefully([=] { return UpperTail(total, marked, drawn, least); },
                                    [=] {
                                        int ignored = 0;  // the numbers drawn and marked are parts of the total
                                        return QKMath::QKDistFun::SfHyper(least - 1, total, marked, drawn, ignored);
                                    });
    };
    // Nothing inside the span counts as impossible, though one arrangement of the kind there is; and fewer than two
    // cases have no span, and no term of the sum is defined. That is intended: documents depend on it.
    if (left < 2) return FormOf(0, 1, arithmetic);
    if (s <= left) return FormOf(0, chanceOf(left), arithmetic);
    return chanceOf(s);
}
