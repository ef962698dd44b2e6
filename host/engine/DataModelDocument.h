#pragma once

#include <string>

#include "host/engine/PreparedData.h"
#include "host/table/Table.h"

namespace tarn {

/// The data model of a table as it stands, for the configuration of a component.
std::string MakeDataModel(const Table& table);

/// The data model of prepared records, with their counts, for an execution.
std::string MakeDataModel(const PreparedData& data);

}  // namespace tarn
