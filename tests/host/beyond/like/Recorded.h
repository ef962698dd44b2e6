#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "host/beyond/AscendingSample.h"
#include "tests/harness/Command.h"

/// What R and SciPy say of the samples beside this file, as record.R and record.py wrote it; scripts/check_like
/// compares it with what they say now.
namespace tarn::like_test {

struct Recorded {
    std::vector<double> numbers;
    std::string call;
};

inline std::ifstream OpenBeside(const std::string& name) {
    std::ifstream file(harness::SourcePath("tests/host/beyond/like/" + name));
    EXPECT_TRUE(file.is_open()) << name;
    return file;
}

inline double NumberOf(const std::string& text) {
    return text == "nan" ? std::numeric_limits<double>::quiet_NaN() : std::strtod(text.c_str(), nullptr);
}

/// By their ids.
inline std::map<std::string, Recorded> ReadRecorded(const std::string& name) {
    std::map<std::string, Recorded> all;
    std::ifstream file = OpenBeside(name);
    for (std::string line; std::getline(file, line);) {
        std::istringstream cells(line);
        std::string id;
        std::string numbers;
        Recorded recorded;
        std::getline(cells, id, '\t');
        std::getline(cells, numbers, '\t');
        std::getline(cells, recorded.call, '\t');
        std::istringstream words(numbers);
        for (std::string word; words >> word;) recorded.numbers.push_back(NumberOf(word));
        all[id] = recorded;
    }
    return all;
}

inline const std::map<std::string, Recorded>& FromR() {
    static const std::map<std::string, Recorded> all = ReadRecorded("recorded-r.tsv");
    return all;
}

inline const std::map<std::string, Recorded>& FromSciPy() {
    static const std::map<std::string, Recorded> all = ReadRecorded("recorded-scipy.tsv");
    return all;
}

inline const Recorded& Find(const std::map<std::string, Recorded>& all, const std::string& id) {
    static const Recorded none;
    const auto found = all.find(id);
    EXPECT_NE(found, all.end()) << id;
    return found == all.end() ? none : found->second;
}

/// A sample of samples.csv, where 3:7 stands for the whole numbers from 3 to 7.
inline AscendingSample SampleOf(const std::string& name) {
    AscendingSample sample;
    std::ifstream file = OpenBeside("samples.csv");
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with(name + ",")) continue;
        std::istringstream words(line.substr(name.size() + 1));
        for (std::string word; words >> word;) {
            const std::size_t colon = word.find(':');
            const double first = NumberOf(word.substr(0, colon));
            const double last = colon == std::string::npos ? first : NumberOf(word.substr(colon + 1));
            for (double value = first; value <= last; ++value) sample.values.push_back(value);
        }
    }
    EXPECT_FALSE(sample.values.empty()) << name;
    std::sort(sample.values.begin(), sample.values.end());
    sample.size = static_cast<double>(sample.values.size());
    return sample;
}

/// Whether two numbers agree to so much of their value; NaN agrees with NaN.
inline testing::AssertionResult Agree(double actual, double expected, double relative) {
    const bool areEqual = actual == expected || (std::isnan(actual) && std::isnan(expected)) ||
                          std::abs(actual - expected) <= relative * std::abs(expected);
    return testing::AssertionResult(areEqual) << "actual " << actual << ", expected " << expected;
}

}  // namespace tarn::like_test
