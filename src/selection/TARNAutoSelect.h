#pragma once

#include <string>
#include <vector>

#include "platform/common/QKSettings.h"
#include "platform/common/QKVarList.h"
#include "vocabulary/TestFacts.h"  // the names of the families

/// Chooses the tests that suit fields, from what is known of the fields alone: kind, categories and their order.
///
/// A proposal is the settings of one test, of the shape of an entry of the execution settings, with the test's name
/// under "algorithmName". An object keeps nothing between calls.
class TARNAutoSelect {
 public:
    virtual ~TARNAutoSelect() = default;

    /// Appends a proposal for each test that suits, and gives back the fields for which there is none. The caller owns
    /// the proposals. One sample and independent samples: a proposal for each field by itself; related samples: up to
    /// three, over the continuous, the nominal and the ordinal fields together, and nothing is given back. A family of
    /// another name yields nothing. Only independent samples look at `groupField`.
    std::vector<std::string> SelectTests(std::vector<QKSettings*>& proposals, const std::string& family,
                                         const QKVarList& varList, std::vector<std::string> fields,
                                         const std::string& groupField) const;
};
