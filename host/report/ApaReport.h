#pragma once

#include <string>

#include "host/report/ResultPage.h"

namespace tarn {

/// A paragraph for each test in the style of the American Psychological Association (7th edition, 2020, sections 6.36
/// to 6.44): what was compared, with cases and medians; what was shown, with statistic, significance and effects; and
/// what the pairs showed. In UTF-8, without italics, which a text can't have.
std::string ApaReport(const ResultPage& page);
/// The same for each part of a split analysis, under its name.
std::string ApaReport(const PartsPage& page);

}  // namespace tarn
