#pragma once

#include <string>
#include <vector>

#include "host/report/ResultDocument.h"

namespace tarn {

/// The order in which a user named what is tested.
struct AskedOrder {
    struct Family {
        std::string classification;  ///< as in the document: "One_Sample"
        std::vector<std::string> fields;
    };
    std::vector<Family> families;
    std::vector<std::string> tests;  ///< by their names in the document; empty: chosen by the engine
};

/// Puts the tests of a document in that order: family by family, in a family field by field, for a field test by test.
/// The engine has an order of its own. Tests that stand alike stay as they are.
void PutInOrder(ResultDocument& document, const AskedOrder& order);

}  // namespace tarn
