#pragma once

#include <string>
#include <vector>

#include "host/report/TestPage.h"

namespace tarn {

/// A figure in plain letters: "chi2(2) = 7.99", "H = 7.99, df 2", "p < .001". What follows it, its remark, is not in
/// it.
std::string FigureText(const PageFigure& figure);

/// Makes a text one that every medium can hold in a line: control characters, which the name of a field or a category
/// may have, become blanks.
void MakeOneLine(std::string& text);
/// All texts of facts, of a table, of a page.
void MakeOneLine(std::vector<PageFact>& facts);
void MakeOneLine(PageTable& table);
void MakeOneLine(TestPage& page);

}  // namespace tarn
