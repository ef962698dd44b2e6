#include "host/words/Condition.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>

#include "host/InputError.h"
#include "host/NearestNames.h"
#include "host/TextList.h"
#include "host/table/CellValue.h"
#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

constexpr const char* kWhat = "--where";
constexpr std::array<std::string_view, 7> kComparisons{"=", "==", "!=", "<", "<=", ">", ">="};

/// In this order "and" is the smaller of two and "or" the larger.
enum class Truth : std::uint8_t { kFalse, kMissing, kTrue };

Truth TruthOf(bool is) {
    return is ? Truth::kTrue : Truth::kFalse;
}

Truth Not(Truth truth) {
    return truth == Truth::kMissing ? truth : TruthOf(truth == Truth::kFalse);
}

enum class NodeKind { kOr, kAnd, kNot, kCompare, kIn, kIsMissing };

/// A field or a value of a comparison.
struct Operand {
    Word word;
    bool isNegative = false;

    bool IsField() const { return word.kind == WordKind::kName && !word.IsWord("true") && !word.IsWord("false"); }
    std::string Text() const { return (isNegative ? "-" : "") + word.text; }
};

bool IsOrderSign(std::string_view sign) {
    return sign.front() == '<' || sign.front() == '>';
}

template <typename Value>
bool Holds(std::string_view sign, const Value& left, const Value& right) {
    if (sign == "=" || sign == "==") return left == right;
    if (sign == "!=") return left != right;
    if (sign == "<") return left < right;
    if (sign == "<=") return left <= right;
    return sign == ">" ? left > right : left >= right;
}

/// The sign of the same comparison from the right to the left.
std::string Turned(const std::string& sign) {
    if (!IsOrderSign(sign)) return sign;
    return (sign.front() == '<' ? ">" : "<") + sign.substr(1);
}

}  // namespace

struct Condition::Node {
    NodeKind kind = NodeKind::kCompare;
    std::vector<std::unique_ptr<Node>> parts;  ///< of "or", "and" and "not"
    std::string sign;                          ///< of a comparison
    Operand field;                             ///< on the left of a comparison
    std::vector<Operand> values;               ///< on the right of it
    bool isNegated = false;                    ///< "not in", "is not missing"
};

// ---- Reading ----

class Condition::Parser {
 public:
    explicit Parser(WordScanner& words) : words_(words) {}

    std::unique_ptr<Node> Parse() {
        if (words_.Next().kind == WordKind::kEnd) {
            words_.Fail(words_.Next(), "nothing to compare; expected a comparison like age > 40");
        }
        std::unique_ptr<Node> root = Either();
        const Word& next = words_.Next();
        if (next.kind == WordKind::kEnd) return root;
        if (next.Is(")")) words_.Fail(next, "a parenthesis is closed that none opens");
        if (next.Is(",")) words_.Fail(next, "expected & for both or | for either and not \",\"");
        words_.Fail(next, "expected &, | or the end and not " + WordScanner::Shown(next));
    }

 private:
    bool SkipOr() { return words_.Skip("|") || words_.Skip("||") || words_.SkipWord("or"); }
    bool SkipAnd() { return words_.Skip("&") || words_.Skip("&&") || words_.SkipWord("and"); }
    bool SkipNot() {
        if (words_.Skip("!")) return true;
        // "not" may be the name of a field, too: not = 3.
        const Word& second = words_.Second();
        const bool isField = second.kind == WordKind::kSign && !second.Is("(") && !second.Is("!");
        return !isField && words_.SkipWord("not");
    }

