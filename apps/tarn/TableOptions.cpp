#include "apps/tarn/TableOptions.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
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

std::size_t HalfOfMachine() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0) return 0;
    std::size_t bytes = static_cast<std::size_t>(pages) * static_cast<std::size_t>(pageSize);
    // Within a container the machine's memory isn't all for this process.
    std::size_t limit = 0;
    if (std::ifstream("/sys/fs/cgroup/memory.max") >> limit) bytes = std::min(bytes, limit);
    return bytes / 2;
}

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
