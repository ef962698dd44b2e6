#include "host/ResultSummary.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <pugixml.hpp>
#include <string_view>
#include <vector>

#include "host/InputError.h"
#include "host/TextTable.h"

namespace tarn {

namespace {

pugi::xml_node TableNamed(const pugi::xml_node& parent, const char* name) {
    return parent.find_child_by_attribute("StructuredTable", "name", name);
}

/// A parsed result document.
class ParsedResult {
 public:
    explicit ParsedResult(const std::string& document) {
        if (!document_.load_buffer(document.data(), document.size())) {
            throw InputError("the result document is not well-formed XML");
        }
        if (!Output()) {
            throw InputError("the document is no result document: \"Tabulon\" with \"TARNOutput\" was expected");
        }
    }

    pugi::xml_node Output() const { return document_.child("Tabulon").child("Extension").child("TARNOutput"); }
    auto Tests() const { return Output().child("NonParametricTests").children("Algorithm"); }

 private:
    pugi::xml_document document_;
};

/// The value of a row, "" where there is none.
std::string RowValue(const pugi::xml_node& table, const char* name) {
    return table.find_child_by_attribute("Attribute", "name", name).attribute("value").value();
}

std::vector<std::string> FieldNames(const pugi::xml_node& output) {
    std::vector<std::string> names;
    for (const pugi::xml_node& field : output.child("DataDictionary").children("DataField")) {
        names.emplace_back(field.attribute("name").value());
    }
    return names;
}

/// The first two parameters of a condition are fields wherever a test has a pair or a group; the first is always.
std::string FieldsOf(const pugi::xml_node& test, const std::vector<std::string>& names) {
    const pugi::xml_node condition = TableNamed(test, "Condition");
    std::string text;
    for (const char* parameter : {"%0", "%1"}) {
        const std::string value = RowValue(condition, parameter);
        if (value.empty()) continue;
        char* end = nullptr;
        const unsigned long index = std::strtoul(value.c_str(), &end, 10);
        const bool isField = *end == '\0' && value[0] != '-' && index < names.size();
        if (!text.empty()) text += ", ";
        text += isField ? names[index] : "?";
    }
    return text;
}

struct DecidingSignificance {
    std::string value;
    std::string kind;
};

/// The exact significance decides wherever an element has one.
DecidingSignificance SignificanceOf(const pugi::xml_node& statistics) {
    const std::string exact = RowValue(statistics, "ExactSig2Tailed");
    if (!exact.empty()) return {exact, "exact"};
    const std::string asymptotic = RowValue(statistics, "AsymptoticSig2Tailed");
    return {asymptotic, asymptotic.empty() ? "" : "asymptotic"};
}

/// A number of the document in a width for reading; its own text where it is none.
std::string Shortened(const std::string& text, const char* format) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0') return text;
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, value);
    return buffer;
}

std::string Significance(const std::string& text) {
    constexpr double kSmallestShown = 0.001;
    const bool isTiny = !text.empty() && std::strtod(text.c_str(), nullptr) < kSmallestShown;
    return isTiny ? "< .001" : Shortened(text, "%.3f");
}

/// "220916 helpMessage", then the parameters of the message.
std::string MessageLine(const pugi::xml_node& message) {
    std::string line = RowValue(message, "code") + " " + RowValue(message, "type");
    const int count = std::atoi(RowValue(message, "paramNum").c_str());
    for (int i = 0; i < count; ++i) {
        line += (i == 0 ? ": " : ", ") + RowValue(message, ("%" + std::to_string(i)).c_str());
    }
    return line;
}

}  // namespace

std::size_t CountTests(const std::string& document) {
    const ParsedResult result(document);
    const auto tests = result.Tests();
    return static_cast<std::size_t>(std::distance(tests.begin(), tests.end()));
}

std::string SummarizeDocument(const std::string& document) {
    const ParsedResult result(document);
    const pugi::xml_node output = result.Output();
    const std::vector<std::string> names = FieldNames(output);
    TextTable table({{"Test"},
                     {"Fields"},
                     {"N", Alignment::kRight},
                     {"Statistic", Alignment::kRight},
                     {"p", Alignment::kRight},
                     {"kind"},
                     {"Decision"}});
    std::string messages;
    int number = 0;
    for (const pugi::xml_node& test : result.Tests()) {
        ++number;
        const std::string name = std::to_string(number) + " " + test.attribute("name").value();
        const pugi::xml_node statistics = TableNamed(test, "StatisticsResult");
        const DecidingSignificance significance = SignificanceOf(statistics);
        table.AddRow({name, FieldsOf(test, names), RowValue(statistics, "TotalN"),
                      Shortened(RowValue(statistics, "TestStatistic"), "%.6g"), Significance(significance.value),
                      significance.kind, test.attribute("decision").value()});
        for (const pugi::xml_node& message : TableNamed(test, "WarningMessages").children("StructuredTable")) {
            messages += name + ": " + MessageLine(message) + "\n";
        }
    }
    if (number == 0) return "No test of the request is known.\n";
    return table.ToText() + messages;
}

}  // namespace tarn
