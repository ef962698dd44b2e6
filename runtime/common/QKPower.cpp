#include "platform/common/QKPower.h"

#include <algorithm>
#include <cmath>

#include "platform/common/QKMV.h"

namespace QKMath {

bool QKPower::AlmostEqual(double a, double b, double eps) {
    return std::fabs(a - b) <= eps * std::max({1.0, std::fabs(a), std::fabs(b)});
}

bool QKPower::IsEvenInteger(double x) {
    // The remainder of an infinity is NaN, so that only finite numbers can pass.
    return std::fmod(x, 2.0) == 0;
}

int QKPower::Exponent(double x, double& out) {
    const double power = std::exp(x);
    if (!std::isfinite(power)) {
        out = QKMV::Missing();
        return 2;
    }
    out = power;
    return power == 0 ? 1 : 0;
}

}  // namespace QKMath
