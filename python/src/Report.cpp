#include "python/src/Report.h"

#include <algorithm>
#include <utility>

#include "host/report/CsvReport.h"
#include "host/report/JsonReport.h"
#include "host/report/TextReport.h"

namespace tarn {

namespace {

const MessageCatalogue& Texts() {
    return MessageCatalogue::English();
}

std::optional<Report::Figures> DecidingOf(const TestReading& test) {
    for (const StatisticSet& set : test.statistics) {
        const auto decides = std::ranges::find_if(set.pValues, [](const PValue& p) { return p.decides; });
        if (decides == set.pValues.end()) continue;
        return Report::Figures{std::string(NameOf(decides->kind)), set.StatisticOf(*decides).text, decides->value.text};
    }
    return std::nullopt;
}

}  // namespace

Report::Report(std::vector<std::string> remarks, long failureCode)
    : remarks_(std::move(remarks)), isDone_(false), failureCode_(failureCode) {}

Report::Report(ResultReading reading, std::string document, std::vector<std::string> notes,
               std::vector<std::string> remarks, Supply supply)
    : notes_(std::move(notes)), remarks_(std::move(remarks)) {
    std::vector<ResultPart> parts(1);
    parts.front().result = std::move(reading);
    shared_ = Share(std::move(parts), {std::move(document)}, std::move(supply));
}

Report::Report(std::vector<ResultPart> parts, std::vector<std::string> documents, std::vector<std::string> notes)
    : shared_(Share(std::move(parts), std::move(documents), nullptr)), notes_(std::move(notes)), isSplit_(true) {}

std::shared_ptr<Report::Shared> Report::Share(std::vector<ResultPart> parts, std::vector<std::string> documents,
                                              Supply supply) {
    auto shared = std::make_shared<Shared>();
    shared->parts = std::move(parts);
    shared->documents = std::move(documents);
    shared->supply = std::move(supply);
    return shared;
}

const std::vector<ResultPart>& Report::Supplied() const {
    const std::lock_guard lock(shared_->mutex);
    if (shared_->supply) {
        // Whoever interrupts it finds the reading as it was.
        ResultReading reading = *shared_->parts.front().result;
        shared_->supply(reading);
        shared_->parts.front().result = std::move(reading);
        shared_->supply = nullptr;
    }
    return shared_->parts;
}

std::vector<std::optional<Report::Figures>> Report::Deciding() const {
    std::vector<std::optional<Figures>> deciding;
    if (!isDone_) return deciding;
    const std::lock_guard lock(shared_->mutex);
    for (std::size_t i = 0; i < shared_->parts.size(); ++i) {
        const std::optional<ResultReading>& result = shared_->parts[i].result;
        if (!result || (!isSplit_ && i != first_)) continue;
        for (const TestReading& test : result->tests) deciding.push_back(DecidingOf(test));
    }
    return deciding;
}

std::vector<Report::Figures> Report::Chosen() const {
    std::vector<Figures> chosen;
    if (!isDone_ || isSplit_) return chosen;
    const ResultReading& reading = *Supplied()[first_].result;
    if (reading.tests.empty()) return chosen;
    for (const SuppliedPValue& p : reading.tests.front().supplement.pValues) {
        chosen.push_back({std::string(p.kind), p.statistic.text, p.value.text});
    }
    return chosen;
}

const std::string& Report::Document() const {
    static const std::string kNone;
    return isSplit_ || !isDone_ ? kNone : shared_->documents[first_];
}

std::string Report::Text() const {
    if (!isDone_) return "";
    if (isSplit_) return PartsText(Supplied(), Texts(), {}, notes_);
    return TextReport(*Supplied()[first_].result, Texts(), {}, notes_);
}

std::string Report::Json() const {
    if (!isDone_) return "";
    if (isSplit_) return PartsJson(Supplied(), Texts(), notes_);
    return JsonReport(*Supplied()[first_].result, Texts(), notes_);
}

std::string Report::Csv() const {
    if (!isDone_) return "";
    if (isSplit_) return PartsCsv(Supplied(), Texts());
    return CsvReport(*Supplied()[first_].result, Texts());
}

Report Report::PartAt(std::size_t place) const {
    const ResultPart& part = shared_->parts.at(place);
    if (!part.result) return {std::vector<std::string>{part.mistake}, 0};
    Report report = *this;
    report.first_ = place;
    report.isSplit_ = false;
    report.notes_ = part.notes;
    report.remarks_.clear();
    return report;
}

}  // namespace tarn
