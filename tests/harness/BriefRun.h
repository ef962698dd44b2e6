#pragma once

#include <gtest/gtest.h>

#include <pugixml.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/harness/EntryRun.h"

namespace harness {

/// Takes the plots' tables out of an element.
inline void RemovePlots(pugi::xml_node node) {
    for (const char* const plot : {"Interval", "Box", "Outliers"}) {
        while (node.remove_child(node.find_child_by_attribute("SimpleTable", "name", plot))) {
        }
    }
    for (const pugi::xml_node child : node.children()) RemovePlots(child);
}

inline std::string TextOf(const pugi::xml_node& node) {
    std::ostringstream out;
    node.print(out, "", pugi::format_raw);
    return out.str();
}

/// Runs a test twice, in brief, too, and expects that its element then lacks the tables of plots and nothing else.
/// `hasPlot`: whether it shows one. Returns the brief outcome.
inline Outcome ExpectBriefIsTheSameWithoutPlots(const std::string& test, const QKSettings& entry, Fields& fields,
                                                const Rows& rows, bool hasPlot) {
    QKSettings settings;
    settings.AddSetting("sigLevel", 1.1);  // always significant, so that comparisons run
    settings.AddSetting(test, entry);
    const Outcome whole = Run(settings, fields, rows);
    settings.AddSetting("brief", true);
    Outcome brief = Run(settings, fields, rows);
    const pugi::xml_node wholeTest = whole.document.Test(0).Node();
    const std::string withPlots = TextOf(wholeTest);
    EXPECT_FALSE(withPlots.empty());
    RemovePlots(wholeTest);
    EXPECT_EQ(TextOf(wholeTest) != withPlots, hasPlot) << test;
    EXPECT_EQ(TextOf(brief.document.Test(0).Node()), TextOf(wholeTest)) << test;
    EXPECT_NE(TextOf(wholeTest).find("StatisticsResult"), std::string::npos) << test;
    return brief;
}

}  // namespace harness
