#pragma once

#include <cmath>

#include "support/Arithmetic.h"

/// Which of two forms of a number a run takes: the one that documents depend on, or the textbook's.
inline double FormOf(double asDefined, double textbook, const Arithmetic& arithmetic) {
    const bool areSame = asDefined == textbook || (std::isnan(asDefined) && std::isnan(textbook));
    return arithmetic.TakesTextbook(!areSame) ? textbook : asDefined;
}
