#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/report/AdjustedPValues.h"
#include "host/report/MessageCatalogue.h"
#include "host/report/ResultDocument.h"
#include "host/report/TestReading.h"

namespace tarn {

struct RunRecord;

/// What a document says of one of its fields: statistics by their names, and how often its values occur.
struct FieldReading {
    std::string field;
    std::vector<Figure> figures;
    DataHistogram histogram;
};

/// A whole document as an analyst reads it, made once; text, JSON, CSV and whatever comes after them are made from it.
/// It stays with its document, whose tests stand in the same order as the readings.
struct ResultReading {
    ResultDocument document;
    std::vector<TestReading> tests;
    std::vector<FieldReading> fields;
    TestFamilyPValues family;  ///< the tests' significances, adjusted for their number
    Number sigLevel;
    Number confidenceLevel;
    std::shared_ptr<const RunRecord> record;  ///< how it was made; null for a stored document
};

/// Reads a document in the language of `texts`.
ResultReading ReadAll(ResultDocument document, const MessageCatalogue& texts);

/// The significance on which the conclusion of each test rests: the one that the user or the cost of an exact one
/// chose, else the document's own. NaN for a test that has none.
std::vector<double> ConclusivePValues(const ResultReading& result);

}  // namespace tarn