    std::unique_ptr<Node> Either() {
        std::unique_ptr<Node> node = Both();
        while (SkipOr()) node = Join(NodeKind::kOr, std::move(node), Both());
        return node;
    }
    std::unique_ptr<Node> Both() {
        std::unique_ptr<Node> node = Single();
        while (SkipAnd()) node = Join(NodeKind::kAnd, std::move(node), Single());
        return node;
    }
    std::unique_ptr<Node> Single() {
        constexpr int kDeepest = 200;
        if (++depth_ > kDeepest) words_.Fail(words_.Next(), "more than 200 parentheses and negations in one another");
        std::unique_ptr<Node> node;
        if (SkipNot()) {
            node = std::make_unique<Node>();
            node->kind = NodeKind::kNot;
            node->parts.push_back(Single());
        } else if (const Word open = words_.Next(); words_.Skip("(")) {
            node = Either();
            if (!words_.Skip(")")) {
                words_.Fail(words_.Next(), "expected ) for the ( at column " + std::to_string(open.column) +
                                               " and not " + WordScanner::Shown(words_.Next()));
            }
        } else {
            node = Comparison();
        }
        --depth_;
        return node;
    }
    static std::unique_ptr<Node> Join(NodeKind kind, std::unique_ptr<Node> left, std::unique_ptr<Node> right) {
        auto node = std::make_unique<Node>();
        node->kind = kind;
        node->parts.push_back(std::move(left));
        node->parts.push_back(std::move(right));
        return node;
    }

    std::unique_ptr<Node> Comparison() {
        auto node = std::make_unique<Node>();
        node->field = TakeOperand("a field");
        const Word sign = words_.Next();
        node->isNegated = sign.IsWord("not") && words_.Second().IsWord("in");
        if (node->isNegated) words_.Take();
        if (words_.SkipWord("in")) return TakeList(std::move(node));
        if (words_.SkipWord("is")) return TakeMissing(std::move(node));
        if (std::ranges::find(kComparisons, sign.kind == WordKind::kSign ? sign.text : "") == kComparisons.end()) {
            FailAtSign(sign, node->field);
        }
        words_.Take();
        node->sign = sign.text;
        node->values.push_back(TakeOperand("a value"));
        if (IsMissingWord(node->values.front())) FailAtMissing(sign, node->field);
        // A value on the left changes sides.
        if (!node->field.IsField()) {
            std::swap(node->field, node->values.front());
            node->sign = Turned(node->sign);
        }
        if (!node->field.IsField()) words_.Fail(sign, "compares two values; expected a field on one side");
        const Word& next = words_.Next();
        if (std::ranges::find(kComparisons, next.kind == WordKind::kSign ? next.text : "") != kComparisons.end()) {
            words_.Fail(next, "a comparison has two sides; type both parts with & between them");
        }
        return node;
    }

    /// A missing value is compared with nothing: "= NA" would be true of no record.
    static bool IsMissingWord(const Operand& value) {
        static constexpr std::array<std::string_view, 8> kWords{"NA",   "na",   "NaN",  "nan",
                                                                "None", "null", "NULL", "missing"};
        return value.word.kind == WordKind::kName && !value.word.isBackticked &&
               std::ranges::find(kWords, value.word.text) != kWords.end();
    }
    [[noreturn]] void FailAtMissing(const Word& sign, const Operand& field) const {
        words_.Fail(sign, "nothing is equal to a missing value; type " + ForWords(field.word.text) +
                              (sign.text == "!=" ? " is not missing" : " is missing"));
    }

    Operand TakeOperand(const std::string& expected) {
        Operand operand;
        if (words_.Next().Is("-") && words_.Second().kind == WordKind::kNumber) {
            words_.Take();
            operand.isNegative = true;
        } else {
            words_.Skip("+");
        }
        const Word word = words_.Next();
        if (word.kind == WordKind::kSign || word.kind == WordKind::kEnd) {
            words_.Fail(word, "expected " + expected + " and not " + WordScanner::Shown(word));
        }
        if (word.kind == WordKind::kNumber && !ParseDecimal(word.text)) {
            words_.Fail(word, WordScanner::Shown(word) + " is no number; a text stands in quotes");
        }
        operand.word = words_.Take();
        if (word.kind == WordKind::kName && words_.Next().Is("(")) FailAtCall(word);
        return operand;
    }

    [[noreturn]] void FailAtCall(const Word& call) {
        words_.Take();
        const std::string field = words_.Next().kind == WordKind::kName ? ForWords(words_.Next().text) : "FIELD";
        static constexpr std::array<std::string_view, 5> kMissing{"missing", "isna", "isnull", "notna", "notnull"};
        if (call.text == "is.na" || std::ranges::find(kMissing, call.text) != kMissing.end()) {
            words_.Fail(call, "there are no functions; type " + field +
                                  (call.text.starts_with("not") ? " is not missing" : " is missing"));
        }
        words_.Fail(call, "there are no functions; expected a field");
    }

