#include "host/RunStatusTexts.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tarn {

namespace {

struct StatusText {
    long code;
    std::string_view text;
};

constexpr std::array kTexts{
    StatusText{1, "the run was cancelled"},
    StatusText{6, "there is no complete run to write a document of"},
    StatusText{220001, "no test is requested, or none that fits the fields"},
    StatusText{220002, "not enough memory for the data"},
    StatusText{220003, "there is no record to analyse: the table is empty, or every row misses a value"},
    StatusText{220004, "a field is neither continuous nor categorical"},
    StatusText{220005, "there are no data to read"},
    StatusText{220008, "the weight field is among the fields of the tests; name other fields or another weight"},
    StatusText{220009, "fields for independent samples need a field that tells the groups"},
    StatusText{220010, "no field is named for any family of tests"},
    StatusText{220011, "a field of the request is not in the table"},
    StatusText{220012, "not enough memory for a test"},
    StatusText{220014, "no chosen test of related samples uses the continuous fields"},
    StatusText{220015, "no chosen test of related samples uses the ordinal fields"},
    StatusText{220016, "no chosen test of related samples uses the nominal fields"},
    StatusText{220017, "tests of related samples that don't fit the number of continuous fields were left out"},
    StatusText{220018, "tests of related samples that don't fit the number of ordinal fields were left out"},
    StatusText{220019, "tests of related samples that don't fit the number of nominal fields were left out"},
    StatusText{220020, "tests of related samples were left out, as there is no field that they take"},
    StatusText{220021, "the chi-square test takes categorical fields only; the continuous ones were left out"},
    StatusText{220022, "one-sample tests were left out, as there is no field that they take"},
    StatusText{220023, "fields that a one-sample test can't take were left out of it"},
    StatusText{220024, "the group field has to be categorical; the tests of independent samples were left out"},
    StatusText{220025, "tests of independent samples take continuous fields only; the categorical ones were left out"},
    StatusText{220026, "a record's weight is above 2147483647"},
    StatusText{240001, "the engine made no component"},
    StatusText{240002, "the request is no settings document"},
    StatusText{240003, "the data model is none that the engine can read"},
    StatusText{240004, "the data model describes fields that can't be"},
    StatusText{240037, "there is no record to analyse: the table is empty, or every row was dropped"},
    StatusText{240038, "the records don't fit the data model"},
};

/// "220001: no test is requested", or the code alone.
std::string WithText(long code) {
    const auto found =
        std::find_if(kTexts.begin(), kTexts.end(), [&](const auto& entry) { return entry.code == code; });
    return std::to_string(code) + (found == kTexts.end() ? "" : ": " + std::string(found->text));
}

}  // namespace

std::string DescribeMessage(bool isError, long code, const std::vector<std::string>& parameters) {
    std::string line = (isError ? "the run failed with code " : "warning ") + WithText(code);
    for (std::size_t i = 0; i < parameters.size(); ++i) line += (i == 0 ? " (" : "; ") + parameters[i];
    return parameters.empty() ? line : line + ")";
}

std::string DescribeRunFailure(long code) {
    return DescribeMessage(true, code, {});
}

}  // namespace tarn
