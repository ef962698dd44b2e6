#pragma once

#include <string>

#include "host/ByteSource.h"
#include "host/table/FieldDescriptor.h"
#include "host/table/TableLoader.h"

namespace tarn {

/// A table as it is read from those lines, described by `fields`, with user-missing values as missing.
inline Table TableOfText(const std::string& csv, const std::string& fields = "{}", LoadOptions options = {}) {
    options.excludeUserMissing = true;
    ByteSource descriptor = ByteSource::FromMemory("fields.json", fields);
    ByteSource data = ByteSource::FromMemory("data.csv", csv);
    return LoadTable(data, ReadTableDescriptor(descriptor), options);
}

}  // namespace tarn
