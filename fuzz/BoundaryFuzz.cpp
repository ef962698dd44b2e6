// Any bytes that a host hands over as its settings document or its data model are either read or refused.
//
// The first byte chooses which of them the rest is.

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/peer/DataModelParser.h"
#include "platform/peer/InputAdapter.h"
#include "platform/peer/QKSettingsFactory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const auto document = HxCppHelperV1::XMLDocument::FromText(text);
    int error = 0;
    if (data[0] % 2 == 0) {
        QKSettings settings;
        QKSettingsFactory::MakeModelSettings(document, settings, &error);
    } else if (document.getRoot().isValid()) {
        const DataModelParser parser(document);
        InputAdapter adapter(nullptr, parser, false, false, false, true, true);
        adapter.BuildVarlist(&error);
    }
    return 0;
}
