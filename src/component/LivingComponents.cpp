#include "component/LivingComponents.h"

#include "component/TARNComponentBuilder.h"

LivingComponents::Use::Use(LivingComponents& components, void* handle)
    : components_(components), component_(components.Take(handle)) {}

LivingComponents::Use::~Use() {
    if (component_ != nullptr) components_.GiveBack(*component_);
}

void LivingComponents::Add(TARNComponentBuilder* component) {
    const std::lock_guard lock(mutex_);
    isInUse_.emplace(component, false);
}

bool LivingComponents::Remove(void* handle) {
    const std::lock_guard lock(mutex_);
    const auto found = isInUse_.find(handle);
    if (found == isInUse_.end() || found->second) return false;
    isInUse_.erase(found);
    return true;
}

TARNComponentBuilder& LivingComponents::ComponentOf(void* handle) {
    return *static_cast<TARNComponentBuilder*>(handle);
}

TARNComponentBuilder* LivingComponents::Take(void* handle) {
    const std::lock_guard lock(mutex_);
    const auto found = isInUse_.find(handle);
    if (found == isInUse_.end() || found->second) return nullptr;
    found->second = true;
    return &ComponentOf(handle);
}

void LivingComponents::GiveBack(TARNComponentBuilder& component) {
    const std::lock_guard lock(mutex_);
    isInUse_.find(&component)->second = false;
}
