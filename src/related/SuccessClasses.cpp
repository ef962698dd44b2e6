#include "related/SuccessClasses.h"

void SuccessClasses::SetList(const std::vector<int>& fields, const std::vector<double>& values,
                             const std::vector<std::string>& texts) {
    successes.clear();
    for (const int field : fields) successes.emplace_back(categories.FlagsOfListed(field, values, texts));
}

void SuccessClasses::SetFromFirst(const std::vector<int>& fields, std::int32_t category) {
    successes.clear();
    for (const int field : fields) successes.emplace_back(categories.FlagsOfSame(field, fields.front(), category));
}

bool SuccessClasses::HasCategory(std::uint32_t success) const {
    for (const CategorySet& ofField : successes) {
        for (std::size_t category = 0; category < ofField.Size(); ++category) {
            if (ofField.Contains(static_cast<std::int32_t>(category)) == success) return true;
        }
    }
    return false;
}
