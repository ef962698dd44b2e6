#include "related/SuccessClasses.h"

#include <algorithm>

#include "platform/common/Truncation.h"

namespace {

int CategoryOf(const Record& record, int field) {
    return TruncateToInt32(record[static_cast<std::size_t>(field)]);
}

}  // namespace

void SuccessClasses::SetList(const std::vector<int>& fields, const std::vector<double>& values,
                             const std::vector<std::string>& texts) {
    flags.clear();
    for (const int field : fields) flags.push_back(categories.FlagsOfListed(field, values, texts));
}

void SuccessClasses::SetFromRecord(const std::vector<int>& fields, const Record& record) {
    flags.clear();
    for (const int field : fields) {
        flags.push_back(categories.FlagsOfSame(field, fields.front(), CategoryOf(record, fields.front())));
    }
}

bool SuccessClasses::IsSuccess(std::size_t position, int category) const {
    if (position >= flags.size() || category < 0) return false;
    const std::vector<bool>& ofField = flags[position];
    return static_cast<std::size_t>(category) < ofField.size() && ofField[static_cast<std::size_t>(category)];
}

bool SuccessClasses::IsSuccess(std::size_t position, const Record& record, int field) const {
    return IsSuccess(position, CategoryOf(record, field));
}

bool SuccessClasses::HasCategory(bool success) const {
    return std::any_of(flags.begin(), flags.end(), [&](const std::vector<bool>& ofField) {
        return std::find(ofField.begin(), ofField.end(), success) != ofField.end();
    });
}
