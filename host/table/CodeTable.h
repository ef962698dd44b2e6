#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tarn {

/// Numbers the different values of a column by their first occurrence, from 0. -0.0 and 0.0 are one number.
///
/// `View` is what a value is looked up by; only a new value is stored, as a `Value`.
template <typename Value, typename View>
class CodeTable {
 public:
    int CodeOf(View value) {
        const auto known = codes_.find(value);
        if (known != codes_.end()) return known->second;
        const int code = static_cast<int>(values_.size());
        codes_.emplace(values_.emplace_back(value), code);
        return code;
    }

    /// The values by their codes; they stay in place while the table grows.
    const std::deque<Value>& Values() const { return values_; }

 private:
    std::deque<Value> values_;
    std::unordered_map<View, int> codes_;  // views of values_
};

using NumberCodes = CodeTable<double, double>;
using TextCodes = CodeTable<std::string, std::string_view>;

}  // namespace tarn
