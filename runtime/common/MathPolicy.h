#pragma once

#include <boost/math/policies/policy.hpp>

namespace QKMath {

/// The error policy of every call into Boost.Math: nothing throws or sets errno, a failure is the returned value.
///
/// Boost's root finders take no policy and throw, so a quantile that needs one isn't asked of Boost.
using MathPolicy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::ignore_error>,
    boost::math::policies::pole_error<boost::math::policies::ignore_error>,
    boost::math::policies::overflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::underflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::denorm_error<boost::math::policies::ignore_error>,
    boost::math::policies::rounding_error<boost::math::policies::ignore_error>,
    boost::math::policies::evaluation_error<boost::math::policies::ignore_error>,
    boost::math::policies::indeterminate_result_error<boost::math::policies::ignore_error>,
    boost::math::policies::promote_float<false>, boost::math::policies::promote_double<false>,
    boost::math::policies::max_series_iterations<100000>>;

/// The type in which a function calculates whose result is to be good to nearly all digits of a double. Where it has
/// no more digits than a double, the bounds of docs/numerics.md do not hold.
using WorkReal = long double;

}  // namespace QKMath
