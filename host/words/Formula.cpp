#include "host/words/Formula.h"

#include <algorithm>
#include <array>
#include <utility>

#include "host/TextList.h"

namespace tarn {

namespace {

constexpr const char* kForms =
    "'score ~ arm' for groups, 'score ~ cond | subject' for repeated measures or 'score ~ 1'";

class Parser {
 public:
    explicit Parser(const std::string& text) : words_("formula", text, true) { formula_.text = text; }

    Formula Parse() {
        if (words_.Next().Is("~")) FailWithoutLeft();
        do {
            formula_.values.push_back(TakeLeft());
        } while (words_.Skip("+") || words_.Skip(","));
        const Word& sign = words_.Next();
        if (!words_.Skip("~")) FailBeforeTilde(sign);
        TakeRight();
        if (words_.Next().kind != WordKind::kEnd) FailBehind(words_.Next());
        return std::move(formula_);
    }

 private:
    static bool IsName(const Word& word) { return word.kind == WordKind::kName || word.kind == WordKind::kText; }

    std::string Left() const {
        std::vector<std::string> names;
        for (const Word& value : formula_.values) names.push_back(ForWords(value.text));
        return JoinList(names, " + ");
    }
    /// The words to type: "type 'score ~ arm'".
    static std::string Type(const std::string& formula) { return "type " + ForShell(formula); }

    Word TakeName(const std::string& expected) {
        Word word = words_.Take();
        if (!IsName(word)) words_.Fail(word, "expected " + expected + " and not " + WordScanner::Shown(word));
        return word;
    }

    /// The names between the parentheses of a call whose name was taken; what else stands there is passed over.
    std::vector<std::string> ArgumentsOfCall() {
        std::vector<std::string> names;
        while (words_.Next().kind != WordKind::kEnd && !words_.Next().Is(")")) {
            const Word word = words_.Take();
            if (IsName(word)) names.push_back(word.text);
        }
        words_.Skip(")");
        return names;
    }

    Word TakeLeft() {
        const Word word = words_.Next();
        if (word.Is(".")) words_.Fail(word, "expected fields; all of them are called all");
        if (!IsName(word)) words_.Fail(word, "expected a field and not " + WordScanner::Shown(word));
        if (words_.Second().Is("(")) FailAtCall();
        return words_.Take();
    }

    /// Functions have no place here; those that have a meaning in other languages are answered with ours.
    [[noreturn]] void FailAtCall() {
        const Word call = words_.Take();
        words_.Take();
        const std::vector<std::string> names = ArgumentsOfCall();
        std::vector<std::string> quoted;
        for (const std::string& name : names) quoted.push_back(ForWords(name));
        const std::string field = names.empty() ? "score" : quoted.front();
        const auto isOneOf = [&](std::initializer_list<std::string_view> known) {
            return std::ranges::find(known, call.text) != known.end();
        };
        const std::string rest = RestBehindCall();
        if (isOneOf({"cbind", "c"}))
            words_.Fail(call, "several fields stand with + between them: " + Type(JoinList(quoted, " + ") + rest));
        if (isOneOf({"Pair", "pair"})) {
            words_.Fail(call, "a pair of fields has no formula: type --related " + ForShell(JoinList(names, ",")));
        }
        if (isOneOf({"log", "log2", "log10", "log1p", "sqrt", "exp", "rank"})) {
            words_.Fail(
                call, "there are no functions, and tests by ranks don't need " + call.text + ": " + Type(field + rest));
        }
        if (isOneOf({"factor", "ordered", "I", "C"}))
            words_.Fail(call, call.text + " is not needed: " + Type(field + rest));
        words_.Fail(call, "there are no functions; expected a field");
    }

    /// What stands behind a call on the left, as it would stand behind names.
    std::string RestBehindCall() const {
        if (words_.Next().Is("~") && (words_.Second().kind == WordKind::kName)) {
            return " ~ " + ForWords(words_.Second().text);
        }
        return words_.Next().Is("~") && words_.Second().kind == WordKind::kNumber ? " ~ 1" : " ~ arm";
    }

    [[noreturn]] void FailWithoutLeft() {
        const Word tilde = words_.Take();
        const bool isName = IsName(words_.Next());
        words_.Fail(tilde, "expected a field before ~" +
                               (isName ? "; for one sample " + Type(ForWords(words_.Next().text) + " ~ 1") : ""));
    }