    [[noreturn]] void FailAtSign(const Word& sign, const Operand& left) const {
        const std::string field = ForWords(left.word.text);
        if (sign.Is("<>")) words_.Fail(sign, "expected != and not \"<>\"");
        if (sign.Is("~")) words_.Fail(sign, "a formula has no place here; expected a comparison like age > 40");
        if (sign.Is("%")) words_.Fail(sign, "expected in: " + field + " in (\"a\", \"b\")");
        if (sign.Is("+") || sign.Is("-") || sign.Is("*") || sign.Is("/")) {
            words_.Fail(sign, "there is no arithmetic; a name with blanks or signs stands in backticks: `" +
                                  left.word.text + sign.text + "..`");
        }
        if (sign.kind == WordKind::kName || sign.kind == WordKind::kNumber) {
            words_.Fail(sign, "expected a comparison behind " + field + " and not " + WordScanner::Shown(sign) +
                                  "; a name with blanks stands in backticks");
        }
        words_.Fail(sign, "expected a comparison behind " + field + ", like " + field + " = true or " + field +
                              " > 40, and not " + WordScanner::Shown(sign));
    }

    std::unique_ptr<Node> TakeList(std::unique_ptr<Node> node) {
        node->kind = NodeKind::kIn;
        node->sign = "=";
        if (!words_.Skip("(")) {
            words_.Fail(words_.Next(),
                        "expected ( and values behind in: " + ForWords(node->field.word.text) + " in (\"a\", \"b\")");
        }
        do {
            node->values.push_back(TakeOperand("a value"));
        } while (words_.Skip(","));
        if (!words_.Skip(")")) {
            words_.Fail(words_.Next(), "expected , or ) and not " + WordScanner::Shown(words_.Next()));
        }
        RequireField(*node);
        return node;
    }

    std::unique_ptr<Node> TakeMissing(std::unique_ptr<Node> node) {
        node->kind = NodeKind::kIsMissing;
        node->isNegated = words_.SkipWord("not");
        if (!words_.SkipWord("missing")) {
            words_.Fail(words_.Next(),
                        "expected missing or not missing behind is, and not " + WordScanner::Shown(words_.Next()));
        }
        RequireField(*node);
        return node;
    }

    void RequireField(const Node& node) const {
        if (!node.field.IsField()) words_.Fail(node.field.word, "expected a field and not a value");
    }

    WordScanner& words_;
    int depth_ = 0;
};

// ---- Evaluating ----

class Condition::Evaluation {
 public:
    using Truths = std::vector<Truth>;

    Evaluation(const WordScanner& words, const Table& table, FieldNames& names)
        : words_(words), table_(table), names_(names) {}

    Truths Of(const Node& node) {
        switch (node.kind) {
            case NodeKind::kOr:
            case NodeKind::kAnd:
                return OfBoth(node);
            case NodeKind::kNot: {
                Truths truths = Of(*node.parts.front());
                std::ranges::transform(truths, truths.begin(), Not);
                return truths;
            }
            case NodeKind::kIsMissing:
                return OfMissing(node);
            case NodeKind::kIn:
                return OfList(node);
            case NodeKind::kCompare:
                break;
        }
        const Operand& value = node.values.front();
        return value.IsField() ? OfTwoFields(node, value) : OfValue(node, value);
    }

 private:
    Truths OfBoth(const Node& node) {
        Truths truths = Of(*node.parts.front());
        const Truths other = Of(*node.parts.back());
        for (std::size_t i = 0; i < truths.size(); ++i) {
            truths[i] = node.kind == NodeKind::kAnd ? std::min(truths[i], other[i]) : std::max(truths[i], other[i]);
        }
        return truths;
    }

    Truths OfMissing(const Node& node) {
        const std::size_t index = IndexOf(node.field);
        const bool isCategorical = table_.Columns()[index].IsCategorical();
        return ForEach(index, [&](double cell) { return TruthOf(IsMissing(cell, isCategorical) != node.isNegated); });
    }

