#pragma once

#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/common/QKSettings.h"
#include "platform/common/QKStatus.h"
#include "tests/harness/TestRun.h"

/// Requests and what comes of them, written and read in a few words.
namespace selection {

using Names = std::vector<std::string>;
using Lists = std::vector<QKSettings>;
using Lines = std::vector<std::string>;

/// A key with its value: {"isSelected", true}, {"variableName", Names{"a", "b"}}, {"RSign", Tree({...})}.
struct Item {
    std::string key;
    std::variant<std::string, double, int, bool, Names, QKSettings, Lists> value;
};

/// Settings of these items, in their order.
QKSettings Tree(const std::vector<Item>& items);
/// A test that is selected, with its keys behind the flag.
Item Selected(const std::string& test, std::vector<Item> keys = {});
Item NotSelected(const std::string& test);

/// Settings as a line, a setting a word or two: "variableName 'a', testIndex 0, custom []". A text stands in quotes, a
/// double is a plain number or "missing", an int and a bool say their type, a vector stands in brackets.
std::string Describe(const QKSettings& settings);

/// What an expansion gave.
struct Expanded {
    QKStatus status;
    QKSettings settings;
    /// The entries, each as its name and its settings: "RSign: AlgorithmName 'RSign', ...".
    Lines entries;
    /// The keys of the run that were written: "sigLevel 0.05".
    std::string globals;
    /// Each warning as its code with its arguments in brackets: "220023 [a ,b] []".
    Lines warnings;

    /// The entries as name and fields alone: "RSign a, b".
    Lines Plan() const;
};

using Renamed = std::map<std::string, std::string>;

Expanded Expand(const QKSettings& request, harness::Fields& fields, const Renamed& renamed = {});

}  // namespace selection
