#include "apps/tarn/LookCommand.h"

#include <string>

#include "apps/tarn/Interrupt.h"
#include "host/TextList.h"
#include "host/TextTable.h"
#include "host/analysis/TableLook.h"

namespace tarn {

namespace {

std::string TextOf(const TableLook& look, const std::string& call) {
    TextTable fields({{""}, {""}, {""}, {""}, {""}});
    for (const FieldLook& field : look.fields) {
        fields.AddRow({"", field.name, field.kind, field.values, JoinList(field.remarks, "; ")});
    }
    std::string text = look.title + "\n" + fields.ToText();
    if (!look.calls.empty()) text += "Try\n";
    for (const std::string& wish : look.calls) text += "   " + call + " " + wish + "\n";
    return text;
}

}  // namespace

ExitStatus Look(const LookOptions& options) {
    const Interrupt interrupt;
    const TableDescriptor descriptor = DescriptorOf(options.table);
    const Table table = LoadWholeTable(options.table, descriptor, interrupt);
    if (options.asJson) {
        TellNotes(table.Notes());
        PrintResult(DescriptorOf(table, descriptor).dump(2) + "\n");
        return ExitStatus::kDone;
    }
    const std::string& path = options.table.dataPath;
    const TableLook look = LookAt(table, path == "-" ? "standard input" : path);
    PrintResult(TextOf(look, "tarn analyze " + ShellWord(path) + options.readingOptions));
    return ExitStatus::kDone;
}

}  // namespace tarn
