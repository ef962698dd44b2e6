#pragma once

#include <string>
#include <vector>

#include "host/beyond/explain/ExplainedTest.h"

namespace tarn {

/// The two classes of a test of one field, as its condition names them, with the class of each case.
struct ClassesOfField {
    std::string firstName;
    std::string secondName;
    std::vector<bool> areFirst;  ///< row by row
    double first = 0;            ///< cases
    double second = 0;

    double Total() const { return first + second; }
};

/// To which class a value belongs that equals the cut point.
enum class CutItself { kIsFirst, kIsSecond };

ClassesOfField ClassesOf(const ExplainedTest& test, CutItself cutItself);

/// A number of a document, which has 15 digits, with all those that it was computed with: the one among `candidates`
/// that is written alike, or what stands there.
double InAllDigits(const std::string& written, std::initializer_list<double> candidates);

}  // namespace tarn
