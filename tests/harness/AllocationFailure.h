#pragma once

/// Makes allocations of the whole program fail, those of the library and of the XML library included.
namespace component_test {

/// While it lives, the allocation after the next `successes` ones fails, and with `andAllAfter` all that follow.
class AllocationFailure {
 public:
    explicit AllocationFailure(long successes, bool andAllAfter = false);
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    /// Whether an allocation failed so far.
    static bool HasFailed();
};

}  // namespace component_test
