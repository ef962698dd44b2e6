#pragma once

#include <pthread.h>

#include <memory>
#include <new>

/// A value of each thread's own, made when the thread asks for it first and destroyed when the thread ends. Throws
/// `std::bad_alloc` where there is no memory for it: a `thread_local` with a destructor ends the process then.
///
/// One for the process, of static storage. This header includes nothing of the project and is open to all floors.
template <typename Value>
class ThreadOwned {
 public:
    ThreadOwned() : isThere_(pthread_key_create(&key_, [](void* value) { delete static_cast<Value*>(value); }) == 0) {}
    ThreadOwned(const ThreadOwned&) = delete;
    ThreadOwned& operator=(const ThreadOwned&) = delete;
    /// When the library is unloaded; what threads still hold then can't be reached any more.
    ~ThreadOwned() {
        if (isThere_) pthread_key_delete(key_);
    }

    Value& OfThisThread() const {
        if (!isThere_) throw std::bad_alloc();
        if (void* const known = pthread_getspecific(key_)) return *static_cast<Value*>(known);
        auto made = std::make_unique<Value>();
        if (pthread_setspecific(key_, made.get()) != 0) throw std::bad_alloc();
        return *made.release();
    }

 private:
    pthread_key_t key_ = {};
    bool isThere_;
};
