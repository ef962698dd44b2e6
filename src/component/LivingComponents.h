#pragma once

#include <map>
#include <mutex>

class TARNComponentBuilder;

/// The components that are made and not yet destroyed, by which a handle of a host is known before it is followed, and
/// whether a call is at work in each. For any number of threads.
class LivingComponents {
 public:
    /// A component for the time of one call. Another call that comes meanwhile, from another thread or from within a
    /// function of the host, gets none.
    class Use {
     public:
        Use(LivingComponents& components, void* handle);
        ~Use();
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

        /// Null where the handle is none of a living component, or its component is in use.
        TARNComponentBuilder* Component() const { return component_; }

     private:
        LivingComponents& components_;
        TARNComponentBuilder* component_;
    };

    /// Throws where memory is exhausted; the component is then unknown.
    void Add(TARNComponentBuilder* component);
    /// False where the handle is none of a living component, or its component is in use. Else it is one no more.
    bool Remove(void* handle);
    /// Does what may be done to a component while it is in use, and keeps it from being removed meanwhile. False where
    /// the handle is none of a living component.
    template <typename Operation>
    bool Reach(void* handle, Operation operation) {
        const std::lock_guard lock(mutex_);
        const auto found = isInUse_.find(handle);
        if (found == isInUse_.end()) return false;
        operation(ComponentOf(handle));
        return true;
    }

 private:
    static TARNComponentBuilder& ComponentOf(void* handle);
    TARNComponentBuilder* Take(void* handle);
    void GiveBack(TARNComponentBuilder& component);

    std::mutex mutex_;
    std::map<void*, bool> isInUse_;
};
