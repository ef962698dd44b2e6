#include "host/report/HtmlExplanation.h"

#include "host/NumberText.h"
#include "host/report/ExplanationText.h"
#include "host/report/HtmlText.h"

namespace tarn {

namespace {

/// On paper nobody can unfold anything, so that it is open there; browsers before `::details-content` (2025) print it
/// as it stands on the screen. A long table scrolls in a box of its own, below its headings, whose edges are shaded
/// where there is more of it.
constexpr const char* kRules = R"(
.tarn .why{margin:1rem 0;border:1px solid var(--line);border-radius:.375rem;padding:0 1rem}
.tarn .why>summary{cursor:pointer;font-weight:600;padding:.6rem 0;color:var(--link)}
.tarn .why>summary:focus-visible{outline:2px solid var(--link);outline-offset:2px}
.tarn .why[open]>summary{border-bottom:1px solid var(--line);margin-bottom:.75rem}
.tarn .why[open]{padding-bottom:.75rem}
.tarn .why .wide{margin:.75rem 0 1.25rem;max-height:min(28rem,75vh);overflow:auto;background:
linear-gradient(transparent,var(--paper) 60%) bottom/100% 2.5rem no-repeat local,
linear-gradient(90deg,transparent,var(--paper) 60%) right/2.5rem 100% no-repeat local,
linear-gradient(transparent,var(--line)) bottom/100% .6rem no-repeat scroll,
linear-gradient(90deg,transparent,var(--line)) right/.6rem 100% no-repeat scroll}
.tarn .why table{width:max-content}.tarn .why th,.tarn .why td{padding-right:.95rem}
.tarn .why th:last-child,.tarn .why td:last-child{padding-right:.25rem}
.tarn .why thead th{position:sticky;top:0;background:var(--paper);border-bottom:0;box-shadow:inset 0 -1px 0 var(--text)}
.tarn .why .of{margin:1.25rem 0 .25rem}.tarn .why .of+.wide{margin-top:.25rem}
.tarn .why .steps{grid-template-columns:fit-content(12rem) minmax(0,1fr);gap:0 1.25rem;margin:.75rem 0 1.25rem}
.tarn .why .steps>dt,.tarn .why .steps>dd{border-top:1px solid var(--line);padding:.35rem 0}
.tarn .why .steps>dt{color:var(--text);font-weight:600;overflow-wrap:anywhere;margin-right:-1.25rem;padding-right:1.25rem}
.tarn .why .steps>dd{max-width:none}
.tarn .why .steps span,.tarn .why .steps code{display:inline-block;max-width:100%;margin-right:.6ch;
overflow-wrap:anywhere;vertical-align:top}
.tarn .why .steps code{font:.875rem/1.7 ui-monospace,SFMono-Regular,Menlo,Consolas,monospace}
.tarn .why .steps .result{font-weight:700}
@media (max-width:30rem){.tarn .why{padding:0 .75rem}.tarn .why .of{margin:1.25rem 0 .25rem}.tarn .why .of+.wide{margin-top:.25rem}
.tarn .why .steps{grid-template-columns:minmax(0,1fr)}
.tarn .why .steps>dt{padding-bottom:0;margin-right:0}.tarn .why .steps>dd{border-top:0;padding-top:0;margin-bottom:0}
.tarn .why table{width:auto;font-size:.875rem}.tarn .why th,.tarn .why td{padding-right:.6rem}}
@media print{.tarn .why{border:0;padding:0}.tarn .why>summary{list-style:none;color:inherit;break-after:avoid}
.tarn .why::details-content{content-visibility:visible;display:block;block-size:auto}
.tarn .why .wide{max-height:none;overflow:visible;background:none}.tarn .why .of{break-after:avoid}
.tarn .why thead th{position:static;box-shadow:none;border-bottom:1px solid var(--text)}
.tarn .why th,.tarn .why td{padding-top:.1rem;padding-bottom:.1rem}
.tarn .why table{width:auto}
.tarn .why .steps>dt,.tarn .why .steps>dd{break-inside:avoid;padding:.2rem 0}
.tarn .why .steps code{font-size:8.5pt}}
)";

/// The formula, the same with its numbers, and the value: a line is broken between them first. Formulas stay as they
/// can be typed into a calculator. Words in place of a formula are no code.
std::string StepHtml(const ExplanationStep& step) {
    const auto code = [](const std::string& text) { return "<code>" + HtmlIsolated(text) + "</code> "; };
    const bool isOfWords = step.numbers.empty();
    std::string html = "<dt>" + HtmlIsolated(step.name) + "</dt><dd>";
    if (!step.formula.empty()) {
        html += isOfWords ? "<span>" + HtmlIsolated(step.formula) + "</span> " : code(step.formula);
    }
    if (!isOfWords) html += code((step.formula.empty() ? "" : "= ") + step.numbers);
    const bool isFirst = step.formula.empty() && isOfWords;
    // With the minus of the formulas, not with that of print.
    html += std::string("<code class=\"result\">") + (isFirst ? "" : "= ") +
            "<data value=" + HtmlAttribute(step.value.text) + ">" + HtmlEscaped(CalculatorText(step.value.value)) +
            "</data></code>";
    return html + "</dd>\n";
}

std::string StepsHtml(const TestExplanation& explanation) {
    std::string html;
    for (const ExplanationStep& step : explanation.steps) html += StepHtml(step);
    return html.empty() ? "" : "<dl class=\"steps\">" + html + "</dl>\n";
}

/// What a table is: "Pairs", and behind a colon how its numbers are worked out.
std::string LabelOf(const std::string& title) {
    return title.substr(0, title.find(": "));
}

std::string CaptionHtml(const std::string& title) {
    const std::string label = LabelOf(title);
    return "<p class=\"of\"><b>" + HtmlIsolated(label) + "</b>" + HtmlIsolated(title.substr(label.size())) + "</p>\n";
}

std::string TablesHtml(const std::vector<ExplanationTable>& tables, const std::string& heading) {
    std::string html;
    for (const ExplanationTable& table : tables) {
        if (table.rows.empty()) continue;
        PageTable shown = PageTableOf(table);
        shown.title.clear();
        html += CaptionHtml(table.title) + HtmlTable(shown, {LabelOf(table.title) + ", " + heading});
    }
    return html;
}

}  // namespace

std::string HtmlExplanation(const TestExplanation& explanation, const std::string& heading) {
    std::string html = std::string("<details class=\"why\"><summary>") + kExplanationTitle + "</summary>\n";
    html += TablesHtml(explanation.tables, heading) + StepsHtml(explanation);
    html += TablesHtml(explanation.comparisons, heading);
    for (const std::string& note : explanation.notes) {
        const bool isWarning = !explanation.agrees && &note == &explanation.notes.back();
        html += std::string("<p") + (isWarning ? " class=\"bad\"" : "") + ">" + HtmlIsolated(note) + "</p>\n";
    }
    return html + "</details>\n";
}

const std::string& HtmlExplanationStyle() {
    static const std::string sheet = kRules;
    return sheet;
}

}  // namespace tarn
