#pragma once

#include <string>
#include <vector>

#include "host/verify/FunctionCheck.h"
#include "host/verify/PublishedCheck.h"

namespace tarn {

/// What a check of either pack found, for a reader: a table, what is to be said below it, and one line on all of it.
struct VerifyReport {
    std::string title;
    std::vector<std::string> heads;  ///< of the columns; the last one tells what is wrong
    struct Row {
        std::vector<std::string> cells;
        bool isRight = true;
    };
    std::vector<Row> rows;
    std::vector<std::string> remarks;
    std::string summary;
    bool isRight = true;
};

/// The printed numbers beside ours.
VerifyReport ReportOf(const std::vector<CheckedCase>& cases);
/// The errors of the distribution functions beside their bounds.
VerifyReport ReportOf(const std::vector<CheckedRange>& ranges);

/// As a text; `onlyWrong`: without the rows that are right.
std::string VerifyText(const VerifyReport& report, bool onlyWrong);
/// As one HTML file without scripts, which loads nothing.
std::string VerifyHtml(const VerifyReport& report, const std::string& version);
/// One case with its source, its request and its data.
std::string CaseText(const CheckedCase& checked);

/// As JSON of the format "tarn-verify-1".
std::string VerifyJson(const std::vector<CheckedCase>& cases, const std::string& version);
std::string VerifyJson(const std::vector<CheckedRange>& ranges, const std::string& version);

}  // namespace tarn
