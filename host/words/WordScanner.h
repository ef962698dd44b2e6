#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarn {

// What formulas and conditions are written in: names, texts, numbers and signs.

enum class WordKind {
    kName,    ///< letters, digits, "_" and ".", not beginning with a digit; or anything in backticks
    kText,    ///< anything in single or double quotes
    kNumber,  ///< decimal, without a sign
    kSign,    ///< one or two characters: "~", "<=", "&&"
    kEnd
};

struct Word {
    WordKind kind = WordKind::kEnd;
    std::string text;        ///< without its quotes
    std::size_t column = 0;  ///< of its first character, from 1, counted in characters
    std::size_t end = 0;     ///< the column behind it
    bool isBackticked = false;

    bool Is(std::string_view sign) const { return kind == WordKind::kSign && text == sign; }
    /// Whether it is that word of the language itself, in small letters.
    bool IsWord(std::string_view word) const { return kind == WordKind::kName && !isBackticked && text == word; }
};

/// Reads a text that a user typed as `what` ("--where", "formula"), which mistakes name.
class WordScanner {
 public:
    /// `patterns`: whether "*" and "?" may stand in names, as they do in those of several fields.
    /// Throws an `InputError` for a quote that isn't closed.
    WordScanner(std::string what, std::string text, bool patterns);

    const Word& Next() const { return words_[place_]; }
    /// The word behind the next one.
    const Word& Second() const { return words_[place_ + 1 < words_.size() ? place_ + 1 : place_]; }
    Word Take();
    /// Takes the next word where it is that sign.
    bool Skip(std::string_view sign);
    /// The same for a word of the language.
    bool SkipWord(std::string_view word);

    /// Throws an `InputError` that says where: the text, the column and the mistake.
    [[noreturn]] void Fail(const Word& at, const std::string& mistake) const;
    /// What stands there, for a message: "the end" or the word in quotes.
    static std::string Shown(const Word& word);
    const std::string& Text() const { return text_; }

 private:
    void Scan(bool patterns);

    std::string what_;
    std::string text_;
    std::vector<Word> words_;
    std::size_t place_ = 0;
};

/// The words of a text for a shell: in single quotes where it has to be.
std::string ForShell(const std::string& argument);

/// A field's name as it stands in a formula or a condition: in backticks where it has to be.
std::string ForWords(const std::string& field);

}  // namespace tarn