    [[noreturn]] void FailBeforeTilde(const Word& sign) const {
        if (sign.kind == WordKind::kEnd) {
            const std::string left = Left();
            words_.Fail(sign, "no ~ behind the fields; for one sample " + Type(left + " ~ 1") + ", for groups '" +
                                  left + " ~ FIELD'");
        }
        if (sign.Is("-") && IsName(words_.Second())) {
            const std::vector<std::string> pair{words_.Second().text, formula_.values.back().text};
            words_.Fail(sign, "a difference of two fields is tested by --related " + ForShell(JoinList(pair, ",")) +
                                  "; a name with signs stands in backticks: `" + pair[1] + "-" + pair[0] + "`");
        }
        if (sign.Is("=")) words_.Fail(sign, "expected ~ and not \"=\"");
        words_.Fail(sign, "expected + or ~ and not " + WordScanner::Shown(sign) +
                              "; a name with blanks or signs stands in backticks: `" + formula_.values.back().text +
                              sign.text + "..`");
    }

    void TakeRight() {
        const Word right = words_.Next();
        if (right.kind == WordKind::kEnd) words_.Fail(right, "nothing behind ~; expected " + std::string(kForms));
        if (right.kind == WordKind::kNumber) {
            if (right.text != "1") {
                words_.Fail(right, "expected a field or 1 and not " + WordScanner::Shown(right) + "; for one sample " +
                                       Type(Left() + " ~ 1"));
            }
            words_.Take();
            return;
        }
        if (IsName(right) && words_.Second().Is("(")) FailAtRightCall();
        formula_.by = TakeName("the field of the groups");
        formula_.kind = FormulaKind::kGroups;
        if (formula_.by.text.find_first_of("*?") != std::string::npos && right.kind == WordKind::kName)
            FailAtCrossing(right);
        if (!words_.Skip("|")) return;
        formula_.subject = TakeName("the field of the subjects");
        formula_.kind = FormulaKind::kRepeated;
        if (formula_.values.size() > 1) {
            words_.Fail(formula_.values[1],
                        "repeated measures are of one field at a time: " +
                            Type(ForWords(formula_.values.front().text) + " ~ " + ForWords(formula_.by.text) + " | " +
                                 ForWords(formula_.subject.text)));
        }
    }

    [[noreturn]] void FailAtRightCall() {
        const Word call = words_.Take();
        words_.Take();
        const std::vector<std::string> names = ArgumentsOfCall();
        if (names.empty()) words_.Fail(call, "there are no functions; expected a field");
        words_.Fail(call, "there are no functions, and the field on the right is taken for categories by itself: " +
                              Type(Left() + " ~ " + ForWords(names.front())));
    }

    /// "arm*sex"
    [[noreturn]] void FailAtCrossing(const Word& word) const {
        const std::size_t sign = word.text.find_first_of("*?");
        const std::string first = word.text.substr(0, sign);
        const std::string second = word.text.substr(std::min(sign + 1, word.text.size()));
        FailAtSecondFactor(word, first, second);
    }

    [[noreturn]] void FailAtSecondFactor(const Word& at, const std::string& first, const std::string& second) const {
        words_.Fail(at, "one field has the groups; for each " + (second.empty() ? "category of another one" : second) +
                            " by itself " + Type(Left() + " ~ " + ForWords(first)) + " --split " +
                            (second.empty() ? "FIELD" : ForShell(second)));
    }

    /// "+ sex", "* sex", "+ (1 | subject)", "+ Error(subject/cond)".
    [[noreturn]] void FailBehind(const Word& next) {
        const Word at = next;
        words_.Take();
        std::vector<std::string> names;
        const bool isPlus = at.Is("+");
        const bool isError = words_.Next().IsWord("Error");
        const bool isRandom = words_.Next().Is("(");
        if (isError) words_.Take();
        while (words_.Next().kind != WordKind::kEnd) {
            const Word word = words_.Take();
            if (IsName(word)) names.push_back(word.text);
        }
        if (isPlus && (isError || isRandom) && !names.empty()) {
            words_.Fail(at, "the field of the subjects stands behind |: " +
                                Type(Left() + " ~ " + ForWords(formula_.by.text) + " | " + ForWords(names.front())));
        }
        const bool isFactor = isPlus || at.Is(":") || at.Is("/") || at.kind == WordKind::kName;
        if (isFactor && formula_.kind == FormulaKind::kGroups) {
            std::string second = names.empty() ? at.text : names.front();
            second.erase(0, std::min(second.find_first_not_of("*?"), second.size()));
            if (second == "+" || second == ":" || second == "/") second.clear();
            FailAtSecondFactor(at, formula_.by.text, second);
        }
        words_.Fail(at, "expected the end and not " + WordScanner::Shown(at));
    }

    WordScanner words_;
    Formula formula_;
};

}  // namespace

Formula ParseFormula(const std::string& text) {
    return Parser(text).Parse();
}

}  // namespace tarn
