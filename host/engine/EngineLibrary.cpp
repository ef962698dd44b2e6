#include "host/engine/EngineLibrary.h"

#include <dlfcn.h>

#include <stdexcept>

namespace tarn {

namespace {

// With the version of its interface: another one would be called wrongly, and the name without a version is there only
// where programs are built.
constexpr const char* kLibraryName = TARN_LIBRARY_NAME;

void* Open(const std::vector<std::string>& folders) {
    for (const std::string& folder : folders) {
        const std::string path = folder + "/" + kLibraryName;
        if (void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) return library;
    }
    if (void* library = dlopen(kLibraryName, RTLD_NOW | RTLD_LOCAL)) return library;
    throw std::runtime_error("the engine can't be loaded: " + std::string(dlerror()));
}

}  // namespace

EngineLibrary::EngineLibrary(const std::vector<std::string>& folders) : library_(Open(folders)) {
    Bind(initialise, "hx_initialise");
    Bind(cleanup, "hx_cleanup");
    Bind(getModuleInformation, HX_MODULE_INFORMATION_SYMBOL);
    Bind(createComponent, "hx_create_component");
    Bind(destroyComponent, "hx_destroy_component");
    Bind(configure, "hx_component_configure");
    Bind(getExecutionRequirements, "hx_component_getExecutionRequirements");
    Bind(beginExecution, "hx_component_beginExecution");
    Bind(endExecution, "hx_component_endExecution");
    Bind(cancelExecution, "hx_component_cancelExecution");
    Bind(getMessages, "hx_component_getMessages");
}

template <typename Function>
void EngineLibrary::Bind(Function& function, const char* name) {
    function = reinterpret_cast<Function>(dlsym(library_.get(), name));
    if (function == nullptr) throw std::runtime_error(std::string("the engine lacks the function ") + name);
}

void EngineLibrary::Close::operator()(void* library) const {
    dlclose(library);
}

}  // namespace tarn
