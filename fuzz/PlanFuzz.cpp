// Any bytes are either a plan, a request, or an input error; and what the host makes of a request for the engine, the
// engine reads.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "host/engine/PassedOver.h"
#include "host/engine/SettingsDocument.h"
#include "host/plan/PlanSettings.h"
#include "platform/hx/HXStatus.h"
#include "platform/peer/QKSettingsFactory.h"

namespace {

void ReadAsPlan(const std::string& text) {
    try {
        tarn::ByteSource source = tarn::ByteSource::FromMemory("plan.json", text);
        tarn::ReadPlan(source);
    } catch (const tarn::InputError&) {
        // The other good end.
    }
}

void ReadAsRequest(const std::string& text) {
    std::string document;
    try {
        tarn::ByteSource source = tarn::ByteSource::FromMemory("request.json", text);
        const auto request = tarn::ReadJson(source);
        if (!request.is_object()) return;
        tarn::PassedOverInRequest(request, source.Name());
        document = tarn::MakeSettingsDocument(request, source.Name());
    } catch (const tarn::InputError&) {
        return;
    }
    QKSettings settings;
    int error = 0;
    const auto xml = HxCppHelperV1::XMLDocument::FromText(document);
    if (QKSettingsFactory::MakeModelSettings(xml, settings, &error) != HX_OK) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    ReadAsPlan(text);
    ReadAsRequest(text);
    return 0;
}
