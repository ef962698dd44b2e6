#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/TestNames.h"

namespace tarn {

/// What the engine reads under a key. What converts counts: a number is a text, too, and a text that is a number is
/// one.
enum class KeyShape {
    kText,     ///< one text
    kNumber,   ///< one number
    kFlag,     ///< true or false
    kList,     ///< a list of texts or numbers
    kObjects,  ///< a list of objects
    kObject,   ///< one object
    kAny       ///< nothing: that the key stands there is what it says
};

/// Where a key stands.
enum class KeyForm {
    kBoth,
    kPlan,
    kRequest,
    kWritten  ///< in a plan that was made of a request: nothing there reads it
};

struct KnownKey {
    std::string_view name;
    KeyShape shape;
    KeyForm form = KeyForm::kBoth;
    std::span<const KnownKey> ofObjects = {};  ///< the keys of each object under the key
};

/// A test with the keys of its entries in a plan and in a request.
struct KnownTest {
    std::string_view planName;
    std::string_view requestName;  ///< empty if a request asks for it within another test
    std::string userName;          ///< as `tarn tests` lists it, with the distribution where there is one; or empty
    TestFamily family;
    std::vector<KnownKey> keys;

    /// Null for a name that is no key of it in that form, which is `kPlan` or `kRequest`.
    const KnownKey* Find(std::string_view key, KeyForm form) const;
};

/// The two lists of names of which a plan and a request are made. They say what the engine reads, in one place outside
/// of it, since it passes over all else without a word.
std::span<const KnownKey> KnownTopKeys();
std::span<const KnownTest> KnownTests();

/// Whether a key stands in a plan or a request, `form`; those that nothing reads stand in a plan.
bool StandsIn(const KnownKey& key, KeyForm form);

/// Null for none. Borrowed for the life of the process.
const KnownKey* FindTopKey(std::string_view name, KeyForm form);
const KnownTest* FindKnownTest(std::string_view name, KeyForm form);

/// The key of a plan that holds its tests.
inline constexpr const char* kPlanTests = "tests";

/// The keys of a test of a plan that name its fields.
inline constexpr const char* kVariableKey = "variableName";
inline constexpr const char* kGroupVariableKey = "groupVariableName";

/// The keys by which a plan and a request name the field of the cases.
inline constexpr const char* kPlanCaseId = "caseIDVariableName";
inline constexpr const char* kRequestCaseId = "caseIDField";

/// The keys of a request that name the fields of a family, and that start its tests.
struct FamilyKeys {
    TestFamily family;
    const char* fields;
    const char* isAutomatic;
};
std::span<const FamilyKeys> KeysOfFamilies();
/// The field with the groups, without which there are no independent samples.
inline constexpr const char* kGroupField = "groupVariable";
/// Whether a test of a request is selected.
inline constexpr const char* kIsSelected = "isSelected";
/// How many threads may work at a time, the calling one among them; absent: as many as the machine has.
inline constexpr const char* kThreads = "threads";
/// Whether the statistics are all that is wanted: no histograms, no boxes, no descriptives but those that a test needs.
inline constexpr const char* kBrief = "brief";
/// Whether numbers are as wide as they need to be and statistics have the form of the textbook.
inline constexpr const char* kExtendedArithmetic = "extendedArithmetic";
/// A key behind the last test of a request.
inline constexpr const char* kDone = "done";

}  // namespace tarn
