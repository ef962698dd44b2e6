#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/hx/hx.h"

namespace tarn {

/// The engine's shared library, loaded and bound by the names of its functions. This is all that the host knows of
/// the engine.
class EngineLibrary {
 public:
    /// Loads the library of this version from the first of `folders` that has it, or from where the system looks for
    /// libraries.
    /// Throws a `std::runtime_error` that names the library or the function that is missing.
    explicit EngineLibrary(const std::vector<std::string>& folders = {});
    EngineLibrary(const EngineLibrary&) = delete;
    EngineLibrary& operator=(const EngineLibrary&) = delete;

    decltype(&hx_initialise) initialise;
    decltype(&hx_cleanup) cleanup;
    decltype(&hx_getModuleInformation) getModuleInformation;
    decltype(&hx_create_component) createComponent;
    decltype(&hx_destroy_component) destroyComponent;
    decltype(&hx_component_configure) configure;
    decltype(&hx_component_getExecutionRequirements) getExecutionRequirements;
    decltype(&hx_component_beginExecution) beginExecution;
    decltype(&hx_component_endExecution) endExecution;
    decltype(&hx_component_cancelExecution) cancelExecution;
    decltype(&hx_component_getMessages) getMessages;

 private:
    template <typename Function>
    void Bind(Function& function, const char* name);

    struct Close {
        void operator()(void* library) const;
    };
    std::unique_ptr<void, Close> library_;
};

}  // namespace tarn
