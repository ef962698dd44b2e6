// Handles that are none: what a host in error gives to the functions comes back as an answer, never as a crash.

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/component/HostedComponent.h"

namespace component_test {

namespace {

using MisusedHandles = HostedComponent;

constexpr int kUntouched = 4711;

/// The functions that take a component, `hx_destroy_component` apart, each with its name.
struct Call {
    const char* name;
    unsigned (*call)(const TinyLibrary&, void*, int*);
    unsigned answer;  ///< to a handle that is none, by the table of results in docs/host-interface.md
};

constexpr Call kCalls[] = {
    {"configure", [](const TinyLibrary& l, void* c, int* e) { return l.configure(c, e); }, HX_BAD_HANDLE},
    {"getDataModel",
     [](const TinyLibrary& l, void* c, int* e) {
         std::size_t needed = 0;
         return l.getDataModel(c, 0, nullptr, 0, &needed, e);
     },
     HX_BAD_HANDLE},
    {"getExecutionRequirements",
     [](const TinyLibrary& l, void* c, int* e) {
         std::size_t needed = 0;
         return l.getExecutionRequirements(c, nullptr, 0, &needed, e);
     },
     HX_BAD_HANDLE},
    {"getIteratorRequirements",
     [](const TinyLibrary& l, void* c, int* e) {
         long long count = 0;
         long long* passes = nullptr;
         return l.getIteratorRequirements(c, &count, &passes, &count, e);
     },
     HX_BAD_HANDLE},
    {"beginExecution", [](const TinyLibrary& l, void* c, int* e) { return l.beginExecution(c, nullptr, e); },
     HX_BAD_HANDLE},
    {"endExecution", [](const TinyLibrary& l, void* c, int* e) { return l.endExecution(c, e); }, HX_BAD_HANDLE},
    {"nextRecord", [](const TinyLibrary& l, void* c, int* e) { return l.nextRecord(c, e); }, HX_BAD_HANDLE},
    {"getRecordValue",
     [](const TinyLibrary& l, void* c, int* e) {
         void* value = nullptr;
         std::size_t size = 0;
         return l.getRecordValue(c, 0, &value, &size, e);
     },
     HX_BAD_HANDLE},
    {"getMessages",
     [](const TinyLibrary& l, void* c, int* e) {
         std::size_t needed = 0;
         return l.getMessages(c, nullptr, 0, &needed, e);
     },
     HX_NO_COMPONENT},
};

/// The number of calls that were answered as they should be.
int ExpectNoComponent(const TinyLibrary& library, void* handle, const std::string& what) {
    int right = 0;
    for (const Call& call : kCalls) {
        for (const bool hasPlace : {true, false}) {
            int error = kUntouched;
            const unsigned answer = call.call(library, handle, hasPlace ? &error : nullptr);
            EXPECT_EQ(answer, call.answer) << call.name << " of " << what;
            EXPECT_EQ(error, kUntouched) << call.name << " of " << what;
            right += answer == call.answer ? 1 : 0;
        }
    }
    return right;
}

/// The same of the two functions that answer another call at work in other ways.
int ExpectUnknown(const TinyLibrary& library, void* handle, const std::string& what) {
    int error = kUntouched;
    const unsigned cancelled = library.cancelExecution(handle, &error);
    const unsigned destroyed = library.destroy(handle);
    EXPECT_EQ(cancelled, HX_BAD_HANDLE) << what;
    EXPECT_EQ(destroyed, HX_BAD_HANDLE) << what;
    EXPECT_EQ(error, kUntouched) << what;
    return ExpectNoComponent(library, handle, what) + (cancelled == HX_BAD_HANDLE ? 1 : 0) +
           (destroyed == HX_BAD_HANDLE ? 1 : 0);
}

void* Handle(std::uintptr_t number) {
    return reinterpret_cast<void*>(number);
}

TEST_F(MisusedHandles, NoHandleThatIsNoneIsFollowed) {
    GivePair();
    ASSERT_EQ(RunAll(), HX_OK);
    const std::string document = Document();
    int misuses = 0;
    for (const std::uintptr_t small : {1U, 2U, 7U, 8U, 64U, 4095U, 4096U}) {
        misuses += ExpectUnknown(library, Handle(small), "a small number");
    }
    for (const std::uintptr_t large : {UINTPTR_MAX, UINTPTR_MAX - 7, UINTPTR_MAX / 2, UINTPTR_MAX / 2 + 1}) {
        misuses += ExpectUnknown(library, Handle(large), "a large number");
    }
    // Memory of the host: zeros, ones, its own structures, a function, the middle of a living component.
    std::vector<std::byte> zeros(4096);
    std::vector<std::byte> ones(4096, std::byte{0xff});
    misuses += ExpectUnknown(library, zeros.data(), "zeros");
    misuses += ExpectUnknown(library, ones.data(), "ones");
    misuses += ExpectUnknown(library, &host, "a host");
    misuses += ExpectUnknown(library, &host.context, "a context");
    misuses += ExpectUnknown(library, reinterpret_cast<void*>(&ExpectUnknown), "a function");
    for (const std::size_t offset : {1U, 8U, 16U}) {
        misuses += ExpectUnknown(library, static_cast<std::byte*>(component) + offset, "within a component");
    }
    misuses += ExpectUnknown(library, nullptr, "null");
    EXPECT_EQ(misuses, 20 * (2 * 9 + 2));

    // The component itself is as it was.
    EXPECT_EQ(End(), HX_OK);
    EXPECT_EQ(Begin(), HX_OK);
    EXPECT_EQ(Document(), document);
}

TEST_F(MisusedHandles, ADestroyedComponentIsNoneAnyMore) {
    GivePair();
    int misuses = 0;
    for (int life = 0; life < 10; ++life) {
        ASSERT_EQ(RunAll(), HX_OK);
        ASSERT_EQ(End(), HX_OK);
        void* const expired = std::exchange(component, nullptr);
        ASSERT_EQ(library.destroy(expired), HX_OK);
        tiny_host_free(&host);
        misuses += ExpectUnknown(library, expired, "a destroyed component");
    }
    EXPECT_EQ(misuses, 10 * (2 * 9 + 2));
}

TEST_F(MisusedHandles, AComponentOfAnotherLibraryIsForeign) {
    const FreshLibrary other;
    GivePair();
    ASSERT_EQ(Create(), HX_OK);
    EXPECT_EQ(ExpectUnknown(other, component, "a component of another library"), 2 * 9 + 2);
    EXPECT_EQ(Configure(), HX_OK);
}

TEST_F(MisusedHandles, ANullPlaceForTheComponentMakesNone) {
    EXPECT_EQ(library.create(&host.context, nullptr, nullptr, &errorCode), HX_FAILED);
    EXPECT_EQ(errorCode, HX_ERROR_NO_COMPONENT);
    EXPECT_EQ(library.create(&host.context, nullptr, nullptr, nullptr), HX_FAILED);
}

// ---- Calls from within a function of the host ----

/// A host that calls everything with the component that is just at work.
struct CallsFromWithin {
    const TinyLibrary* library;
    void* component;
    int misuses = 0;

