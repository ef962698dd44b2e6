#pragma once

#include <string>
#include <vector>

#include "host/beyond/explain/ExplainedTest.h"

namespace tarn {

/// Which categories of a test of dichotomies are the success: those that the user names, or the first field's category
/// in the first case.
class SuccessesOfTest {
 public:
    explicit SuccessesOfTest(const ExplainedTest& test);

    /// 1 for a success and 0, a list for each field.
    const std::vector<std::vector<double>>& Columns() const { return columns_; }
    const std::string& Name() const { return name_; }

 private:
    std::vector<std::vector<double>> columns_;
    std::string name_;
};

}  // namespace tarn
