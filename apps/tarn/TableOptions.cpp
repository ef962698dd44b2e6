#include "apps/tarn/TableOptions.h"

#include <utility>

#include "host/ByteSource.h"
#include "host/table/FieldDescriptor.h"
#include "host/table/TableLoader.h"
#include "host/table/TableReading.h"

namespace tarn {

namespace {

TableDescriptor LoadDescriptor(const std::string& path) {
    if (path.empty()) return TableDescriptor();
    ByteSource source(path);
    return ReadTableDescriptor(source);
}

}  // namespace

Table LoadTableOf(const TableOptions& options, const NamedFields& fields, bool excludeUserMissing,
                  const Interrupt& interrupt, const std::optional<std::string>& nominalByDefault,
                  const std::vector<FieldOrder>& orders) {
    const TableDescriptor descriptor = LoadDescriptor(options.fieldsPath);
    LoadOptions load;
    load.excludeUserMissing = excludeUserMissing;
    load.nominal = options.nominal;
    load.ordinal = options.ordinal;
    load.continuous = options.continuous;
    load.orders = orders;
    load.threads = options.threads;
    load.weightField = options.weightField;
    load.nominalByDefault = nominalByDefault;
    load.isRead = [&fields](const std::string& field, std::size_t place) { return fields.MayMean(field, place); };
    load.isCancelled = [&interrupt] { return interrupt.IsAsked(); };
    return ReadTable(ByteSource(options.dataPath), descriptor, std::move(load), options.reading);
}

}  // namespace tarn
