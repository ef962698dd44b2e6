#pragma once

#include <string>
#include <vector>

#include "host/beyond/SupplementOptions.h"
#include "host/engine/AnalysisRequest.h"
#include "host/table/TableLoader.h"

namespace tarn {

/// What a call asks for.
struct Request {
    AnalysisOptions analysis;
    SupplementOptions supplement;
    LoadOptions load;

    /// The fields that it speaks of, each once.
    std::vector<std::string> Fields() const;
};

/// Reads a request in JSON, an object whose keys are the arguments of `tarn.analyze`; one that is absent stays as it is
/// by itself. The package has checked the words. Throws a `std::exception` for another shape.
Request ReadRequest(const std::string& json);

}  // namespace tarn
