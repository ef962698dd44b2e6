#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace tarn {

/// Which columns of the data a call is about, by names as a user types them: exactly, without regard to the case of
/// letters, or as patterns.
class WantedColumns {
 public:
    /// `names`: those that have to be there. `words`: those of a condition, where a text without its quotes looks like
    /// one. `exact`: those that are looked up by their letters alone.
    WantedColumns(std::vector<std::string> names, std::vector<std::string> words, std::vector<std::string> exact);
    /// All of them.
    WantedColumns() : isAll_(true) {}

    bool Wants(std::string_view column) const;
    /// Whether columns that can't be tested are passed over and not refused.
    bool IsAll() const { return isAll_; }
    /// Throws an `InputError` for a name that no column has.
    void Check(const std::vector<std::string_view>& columns) const;

 private:
    std::vector<std::string> names_;
    std::vector<std::string> words_;
    std::vector<std::string> exact_;
    std::unordered_set<std::string> known_;  // all of them that are no patterns, in small letters
    std::vector<std::string> patterns_;
    bool isAll_ = false;
};

}  // namespace tarn
