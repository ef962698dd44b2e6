#include "python/src/Report.h"

#include <utility>

#include "host/report/CsvReport.h"
#include "host/report/JsonReport.h"
#include "host/report/TextReport.h"

namespace tarn {

namespace {

const MessageCatalogue& Texts() {
    return MessageCatalogue::English();
}

}  // namespace

Report::Report(std::vector<std::string> remarks, long failureCode)
    : remarks_(std::move(remarks)), isDone_(false), failureCode_(failureCode) {}

Report::Report(ResultReading reading, std::string document, std::vector<std::string> notes,
               std::vector<std::string> remarks)
    : notes_(std::move(notes)), remarks_(std::move(remarks)) {
    std::vector<ResultPart> parts(1);
    parts.front().result = std::move(reading);
    parts_ = std::make_shared<const std::vector<ResultPart>>(std::move(parts));
    documents_ = std::make_shared<const std::vector<std::string>>(1, std::move(document));
}

Report::Report(std::vector<ResultPart> parts, std::vector<std::string> documents, std::vector<std::string> notes)
    : parts_(std::make_shared<const std::vector<ResultPart>>(std::move(parts))),
      documents_(std::make_shared<const std::vector<std::string>>(std::move(documents))),
      notes_(std::move(notes)),
      isSplit_(true) {}

const std::string& Report::Document() const {
    static const std::string kNone;
    return isSplit_ || !isDone_ ? kNone : (*documents_)[first_];
}

std::string Report::Text() const {
    if (!isDone_) return "";
    if (isSplit_) return PartsText(*parts_, Texts(), {}, notes_);
    return TextReport(*(*parts_)[first_].result, Texts(), {}, notes_);
}

std::string Report::Json() const {
    if (!isDone_) return "";
    if (isSplit_) return PartsJson(*parts_, Texts(), notes_);
    return JsonReport(*(*parts_)[first_].result, Texts(), notes_);
}

std::string Report::Csv() const {
    if (!isDone_) return "";
    if (isSplit_) return PartsCsv(*parts_, Texts());
    return CsvReport(*(*parts_)[first_].result, Texts());
}

Report Report::PartAt(std::size_t place) const {
    const ResultPart& part = parts_->at(place);
    if (!part.result) return {std::vector<std::string>{part.mistake}, 0};
    Report report = *this;
    report.first_ = place;
    report.isSplit_ = false;
    report.notes_ = part.notes;
    report.remarks_.clear();
    return report;
}

}  // namespace tarn