    Truths OfList(const Node& node) {
        Truths truths(table_.RowCount(), Truth::kFalse);
        for (const Operand& value : node.values) {
            if (value.IsField()) FailAtUnquoted(node, value);
            const Truths one = OfValue(node, value);
            for (std::size_t i = 0; i < truths.size(); ++i) truths[i] = std::max(truths[i], one[i]);
        }
        if (node.isNegated) std::ranges::transform(truths, truths.begin(), Not);
        return truths;
    }

    /// A field beside a value: categories by value or label, anything else by its number.
    Truths OfValue(const Node& node, const Operand& value) {
        const std::size_t index = IndexOf(node.field);
        const Column& column = table_.Columns()[index];
        if (column.IsCategorical() && (column.IsText() || !IsNumberOf(column, value))) {
            return OfCategory(node, value, index);
        }
        const std::optional<double> number = ParseCell(column.type, value.Text());
        if (!number) {
            words_.Fail(value.word, column.name + " is compared with " + std::string(ExpectedText(column.type)) +
                                        " and not with " + Quoted(value.Text()));
        }
        if (!column.IsCategorical()) {
            return ForEach(index, [&](double cell) {
                return cell == kMissingNumber ? Truth::kMissing : TruthOf(Holds(node.sign, cell, *number));
            });
        }
        if (IsScored(column)) return OfCategory(node, value, index);
        return OfCategories(index,
                            [&](const Category& category) { return Holds(node.sign, category.number, *number); });
    }

    /// Whether somebody gave the numbers of a column another order than their own.
    static bool IsScored(const Column& column) {
        return column.IsOrderTold() && !std::ranges::is_sorted(column.categories, {}, &Category::number);
    }

    static bool IsNumberOf(const Column& column, const Operand& value) {
        return ParseCell(column.type, value.Text()).has_value();
    }

    Truths OfCategory(const Node& node, const Operand& value, std::size_t index) {
        const Column& column = table_.Columns()[index];
        const bool isOrder = IsOrderSign(node.sign);
        if (isOrder && !column.IsOrderTold()) {
            if (const auto days = ParseDate(value.Text())) return OfDates(node, *days, index);
            words_.Fail(value.word, ForWords(column.name) + " has words without an order; tell it by --order " +
                                        column.name + "=LOWEST,..,HIGHEST");
        }
        const Category* const category = FindCategory(column, value.Text());
        if (category == nullptr) FailAtCategory(column, value);
        const auto place = category - column.categories.data();
        return OfCategories(
            index, [&](const Category& each) { return Holds(node.sign, &each - column.categories.data(), place); });
    }

    /// Words that are all dates are compared as dates.
    Truths OfDates(const Node& node, double days, std::size_t index) {
        const Column& column = table_.Columns()[index];
        for (const Category& category : column.categories) {
            if (column.IsText() && ParseDate(category.text)) continue;
            words_.Fail(node.field.word, ForWords(column.name) + " is compared with a date, and its value " +
                                             Quoted(ShownCategory(column, category)) + " is none");
        }
        return OfCategories(index, [&](const Category& each) { return Holds(node.sign, *ParseDate(each.text), days); });
    }

    Truths OfTwoFields(const Node& node, const Operand& value) {
        if (names_.Find(value.word.text).empty() && !value.word.isBackticked) FailAtUnquoted(node, value);
        const std::size_t left = IndexOf(node.field);
        const std::size_t right = IndexOf(value);
        for (const std::size_t index : {left, right}) {
            const Column& column = table_.Columns()[index];
            if (!column.IsCategorical() || !column.IsText()) continue;
            words_.Fail(value.word, "two fields are compared by their numbers, and " + ForWords(column.name) +
                                        " has words; a text stands in quotes");
        }
        Truths truths(table_.RowCount());
        for (std::size_t i = 0; i < truths.size(); ++i) {
            const std::optional<double> first = NumberAt(left, i);
            const std::optional<double> second = NumberAt(right, i);
            truths[i] = first && second ? TruthOf(Holds(node.sign, *first, *second)) : Truth::kMissing;
        }
        return truths;
    }

