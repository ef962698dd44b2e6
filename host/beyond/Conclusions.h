#pragma once

#include <string>

#include "host/beyond/TestView.h"
#include "host/report/MessageCatalogue.h"
#include "host/report/Supplement.h"

namespace tarn {

/// One sentence on a test's result at a level, which is a share; "" for an estimate and where nothing was decided.
/// `chosen`: the significance by the user's choices, which takes the place of the document's; null for none.
std::string ConclusionOf(const TestView& view, const SuppliedPValue* chosen, double level,
                         const MessageCatalogue& texts);

}  // namespace tarn
