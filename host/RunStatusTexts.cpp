#include "host/RunStatusTexts.h"

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
    StatusText{220001, "no test is requested: name at least one under \"tests\""},
    StatusText{220002, "not enough memory for the data"},
    StatusText{220003, "there is no record to analyse: the table is empty, or every row misses a value"},
    StatusText{220004, "a field is neither continuous nor categorical"},
    StatusText{220005, "there are no data to read"},
    StatusText{220012, "not enough memory for a test"},
    StatusText{220026, "a record's weight is above 2147483647"},
};

}  // namespace

std::string DescribeRunFailure(long code) {
    std::string line = "the run failed with code " + std::to_string(code);
    for (const StatusText& entry : kTexts) {
        if (entry.code == code) line += ": " + std::string(entry.text);
    }
    return line;
}

}  // namespace tarn
