// Brief runs of the tests of one sample: the statistics as ever, and nothing that only a plot shows.

#include <gtest/gtest.h>

#include "tests/harness/BriefRun.h"

namespace {

using harness::ExpectBriefIsTheSameWithoutPlots;
using harness::Fields;
using harness::Rows;

Rows OneField() {
    Rows rows;
    for (int i = 0; i < 50; ++i) rows.push_back({double(i * 7 % 11) / 4, 1.0 + i % 3});
    return rows;
}

Fields Weighted() {
    Fields fields;
    fields.Continuous("x").Weight("w");
    return fields;
}

QKSettings Entry() {
    QKSettings entry;
    entry.AddSetting("variableName", "x");
    return entry;
}

TEST(BriefOneSampleRuns, WilcoxonShowsNoHistogram) {
    Fields fields = Weighted();
    QKSettings entry = Entry();
    entry.AddSetting("userSpecifyTestValue", true);
    entry.AddSetting("testValue", 1.25);
    ExpectBriefIsTheSameWithoutPlots("OWilcoxonSignedRanks", entry, fields, OneField(), true);
}

TEST(BriefOneSampleRuns, CutAtTheMidpointIsWhereItEverIs) {
    // No plot is made of the range of the field then, but the cut is its middle.
    Fields fields = Weighted();
    QKSettings entry = Entry();
    entry.AddSetting("contVarClassFormation", "sampleMidPoint");
    ExpectBriefIsTheSameWithoutPlots("OBinomial", entry, fields, OneField(), false);
}

TEST(BriefOneSampleRuns, RunsAndKolmogorovSmirnovAreAsEver) {
    Fields fields = Weighted();
    QKSettings cut = Entry();
    cut.AddSetting("contVarClassFormation", "cutPointMean");
    ExpectBriefIsTheSameWithoutPlots("ORuns", cut, fields, OneField(), false);
    for (const char* test :
         {"OKolmogorovSmirnovNormal", "OKolmogorovSmirnovUniform", "OKolmogorovSmirnovExponential"}) {
        QKSettings entry = Entry();
        entry.AddSetting("isUseSample", true);
        ExpectBriefIsTheSameWithoutPlots(test, entry, fields, OneField(), false);
    }
}

}  // namespace
