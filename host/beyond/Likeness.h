#pragma once

#include "host/beyond/LikeOthers.h"
#include "host/beyond/SupplementOptions.h"
#include "host/beyond/TestView.h"

namespace tarn {

/// How another system does the test of a view with the choices of a user, where it does it at all. Choices that the
/// user leaves open are that system's own.
LikeSetting LikenessOf(const TestView& view, const SupplementOptions& wanted, double probability,
                       const std::vector<std::string>& success);

}  // namespace tarn
