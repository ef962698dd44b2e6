#pragma once

#include "platform/common/QKSettings.h"
#include "platform/peer/HxCppXml.h"

/// Reads a settings document.
class QKSettingsFactory {
 public:
    /// Adds the settings of the document `model` to `settings`, in their order. HX_OK, or HX_FAILED for a document
    /// that is no settings document, with the reason in `*errorCode`; what stands before the mistake is added then.
    static unsigned MakeModelSettings(const HxCppHelperV1::XMLDocument& model, QKSettings& settings, int* errorCode);
};
