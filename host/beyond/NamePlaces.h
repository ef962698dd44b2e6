#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tarn {

/// The places of names in a list, for whoever looks up each of many pairs. Borrows the names.
class NamePlaces {
 public:
    explicit NamePlaces(const std::vector<std::string>& names) : count_(names.size()) {
        for (std::size_t i = 0; i < names.size(); ++i) places_.emplace(names[i], i);
    }

    /// The first place of a name; one behind the last for a name that isn't there.
    std::size_t Of(std::string_view name) const {
        const auto found = places_.find(name);
        return found == places_.end() ? count_ : found->second;
    }

 private:
    std::size_t count_;
    std::unordered_map<std::string_view, std::size_t> places_;
};

}  // namespace tarn