    std::optional<double> NumberAt(std::size_t index, std::size_t row) const {
        const Column& column = table_.Columns()[index];
        const double cell = table_.Cells(index)[row];
        if (IsMissing(cell, column.IsCategorical())) return std::nullopt;
        return column.IsCategorical() ? column.categories[static_cast<std::size_t>(cell)].number : cell;
    }

    static bool IsMissing(double cell, bool isCategorical) {
        return cell == (isCategorical ? kMissingCategory : kMissingNumber);
    }

    template <typename Judge>
    Truths ForEach(std::size_t index, const Judge& judge) const {
        Truths truths(table_.RowCount());
        std::ranges::transform(table_.Cells(index), truths.begin(), judge);
        return truths;
    }

    /// Judges each category once.
    template <typename Judge>
    Truths OfCategories(std::size_t index, const Judge& judge) const {
        std::vector<Truth> ofCategory;
        for (const Category& category : table_.Columns()[index].categories) {
            ofCategory.push_back(TruthOf(judge(category)));
        }
        return ForEach(index, [&](double cell) {
            return cell == kMissingCategory ? Truth::kMissing : ofCategory[static_cast<std::size_t>(cell)];
        });
    }

    std::size_t IndexOf(const Operand& field) {
        const std::string name = names_.Find(field.word.text);
        if (name.empty()) words_.Fail(field.word, names_.Mistake(field.word.text));
        return static_cast<std::size_t>(table_.FindColumn(name));
    }

    /// A word that is no field, where it may be a category whose quotes were forgotten.
    [[noreturn]] void FailAtUnquoted(const Node& node, const Operand& value) {
        const Column& column = table_.Columns()[IndexOf(node.field)];
        const Category* const category = FindCategory(column, value.word.text);
        if (category == nullptr) words_.Fail(value.word, names_.Mistake(value.word.text));
        const bool isList = node.kind == NodeKind::kIn;
        const std::string left = ForWords(node.field.word.text);
        const std::string quoted = "\"" + value.word.text + "\"";
        words_.Fail(value.word,
                    "the table has no field " + quoted + "; a category stands in quotes: " +
                        (isList ? left + " in (" + quoted + ", ..)" : left + " " + node.sign + " " + quoted));
    }

    [[noreturn]] void FailAtCategory(const Column& column, const Operand& value) const {
        std::vector<std::string> shown;
        for (const Category& category : column.categories) shown.push_back(ShownCategory(column, category));
        const std::vector<std::string_view> known(shown.begin(), shown.end());
        const std::vector<std::string_view> nearest = NearestNames(value.Text(), known);
        words_.Fail(value.word,
                    column.name + " has no category " + Quoted(value.Text()) +
                        (nearest.empty() ? "; it has " + Alternatives(known, " and ") : DidYouMean(nearest)));
    }

    const WordScanner& words_;
    const Table& table_;
    FieldNames& names_;
};

Condition::Condition(const std::string& text) : words_(std::make_unique<WordScanner>(kWhat, text, false)) {
    root_ = Parser(*words_).Parse();
}

Condition::Condition(Condition&&) noexcept = default;
Condition& Condition::operator=(Condition&&) noexcept = default;
Condition::~Condition() = default;

std::vector<std::string> Condition::Names() const {
    std::vector<std::string> names;
    std::vector<const Node*> open{root_.get()};
    while (!open.empty()) {
        const Node& node = *open.back();
        open.pop_back();
        for (const auto& part : node.parts) open.push_back(part.get());
        if (node.field.IsField()) names.push_back(node.field.word.text);
        for (const Operand& value : node.values) {
            if (value.IsField()) names.push_back(value.word.text);
        }
    }
    return names;
}

std::vector<std::size_t> Condition::RecordsOf(const Table& table, FieldNames& names) const {
    const Evaluation::Truths truths = Evaluation(*words_, table, names).Of(*root_);
    std::vector<std::size_t> records;
    for (std::size_t i = 0; i < truths.size(); ++i) {
        if (truths[i] == Truth::kTrue) records.push_back(i);
    }
    return records;
}

}  // namespace tarn
