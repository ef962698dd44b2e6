#include "tests/harness/AllocationFailure.h"

#include <cstdlib>
#include <new>
#include <pugixml.hpp>

namespace {

constexpr long kNever = -1;
long successesLeft = kNever;
bool failsForGood = false;
bool hasFailed = false;

bool FailsNow() {
    if (successesLeft == kNever) return false;
    if (successesLeft > 0) {
        --successesLeft;
        return false;
    }
    if (!failsForGood) successesLeft = kNever;
    return hasFailed = true;
}

/// The XML library has allocations of its own, and answers to a failed one with null.
void* AllocateForXml(std::size_t size) {
    return FailsNow() ? nullptr : std::malloc(size);
}

[[maybe_unused]] const bool isXmlIncluded = (pugi::set_memory_management_functions(AllocateForXml, std::free), true);

}  // namespace

void* operator new(std::size_t size) {
    if (FailsNow()) throw std::bad_alloc();
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return FailsNow() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace component_test {

AllocationFailure::AllocationFailure(long successes, bool andAllAfter) {
    hasFailed = false;
    failsForGood = andAllAfter;
    successesLeft = successes;
}

AllocationFailure::~AllocationFailure() {
    successesLeft = kNever;
}

bool AllocationFailure::HasFailed() {
    return hasFailed;
}

}  // namespace component_test
