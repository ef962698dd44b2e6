#pragma once

#include <limits>
#include <vector>

#include "platform/common/QKMV.h"
#include "platform/common/QKVarList.h"
#include "platform/common/Record.h"
#include "vocabulary/MissingValues.h"

// The platform's declarations include nothing of ours, so they say again what a missing value is.
static_assert(QKMV::Missing() == MissingValue::kNumber && kMissingCategory == MissingValue::kCategory);

namespace QKTarn {

/// Per field the value that means missing; NaN, which equals nothing, for a field that is never missing.
using MissingMarkers = std::vector<double>;

/// How the passes see a missing value: fields of kind 1 and 4 by the missing double, categorical ones by -1.
inline MissingMarkers MarkersOfPasses(const QKVarList& varList) {
    MissingMarkers markers;
    for (int field = 0; field < varList.Size(); ++field) {
        const int kind = varList.GetVarAt(field)->GetKind();
        if (kind == FieldKind::kContinuous || kind == FieldKind::kOther) {
            markers.push_back(QKMV::Missing());
        } else if (FieldKind::IsCategorical(kind)) {
            markers.push_back(kMissingCategory);
        } else {
            markers.push_back(std::numeric_limits<double>::quiet_NaN());
        }
    }
    return markers;
}

/// How the reader's filter sees a missing value: kind 1 by the missing double, every other kind by -1. Kind 4 is thus
/// treated in another way than in the passes, which is intended: documents depend on which records the store keeps.
inline MissingMarkers MarkersOfReader(const QKVarList& varList) {
    MissingMarkers markers;
    for (int field = 0; field < varList.Size(); ++field) {
        const bool isContinuous = varList.GetVarAt(field)->GetKind() == FieldKind::kContinuous;
        markers.push_back(isContinuous ? QKMV::Missing() : kMissingCategory);
    }
    return markers;
}

/// Whether the record misses that field; a position outside the record or the list is never missing.
inline bool IsMissingIn(const Record& record, int field, const MissingMarkers& markers) {
    const auto position = static_cast<std::size_t>(field);
    return field >= 0 && position < record.Size() && position < markers.size() && record[position] == markers[position];
}

}  // namespace QKTarn
