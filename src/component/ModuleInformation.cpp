#include "component/ModuleInformation.h"

#include "platform/peer/HxCppHelper.h"

using HxCppHelperV1::HostHelper;
using HxCppHelperV1::XMLDocument;
using HxCppHelperV1::XMLElement;

std::string MakeModuleInformation(HXHost* host) {
    const std::unique_ptr<HostHelper> helper = HostHelper::create(host);
    if (helper == nullptr) return {};
    const XMLDocument document = helper->createNew("ModuleInformation");
    XMLElement module = document.getRoot().addChild("Module");
    module.addAttribute("name", "TARN");
    module.addAttribute("provider", "ZOMR");
    module.addAttribute("version", "1.0.0.0");
    module.addAttribute("copyright", "Copyright the authors of TARN");
    return XMLElement::doc2string(document);
}
