#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/report/ResultDocument.h"

namespace tarn {

/// What a test is, for a reader.
struct TestTexts {
    std::string title;
    std::string name;      ///< as on the command line
    std::string family;    ///< "one-sample", "related" or "independent"
    std::string question;  ///< one line
    std::string assumes;
    std::string chosen;   ///< when the automatic choice takes it
    std::string decides;  ///< which significance decides
    std::string method;   ///< the convention of its numbers, one line
    std::string pairs;    ///< how it compares pairs of samples; "" for a test that doesn't
    std::string steps;    ///< how it searches for homogeneous subsets; "" for a test that doesn't
    std::string source;   ///< author and year
    /// What it says once it has rejected, and once it has not: a sentence that claims no more than the test does, with
    /// the level, the two samples of its direction, a word for that direction, the fields and the groups; "" for an
    /// estimate.
    std::string found;
    std::string notFound;
};

/// The sentences behind the codes and keys of the engine in one human language. They are data
/// (`host/messages/<language>.json`, described in docs/messages.md): English is built in, another language is a file.
class MessageCatalogue {
 public:
    /// The built-in English one.
    static const MessageCatalogue& English();
    /// The catalogue of a language ("de"): its file in one of `folders` over the English texts; English alone if there
    /// is no such file. Throws an `InputError` for a file that is no catalogue.
    static MessageCatalogue OfLanguage(const std::string& language, const std::vector<std::string>& folders);

    /// Adds the texts of a catalogue in JSON, which take the place of those that are there. Throws an `InputError`.
    void Add(const std::string& json, const std::string& name);

    /// The texts as they stand in the catalogue, placeholders and all; null for none.
    const std::string* Status(long code) const;
    const std::string* Condition(std::string_view key) const;
    const std::string* Limit(std::string_view key) const;
    const std::string* Remark(std::string_view key) const;
    /// What an effect size is called, with the two samples of its direction, and by which method its interval is made;
    /// null for none.
    const std::string* Effect(std::string_view key) const;
    const std::string* IntervalOf(std::string_view effectKey) const;
    /// What a reader is shown for a figure of a test, by its name in the document; the name itself without a text.
    std::string Label(std::string_view key) const;
    /// What there is to say about a test; null for none. `name` as in the document.
    const TestTexts* Test(std::string_view name) const;
    const std::map<std::string, TestTexts, std::less<>>& Tests() const { return tests_; }

    /// A message of a test as a sentence, fields and categories by their names; "code 220099" if there is no text.
    std::string Sentence(const ResultMessage& message, const ResultDocument& document) const;
    /// The condition of a test as a sentence: its null hypothesis, or what it estimates.
    std::string Sentence(const TestResult& test, const ResultDocument& document) const;
    /// A code of the run, with the parameters that the engine reported with it.
    std::string Sentence(long code, const std::vector<std::string>& parameters) const;

 private:
    std::map<std::string, std::string, std::less<>> status_;
    std::map<std::string, std::string, std::less<>> conditions_;
    std::map<std::string, std::string, std::less<>> limits_;
    std::map<std::string, std::string, std::less<>> remarks_;
    std::map<std::string, std::string, std::less<>> labels_;
    std::map<std::string, std::string, std::less<>> effects_;
    std::map<std::string, std::string, std::less<>> intervals_;
    std::map<std::string, TestTexts, std::less<>> tests_;
};

/// What the placeholders of a text stand for; all borrowed, and `named` and `document` may be null.
struct Placeholders {
    const std::vector<std::string>* positional;
    const std::vector<std::pair<std::string, std::string>>* named = nullptr;
    const ResultDocument* document = nullptr;
};

/// Puts values into the placeholders of a text: {0} as it stands, {number:0} shortened, {field:0} and {fields:0} the
/// names of fields, {values:0} a list of values, {names:0} and {tests:0} a list of names or of tests as the messages of
/// a run join them, {category:1:0} category 1 of field 0, or a list of them, {named:group}. A part in square brackets
/// is left out when one of its values is absent or empty; elsewhere an absent value shows as "?".
std::string FillIn(std::string_view text, const Placeholders& placeholders);

}  // namespace tarn
