#include "host/table/PieceMistake.h"

#include <span>
#include <stdexcept>

#include "host/ByteSource.h"
#include "host/InputError.h"
#include "host/table/RowReader.h"

namespace tarn {

void ThrowMistakeOf(std::string_view text, const std::string& sourceName, std::size_t firstLine,
                    const std::vector<ColumnPlan>& plans, const std::vector<ColumnReader>& columns,
                    const TableShape& shape, const std::string& header) {
    ByteSource source = ByteSource::FromMemory(sourceName, std::string(text));
    std::vector<std::string> names;
    for (const ColumnPlan& plan : plans) names.push_back(plan.name);
    RowReader rows(source, std::move(names), shape, header, firstLine);
    CellCodes unused;
    while (rows.Next()) {
        const std::span<const std::string_view> cells = rows.Cells();
        for (std::size_t i = 0; i < cells.size(); ++i) {
            double value = 0;
            unused.Clear();
            if (columns[i].Read(cells[i], unused, value) || columns[i].MayBecomeText()) continue;
            throw InputError(rows.Position() + "column " +
                             (plans[i].isUnnamed ? std::to_string(i + 1) : Quoted(plans[i].name)) + ": " +
                             Quoted(cells[i]) + "; expected " + std::string(columns[i].ExpectedText()));
        }
    }
    throw std::logic_error("a mistake of " + sourceName + " can't be told");
}

}  // namespace tarn
