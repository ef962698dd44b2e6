#include "host/report/RecordFacts.h"

#include "host/TextList.h"

namespace tarn {

namespace {

std::string Count(std::size_t count, const char* what) {
    return std::to_string(count) + (count == 1 ? " record " : " records ") + what;
}

/// "12 records by the condition, 3 records without a weight above 0, of 320"; "" where none was.
std::string LeftOutText(const RunRecord& record) {
    std::vector<std::string> parts;
    const auto add = [&](std::size_t count, const char* what) {
        if (count > 0) parts.push_back(Count(count, what));
    };
    add(record.selection.byCondition.value_or(0), "by the condition");
    add(record.selection.bySplit.value_or(0), "of other parts");
    add(record.selection.placeless.value_or(0), "without a subject or a condition");
    if (record.weights) {
        const WeightCounts& weights = *record.weights;
        const bool areDropped = weights.rule == WeightRule::kRounded;
        add(weights.zero + weights.vanished + (areDropped ? weights.negative : 0), "whose weight doesn't count");
        add(weights.missing, "without a weight");
    }
    return parts.empty() ? "" : JoinList(parts) + ", of " + std::to_string(record.selection.ofTable);
}

}  // namespace

std::vector<PageFact> ProgramFacts(const RunRecord& record) {
    std::vector<PageFact> facts;
    if (!record.requestWords.empty()) facts.push_back({kRequestFact, record.requestWords});
    facts.push_back({kProgramFact, "tarn " + record.version});
    if (!record.commit.empty()) facts.push_back({"Commit", record.commit});
    std::vector<std::string> libraries;
    for (const auto& [name, version] : record.libraries) libraries.push_back(name + " " + version);
    if (!libraries.empty()) facts.push_back({"Libraries", JoinList(libraries)});
    return facts;
}

std::vector<PageFact> DataFacts(const RunRecord& record) {
    std::vector<PageFact> facts;
    if (record.data) facts.push_back({"Hash of the data as used", "SHA-256 " + record.data->hash});
    if (const std::string leftOut = LeftOutText(record); !leftOut.empty()) facts.push_back({"Left out", leftOut});
    return facts;
}

}  // namespace tarn
