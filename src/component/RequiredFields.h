#pragma once

#include <string>
#include <vector>

#include "platform/common/QKSettings.h"
#include "platform/common/QKStatus.h"
#include "platform/common/QKVarList.h"
#include "vocabulary/StatusCodes.h"

/// Why a request can't be prepared for. The code is the whole message.
namespace RequestCode {
/// The frequency weight is itself among the analysed fields.
inline constexpr long kWeightAnalysed = 220008_error;
inline constexpr long kNoGroupField = 220009_error;
inline constexpr long kNoField = 220010_error;
inline constexpr long kUnknownField = 220011_error;
}  // namespace RequestCode

/// The fields that the tests of a request need, each once, in the order of the request.
struct RequiredFields {
    std::vector<std::string> names;
    std::string groupField;   ///< empty without independent samples
    std::string caseIdField;  ///< may be empty

    /// Lists the fields of a request and checks them against the data model. Under a failure `caseIdField` is read
    /// all the same, and the names stay as they were unless the failure is in a name itself.
    QKStatus List(const QKSettings& request, const QKVarList& varList);

 private:
    QKStatus ListTestFields(const QKSettings& request, const QKVarList& varList);
};
