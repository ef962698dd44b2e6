#include "host/verify/VerifyReport.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <set>

#include "host/TextTable.h"
#include "host/report/JsonValues.h"

namespace tarn {

namespace {

constexpr const char* kFormat = "tarn-verify-1";
constexpr const char* kNoNumber = "none";

/// An error with the digits that matter of one.
std::string ErrorText(double error) {
    std::array<char, 32> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), error, std::chars_format::scientific, 1);
    return {text.data(), end.ptr};
}

std::string CountText(std::size_t count, const std::string& one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string Counted(std::size_t count, const std::string& ofOne, const std::string& ofMany) {
    return std::to_string(count) + " " + (count == 1 ? ofOne : ofMany);
}

// ---- Published numbers ----

std::string StateOf(const ComparedNumber& number) {
    if (number.isNeedlesslyExcused) return "AGREES with what is said to be printed wrongly";
    if (!number.agreement.agrees) return "DIFFERS";
    if (number.expected->Differs()) return "printed otherwise, see below";
    return number.wanted == &number.expected->asDefined ? "as defined " + number.wanted->text : "";
}

void AddRow(VerifyReport& report, const ReferenceCase& reference, const ComparedNumber& number) {
    const Expectation& expected = *number.expected;
    const PrintedNumber& wanted = *number.wanted;
    report.rows.push_back(
        {{reference.name, expected.Name(), expected.printed.text, number.ours.empty() ? kNoNumber : number.ours.text,
          std::to_string(number.agreement.digits) + " of " + std::to_string(wanted.digits), StateOf(number)},
         number.IsRight()});
    if (expected.Differs()) {
        report.remarks.push_back(reference.name + ", " + expected.Name() + ": printed " + expected.printed.text + ", " +
                                 "here " + number.wanted->text + ": " + expected.differs);
    }
}

Json NumberOf(const ComparedNumber& number) {
    const Expectation& expected = *number.expected;
    return {{"quantity", expected.quantity},
            {"of", TextOrNull(expected.of)},
            {"printed", expected.printed.text},
            {"right", TextOrNull(expected.right.text)},
            {"differs", TextOrNull(expected.differs)},
            {"as_defined", TextOrNull(expected.asDefined.text)},
            {"source", TextOrNull(expected.source)},
            {"ours", NumberJson(number.ours)},
            {"digits_agreeing", number.agreement.digits},
            {"digits_printed", number.wanted->digits},
            {"agrees", number.IsRight()}};
}

Json Head(const std::string& version, bool agrees) {
    return {{"format", kFormat}, {"tarn", version}, {"agrees", agrees}};
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::string HtmlRow(const std::vector<std::string>& cells, const std::string& tag, bool isRight) {
    std::string row = isRight ? "<tr>" : "<tr class=\"wrong\">";
    for (const std::string& cell : cells) row.append("<" + tag + ">").append(Escaped(cell)).append("</" + tag + ">");
    return row + "</tr>\n";
}

/// A word as it is typed into a shell.
std::string Typed(const std::string& word) {
    const bool isPlain = word.find_first_of(" ~|&<>()*?$\"'`;") == std::string::npos;
    return isPlain ? word : "'" + word + "'";
}

/// The columns of a case, as many of them beside one another as fit; long ones in lines.
std::string DataText(const ReferenceCase& reference) {
    std::string text;
    for (const ReferenceColumn& column : reference.columns) {
        std::string line = "  " + column.name + ":";
        for (const std::string& cell : column.cells) {
            constexpr std::size_t kWidth = 110;
            if (line.size() + cell.size() + 1 > kWidth) {
                text += line + "\n";
                line = "   ";
            }
            line += " " + (cell.empty() ? "NA" : cell);
        }
        text += line + "\n";
    }
    return text;
}

}  // namespace

VerifyReport ReportOf(const std::vector<CheckedCase>& cases) {
    VerifyReport report;
    report.title = "Published results";
    report.heads = {"case", "quantity", "printed", "ours", "digits", ""};
    std::set<std::string> tests;
    for (const CheckedCase& checked : cases) {
        tests.insert(checked.reference->test);
        if (!checked.mistake.empty()) {
            report.rows.push_back({{checked.reference->name, "", "", "", "", "NOT DONE: " + checked.mistake}, false});
        }
        for (const ComparedNumber& number : checked.numbers) AddRow(report, *checked.reference, number);
    }
    const auto wrong = static_cast<std::size_t>(std::ranges::count(report.rows, false, &VerifyReport::Row::isRight));
    report.isRight = wrong == 0;
    report.summary = CountText(report.rows.size(), "number") + " of " + CountText(cases.size(), "case") + ", " +
                     CountText(tests.size(), "test") + ": ";
    const std::size_t excused = report.remarks.size();
    if (report.isRight && excused == 0) {
        report.summary += "all agree to the printed digits";
    } else if (report.isRight) {
        report.summary += Counted(report.rows.size() - excused, "agrees", "agree") + " to the printed digits, " +
                          Counted(excused, "is", "are") + " printed otherwise, with the reason";
    } else {
        report.summary += Counted(wrong, "differs", "differ");
    }
    return report;
}

VerifyReport ReportOf(const std::vector<CheckedRange>& ranges) {
    VerifyReport report;
    report.title = "Distribution functions";
    report.heads = {"function", "range", "points", "worst error", "bound", "at", ""};
    std::size_t points = 0;
    for (const CheckedRange& checked : ranges) {
        points += checked.range->points.size();
        std::string state = checked.IsRight() ? "" : "BEYOND ITS BOUND";
        if (!checked.mistake.empty()) state = "NOT DONE: " + checked.mistake;
        report.rows.push_back(
            {{checked.table->function, checked.range->name, std::to_string(checked.range->points.size()),
              ErrorText(checked.worst), checked.range->bound, checked.worstAt, state},
             checked.IsRight()});
    }
    const auto wrong = static_cast<std::size_t>(std::ranges::count(report.rows, false, &VerifyReport::Row::isRight));
    report.isRight = wrong == 0;
    report.summary = CountText(points, "point") + " in " + CountText(ranges.size(), "range") + ": ";
    report.summary += report.isRight
                          ? "all within their bounds"
                          : CountText(wrong, "range") + " beyond " + (wrong == 1 ? "its bound" : "their bounds");
    return report;
}

std::string VerifyText(const VerifyReport& report, bool onlyWrong) {
    std::vector<TextTable::ColumnHead> heads;
    for (const std::string& head : report.heads) heads.push_back({head});
    TextTable table(heads);
    for (const VerifyReport::Row& row : report.rows) {
        if (!onlyWrong || !row.isRight) table.AddRow(row.cells);
    }
    std::string text = table.IsEmpty() ? "" : table.ToText() + "\n";
    if (!onlyWrong) {
        for (const std::string& remark : report.remarks) text += remark + "\n";
        if (!report.remarks.empty()) text += "\n";
    }
    return text + report.summary + "\n";
}

std::string VerifyHtml(const VerifyReport& report, const std::string& version) {
    std::string html =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'\">\n"
        "<title>" +
        Escaped(report.title) +
        "</title>\n<style>\nbody { font-family: sans-serif; margin: 2em }\ntable { border-collapse: collapse }\n"
        "th, td { text-align: left; padding: 0.2em 0.8em; border-bottom: 1px solid #ccc }\n"
        ".wrong { background: #fdd; color: #600 }\n</style>\n</head>\n<body>\n";
    html += "<h1>" + Escaped(report.title) + "</h1>\n<p>tarn " + Escaped(version) + ": " + Escaped(report.summary) +
            "</p>\n<table>\n<thead>\n" + HtmlRow(report.heads, "th", true) + "</thead>\n<tbody>\n";
    for (const VerifyReport::Row& row : report.rows) html += HtmlRow(row.cells, "td", row.isRight);
    html += "</tbody>\n</table>\n";
    for (const std::string& remark : report.remarks) html += "<p>" + Escaped(remark) + "</p>\n";
    return html + "</body>\n</html>\n";
}

std::string CaseText(const CheckedCase& checked) {
    const ReferenceCase& reference = *checked.reference;
    std::string text =
        reference.name + ": " + reference.title + "\n  Source (" + reference.kind + "): " + reference.source + "\n";
    std::set<std::string> sources;
    for (const Expectation& expected : reference.expectations) {
        if (!expected.source.empty() && sources.insert(expected.source).second) {
            text += "  Source of " + expected.Name() + ": " + expected.source + "\n";
        }
    }
    if (!reference.note.empty()) text += "  Note: " + reference.note + "\n";
    text += "  Request: tarn analyze DATA.csv";
    for (const std::string& word : reference.request) text += " " + Typed(word);
    return text + "\n" + DataText(reference) + "\n" + VerifyText(ReportOf(std::vector{checked}), false);
}

std::string VerifyJson(const std::vector<CheckedCase>& cases, const std::string& version) {
    Json json = Head(version, std::ranges::all_of(cases, &CheckedCase::IsRight));
    json["cases"] = Json::array();
    for (const CheckedCase& checked : cases) {
        const ReferenceCase& reference = *checked.reference;
        Json one{{"name", reference.name},       {"test", reference.test},
                 {"title", reference.title},     {"kind", reference.kind},
                 {"source", reference.source},   {"note", TextOrNull(reference.note)},
                 {"request", reference.request}, {"mistake", TextOrNull(checked.mistake)},
                 {"agrees", checked.IsRight()},  {"numbers", Json::array()}};
        for (const ComparedNumber& number : checked.numbers) one["numbers"].push_back(NumberOf(number));
        json["cases"].push_back(one);
    }
    return json.dump(2) + "\n";
}

std::string VerifyJson(const std::vector<CheckedRange>& ranges, const std::string& version) {
    Json json = Head(version, std::ranges::all_of(ranges, &CheckedRange::IsRight));
    json["functions"] = Json::array();
    for (const CheckedRange& checked : ranges) {
        json["functions"].push_back({{"function", checked.table->function},
                                     {"title", checked.table->title},
                                     {"made", checked.table->made},
                                     {"range", checked.range->name},
                                     {"points", checked.range->points.size()},
                                     {"worst_error", NumberJson(ErrorText(checked.worst))},
                                     {"worst_at", TextOrNull(checked.worstAt)},
                                     {"bound", checked.range->bound},
                                     {"mistake", TextOrNull(checked.mistake)},
                                     {"agrees", checked.IsRight()}});
    }
    return json.dump(2) + "\n";
}

}  // namespace tarn