    static void Call(void* user) {
        auto* const self = static_cast<CallsFromWithin*>(user);
        const TinyLibrary& library = *self->library;
        self->misuses += ExpectNoComponent(library, self->component, "a component at work");
        EXPECT_EQ(library.destroy(self->component), HX_BAD_HANDLE);
        // From another thread it is the same.
        std::thread([self] {
            self->misuses += ExpectNoComponent(*self->library, self->component, "a component at work elsewhere");
        }).join();
    }
};

TEST_F(MisusedHandles, AComponentAtWorkIsOpenToACancelAlone) {
    GivePair();
    ASSERT_EQ(RunAll(), HX_OK);
    const std::string document = Document();
    ASSERT_EQ(End(), HX_OK);
    CallsFromWithin within{&library, component};
    host.onProgress = CallsFromWithin::Call;
    host.user = &within;
    EXPECT_EQ(Begin(), HX_OK);
    EXPECT_EQ(Document(), document) << "what came meanwhile changes nothing";
    EXPECT_GE(within.misuses, 2 * 2 * 9);
}

/// A host that uses another component of its own meanwhile, which it may.
struct OtherFromWithin {
    const TinyLibrary* library;
    HXContext* context;
    static void Call(void* user) {
        auto* const self = static_cast<OtherFromWithin*>(user);
        void* other = nullptr;
        ASSERT_EQ(self->library->create(self->context, nullptr, &other, nullptr), HX_OK);
        EXPECT_EQ(self->library->configure(other, nullptr), HX_OK);
        EXPECT_EQ(self->library->destroy(other), HX_OK);
    }
};

TEST_F(MisusedHandles, AnotherComponentMayBeUsedFromWithinAFunctionOfTheHost) {
    GivePair();
    ASSERT_EQ(Create(), HX_OK);
    ASSERT_EQ(Configure(), HX_OK);
    OtherFromWithin within{&library, &host.context};
    host.onProgress = OtherFromWithin::Call;
    host.user = &within;
    EXPECT_EQ(Begin(), HX_OK);
}

// ---- From many threads ----

TEST_F(MisusedHandles, ManyThreadsAtOneComponentGetAnAnswerEach) {
    GivePair();
    ASSERT_EQ(Create(), HX_OK);
    constexpr int kThreads = 4;
    constexpr int kRounds = 200;
    std::array<int, kThreads> strange = {};
    std::vector<std::thread> threads;
    for (int& mine : strange) {
        threads.emplace_back([this, &mine] {
            for (int round = 0; round < kRounds; ++round) {
                const unsigned ended = library.endExecution(component, nullptr);
                if (ended != HX_OK && ended != HX_BAD_HANDLE) ++mine;
                if (library.cancelExecution(component, nullptr) != HX_OK) ++mine;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(strange, (std::array<int, kThreads>{}));
    EXPECT_EQ(End(), HX_OK);
    EXPECT_EQ(Configure(), HX_OK);
    EXPECT_EQ(Begin(), HX_OK);
}

}  // namespace

}  // namespace component_test
