#pragma once

#include <string>
#include <vector>

/// Result documents for the tests of the reports, written out by hand.
namespace report_test {

inline std::string Row(const std::string& name, const std::string& value) {
    return "<Attribute name=\"" + name + "\" value=\"" + value + "\"/>";
}

inline std::string Table(const std::string& name, const std::string& content) {
    return "<StructuredTable name=\"" + name + "\">" + content + "</StructuredTable>";
}

inline std::string SimpleTable(const std::string& name, const std::string& lineNames, const std::string& columnNames,
                               const std::vector<std::string>& lines) {
    std::string text = "<SimpleTable name=\"" + name + "\"><RowNames>" + lineNames + "</RowNames><ColumnNames>" +
                       columnNames + "</ColumnNames>";
    for (const std::string& line : lines) text += "<Row>" + line + "</Row>";
    return text + "</SimpleTable>";
}

inline std::string Condition(const std::string& key, const std::vector<std::string>& parameters) {
    std::string rows = Row("ConditionKey", key);
    for (std::size_t i = 0; i < parameters.size(); ++i) rows += Row("%" + std::to_string(i), parameters[i]);
    return Table("Condition", rows);
}

inline std::string Message(const std::string& code, const std::string& kind, const std::vector<std::string>& parameters,
                           const std::string& named = "") {
    std::string rows = Row("code", code) + Row("type", kind) + Row("paramNum", std::to_string(parameters.size()));
    for (std::size_t i = 0; i < parameters.size(); ++i) rows += Row("%" + std::to_string(i), parameters[i]);
    return Table("Message", rows + named);
}

inline std::string TestElement(const std::string& name, const std::string& classification, const std::string& decision,
                               const std::string& content) {
    const std::string type = decision.empty() ? "confidence_interval" : "hypothesis_test";
    return "<Algorithm name=\"" + name + "\" type=\"" + type + "\" classification=\"" + classification + "\"" +
           (decision.empty() ? "" : " decision=\"" + decision + "\"") + ">" + content + "</Algorithm>";
}

/// A document over the continuous fields "u" and "v" and the nominal field "arm" with the categories 1 ("old"), 2
/// ("new") and 3.
inline std::string DocumentOf(const std::string& tests, const std::string& descriptives = "") {
    return "<Tabulon><DescriptiveModel><DescriptiveSummary><Counts totalFreq=\"9.5\" totalCount=\"12\"/>"
           "</DescriptiveSummary></DescriptiveModel><Extension><TARNOutput>"
           "<Header copyright=\"TARN\"><Application name=\"tarn\" version=\"0.1.0\"/></Header><DataDictionary>"
           "<DataField name=\"u\" optype=\"continuous\" dataType=\"double\" index=\"0\"/>"
           "<DataField name=\"v\" displayName=\"the second\" optype=\"continuous\" dataType=\"double\" index=\"1\"/>"
           "<DataField name=\"arm\" optype=\"categorical\" dataType=\"double\" index=\"2\">"
           "<Value index=\"0\" value=\"1\" displayValue=\"old\" property=\"valid\"/>"
           "<Value index=\"1\" value=\"2\" displayValue=\"new\" property=\"valid\"/>"
           "<Value index=\"2\" value=\"3\" property=\"valid\"/></DataField></DataDictionary>"
           "<NonParametricTests number=\"1\" sigLevel=\"0.05\" confidenceLevel=\"0.95\" "
           "missingTreatment=\"analysis\">" +
           tests + "</NonParametricTests><FieldInfos>" + descriptives +
           "</FieldInfos></TARNOutput></Extension></Tabulon>";
}

/// A sign test of u and v with both significances and a help message with a parameter.
inline std::string SignTest() {
    return TestElement(
        "RSign", "Related_Samples", "retain",
        Condition("R_Sign_2", {"1", "0"}) + Table("WarningMessages", Message("220916", "helpMessage", {})) +
            Table("ContinuousDistribution",
                  Row("NegativeDifferences", "4") + Row("Ties", "0") + Row("PositiveDifferences", "8")) +
            Table("StatisticsResult",
                  Row("TotalN", "12") + Row("TestStatistic", "8") + Row("StandardError", "1.73205080756888") +
                      Row("StandardTestStatistic", "0.866025403784439") +
                      Row("AsymptoticSig2Tailed", "0.38647623077123") + Row("ExactSig2Tailed", "0.38769531250000")));
}

/// A Kruskal-Wallis test of u by arm with pairs and subsets.
inline std::string KruskalWallisTest() {
    const std::string box =
        SimpleTable("Box", "", "smallestNonOutlier;25perc;50perc;75perc;largestNonOutlier", {"1;2;3;4;5"});
    return TestElement(
        "IKruskalWallis", "Independent_Samples", "reject",
        Condition("DefaultAllDistinctValuesUsed_I_KruskalWallis_2", {"0", "2"}) +
            Table("WarningMessages", Message("220013", "warning", {}, Row("group", "0;0"))) +
            Table("StatisticsResult", Row("TotalN", "12") + Row("TestStatistic", "9.26923076923077") +
                                          Row("DegreeOfFreedom", "2") + Row("AsymptoticSig2Tailed", "0.0097")) +
            Table("BoxPlotInfo", Row("GroupFieldIndex", "2") + Row("GroupCount", "2") +
                                     Table("Group0", Row("GroupIndex", "0") + Row("MeanOfRank", "2.5") + box) +
                                     Table("Group2", Row("GroupIndex", "2") + Row("MeanOfRank", "nan") + box)) +
            Table("PairwiseResult",
                  Row("fieldIndex", "2") + SimpleTable("PairwiseInfo", "", "IndexOrder;Value", {"0;2", "2.5;8"}) +
                      SimpleTable("Content", "",
                                  "Sample1;Sample2;TestStatistic;StandardError;StandardTestStatistic;Sig;AdjSig",
                                  {"0;2;-5.5;2.54;-2.16535433070866;0.0303;0.0303"})) +
            Table("StepwiseResult",
                  Row("fieldIndex", "2") + SimpleTable("StepwiseInfo", "IndexOrder;Value", "", {"2;0", "1.5;7"}) +
                      SimpleTable(
                          "Content", "",
                          "FirstPosition;LastPosition;TestStatistic;StandardError;StandardTestStatistic;Sig;AdjSig",
                          {"0;1;1.25;;;0.26;0.2612", "1;1;__MISSING__;;;__MISSING__;__MISSING__;"})));
}

}  // namespace report_test
