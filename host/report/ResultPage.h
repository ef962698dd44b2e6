#pragma once

#include <string>
#include <vector>

#include "host/report/MessageCatalogue.h"
#include "host/report/PartsReport.h"
#include "host/report/ResultReading.h"
#include "host/report/TestPage.h"

namespace tarn {

/// From so many tests on a chance result is likely enough that their summary stands first.
inline constexpr std::size_t kFewestForSummary = 5;

/// A whole run for a reader.
struct ResultPage {
    std::string title;  ///< "24 outcomes by arm, Mann-Whitney U test"; the heading of the test where there is one
    /// A row for each test in the order of `tests`: what it is about, n, statistic or effect, p and p adjusted.
    PageTable summary;
    /// How many significances are below the level, how many would be by chance, and how many are after adjustment; ""
    /// for a run of few tests.
    std::string familyLine;
    bool hasManyTests = false;  ///< whether the summary stands for the tests where there is little space
    std::vector<TestPage> tests;
    std::vector<std::string> notes;  ///< on the whole run, as sentences
    /// What a reader needs to know to make the run again: cases, levels, missing values, arithmetic, engine.
    std::vector<PageFact> record;
    std::vector<PageFact> program;  ///< by what it was made; empty for a stored document
};

/// `notes` are sentences on the whole run.
ResultPage PageOf(const ResultReading& result, const MessageCatalogue& texts,
                  const std::vector<std::string>& notes = {});

/// The records of one category of the field that splits them.
struct PartPage {
    std::string name;     ///< "sex = f"
    std::string mistake;  ///< why it couldn't be tested; "" for one that was
    ResultPage page;      ///< empty where there is a mistake; the notes on the part are among its notes
};

/// A split analysis for a reader.
struct PartsPage {
    std::string title;
    PageTable summary;  ///< a row for each test of each part, adjusted for the number of all by Holm's method
    std::vector<PartPage> parts;
    std::vector<std::string> notes;  ///< on all parts
    std::vector<PageFact> program;   ///< by what all parts were made
};

PartsPage PageOf(const std::vector<ResultPart>& parts, const MessageCatalogue& texts,
                 const std::vector<std::string>& notes = {});

}  // namespace tarn
