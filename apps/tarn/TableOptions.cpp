#include "apps/tarn/TableOptions.h"

#include <utility>

#include "host/ByteSource.h"
#include "host/table/FieldDescriptor.h"
#include "host/table/TableLoader.h"
#include "host/table/TableReading.h"

namespace tarn {

namespace {

LoadOptions LoadOf(const TableOptions& options, const Interrupt& interrupt) {
    LoadOptions load;
    load.nominal = options.nominal;
    load.ordinal = options.ordinal;
    load.continuous = options.continuous;
    load.threads = options.threads;
    load.memory = options.memory;
    load.weightField = options.weightField;
    load.isCancelled = [&interrupt] { return interrupt.IsAsked(); };
    return load;
}

}  // namespace

TableDescriptor DescriptorOf(const TableOptions& options) {
    if (options.fieldsPath.empty()) return TableDescriptor();
    ByteSource source(options.fieldsPath);
    return ReadTableDescriptor(source);
}

Table LoadWholeTable(const TableOptions& options, const TableDescriptor& descriptor, const Interrupt& interrupt) {
    LoadOptions load = LoadOf(options, interrupt);
    load.excludeUserMissing = true;
    return ReadTable(ByteSource(options.dataPath), descriptor, std::move(load), options.reading);
}

Table LoadTableOf(const TableOptions& options, const NamedFields& fields, bool excludeUserMissing,
                  const Interrupt& interrupt, const std::optional<std::string>& nominalByDefault,
                  const std::vector<FieldOrder>& orders) {
    LoadOptions load = LoadOf(options, interrupt);
    load.excludeUserMissing = excludeUserMissing;
    load.orders = orders;
    load.nominalByDefault = nominalByDefault;
    load.isRead = [&fields](const std::string& field, std::size_t place) { return fields.MayMean(field, place); };
    return ReadTable(ByteSource(options.dataPath), DescriptorOf(options), std::move(load), options.reading);
}

}  // namespace tarn
