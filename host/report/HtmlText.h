#pragma once

#include <string>
#include <string_view>

#include "host/report/Number.h"
#include "host/report/TestPage.h"

namespace tarn {

// Texts and tables as HTML. Whatever comes from the data is text here, whatever characters it has, and keeps its own
// direction within a sentence of another one (`bdi`).

/// A text between tags.
std::string HtmlEscaped(std::string_view text);
/// A text as the value of an attribute, with its quotes.
std::string HtmlAttribute(std::string_view value);
/// A text in which names from the data may stand, isolated from the direction of what is around it.
std::string HtmlIsolated(std::string_view text);
/// A rounded number with all its digits beside it: `<data value="0.0631">.063</data>`; the text alone where it has
/// none.
std::string HtmlNumber(const std::string& text, const Number& number, const Number& upper = {});

/// A table in a box of its own that scrolls where it is wider than the page. `label` names the box; "" takes the title
/// of the table. `linkColumn`, of which each row links to one of `targets`, may be "" for none.
struct HtmlTableLook {
    std::string label;
    std::string linkColumn = {};
    std::vector<std::string> targets = {};
};
std::string HtmlTable(const PageTable& table, const HtmlTableLook& look);

}  // namespace tarn
