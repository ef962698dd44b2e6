#include "host/beyond/explain/SuccessesOfTest.h"

#include "host/NumberText.h"
#include "host/TextList.h"
#include "host/beyond/Dichotomies.h"

namespace tarn {

SuccessesOfTest::SuccessesOfTest(const ExplainedTest& test) {
    std::vector<std::string> words = test.source.success;
    name_ = JoinList(words, " or ");
    if (words.empty() && !test.view.cases.columns.front().empty()) {
        const double first = test.view.cases.columns.front().front();
        const Column& column = *test.view.columns.front();
        const std::size_t place = test.CategoryOf(0, first);
        words = {column.IsText() ? column.categories[place].text : ExactText(column.categories[place].number)};
        name_ = test.ShownValue(0, first);
    }
    columns_ = SuccessesOf(test.view, words);
}

}  // namespace tarn
