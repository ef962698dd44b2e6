#include "host/report/Explanation.h"

#include <string_view>
#include <utility>
#include <vector>

#include "host/InputError.h"
#include "host/NearestNames.h"
#include "host/TextTable.h"

namespace tarn {

namespace {

std::string ExplainTest(const TestTexts& test) {
    TextTable table({{""}, {""}});
    const std::pair<const char*, const std::string&> lines[] = {
        {"Named", test.name},    {"Family", test.family},   {"Question", test.question}, {"Assumes", test.assumes},
        {"Chosen", test.chosen}, {"Decides", test.decides}, {"Method", test.method},     {"Pairs", test.pairs},
        {"Subsets", test.steps}, {"Source", test.source},
    };
    for (const auto& [title, text] : lines) {
        if (!text.empty()) table.AddRow({title, text});
    }
    return test.title + "\n" + table.ToText();
}

/// The text of a code as it stands, with the places of its parameters.
const std::string* FindCode(const std::string& topic, const MessageCatalogue& texts) {
    const bool isCode = !topic.empty() && topic.find_first_not_of("0123456789") == std::string::npos;
    return isCode && topic.size() <= 9 ? texts.Status(std::stol(topic)) : nullptr;
}

}  // namespace

std::string Explanation(const std::string& topic, const MessageCatalogue& texts) {
    if (const std::string* const text = FindCode(topic, texts)) return topic + ": " + *text + "\n";
    std::string found;
    std::vector<std::string_view> names;
    for (const auto& [key, test] : texts.Tests()) {
        names.push_back(test.name);
        if (topic != test.name && topic != key) continue;
        found += (found.empty() ? "" : "\n") + ExplainTest(test);
    }
    if (found.empty()) {
        const std::vector<std::string_view> nearest = NearestNames(topic, names);
        throw InputError(Quoted(topic) + " is neither a code nor a test" +
                         (nearest.empty() ? "; tarn tests lists the tests" : DidYouMean(nearest)));
    }
    return found;
}

}  // namespace tarn
