#pragma once

#include "host/report/ResultDocument.h"
#include "host/report/TestReading.h"

namespace tarn {

/// Gives the signed numbers of a test their direction, once the rest of it has been read, and turns those that the
/// engine counts the other way round: U, z and differences of distributions of two groups become those of the first
/// group less the second, in the order of the group field's categories, or of the lists of a plan. The engine's own
/// directions differ from test to test.
void TurnToOneDirection(const TestResult& test, const ResultDocument& document, const MessageCatalogue& texts,
                        TestReading& reading);

}  // namespace tarn
