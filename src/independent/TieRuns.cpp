#include "independent/TieRuns.h"

void TieRuns::Keep() {
    if (present_.size() == 1 && weightOf_[present_.front()] == 1) {
        weightOf_[present_.front()] = 0;
        present_.clear();
        return;
    }
    // A group whose weights have met at 0 in between is there twice.
    std::sort(present_.begin(), present_.end());
    present_.erase(std::unique(present_.begin(), present_.end()), present_.end());
    for (const std::uint32_t group : present_) {
        const std::int64_t weight = weightOf_[group];
        weightOf_[group] = 0;
        if (weight == 0) continue;
        hasNegative_ = hasNegative_ || weight < 0;
        parts_.push_back({group, weight});
    }
    present_.clear();
    if (parts_.size() > (ends_.empty() ? 0 : ends_.back())) ends_.push_back(parts_.size());
}
