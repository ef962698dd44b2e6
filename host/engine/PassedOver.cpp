#include "host/engine/PassedOver.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <utility>

#include "host/InputError.h"
#include "host/NearestNames.h"
#include "host/TestNames.h"
#include "host/engine/KnownKeys.h"
#include "host/engine/KnownValues.h"
#include "host/engine/PlanTestNames.h"
#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

using Names = std::vector<std::string_view>;

constexpr const char* kUnknownKey = "unknown key";
constexpr const char* kPassedOver = ", passed over";

/// A list of what is passed over that is longer than this helps nobody: most of it is one mistake made many times.
constexpr std::size_t kMostLines = 100;

// ---- Values ----

std::optional<bool> FlagOf(const Json& value) {
    if (value.is_boolean()) return value.get<bool>();
    if (value.is_number()) return value.get<double>() != 0;
    if (!value.is_string()) return std::nullopt;
    const auto& text = value.Text();
    if (text == "true" || text == "1") return true;
    if (text == "false" || text == "0") return false;
    return std::nullopt;
}

bool IsNumber(const Json& value) {
    return value.is_number() || value.is_boolean() || (value.is_string() && ParseDecimal(value.Text()).has_value());
}

bool IsListOf(const Json& value, bool (*fits)(const Json& element)) {
    return value.is_array() && std::all_of(value.begin(), value.end(), fits);
}

bool HasShape(const Json& value, KeyShape shape) {
    switch (shape) {
        case KeyShape::kText:
            return value.is_primitive();
        case KeyShape::kNumber:
            return IsNumber(value);
        case KeyShape::kFlag:
            return FlagOf(value).has_value();
        case KeyShape::kList:
            return IsListOf(value, [](const Json& element) { return element.is_primitive(); });
        case KeyShape::kObjects:
            return IsListOf(value, [](const Json& element) { return element.is_object(); });
        case KeyShape::kObject:
            return value.is_object();
        case KeyShape::kAny:
            return true;
    }
    return false;
}

const char* Expected(KeyShape shape) {
    switch (shape) {
        case KeyShape::kText:
            return "one text";
        case KeyShape::kNumber:
            return "one number";
        case KeyShape::kFlag:
            return "true or false";
        case KeyShape::kList:
            return "a list of texts or numbers";
        case KeyShape::kObjects:
            return "a list of objects";
        case KeyShape::kObject:
            return "an object";
        case KeyShape::kAny:
            return "anything";
    }
    return "";
}

std::string Shown(const Json& value) {
    if (value.is_object()) return "an object";
    if (value.is_array()) return "a list";
    if (value.is_string()) return Quoted(value.Text());
    return value.dump();
}

// ---- Lines ----

/// Walks over the keys and makes the lines.
class Remarks {
 public:
    explicit Remarks(const std::string& source) : source_(source) {}

    void Add(const std::string& path, const std::string& what) {
        if (lines_.size() < kMostLines) {
            lines_.push_back(source_ + ": " + path + ": " + what);
        } else {
            ++leftOut_;
        }
    }

    void AddUnknown(const std::string& path, const char* what, std::string_view name, const Names& near,
                    const Names& expected) {
        if (lines_.size() >= kMostLines) {
            ++leftOut_;
            return;
        }
        std::string hint = DidYouMean(NearestNames(name, near));
        if (hint.empty()) hint = "; expected " + Alternatives(expected);
        Add(path, what + std::string(kPassedOver) + hint);
    }

    void CheckValue(const std::string& path, const Json& value, const KnownKey& key, KeyForm form) {
        if (value.is_null()) return;
        if (!HasShape(value, key.shape)) {
            Add(path, Shown(value) + kPassedOver + "; expected " + Expected(key.shape));
            return;
        }
        if (const std::string why = WhyNotMeant(key.name, value, form); !why.empty()) Add(path, why);
        if (key.ofObjects.empty()) return;
        Names names;
        for (const KnownKey& inner : key.ofObjects) names.push_back(inner.name);
        for (std::size_t i = 0; i < value.size(); ++i) {
            CheckKeys(path + "[" + std::to_string(i) + "]", value[i], names, form, [&](std::string_view name) {
                const auto found = std::ranges::find(key.ofObjects, name, &KnownKey::name);
                return found == key.ofObjects.end() ? nullptr : &*found;
            });
        }
    }

    void CheckTest(const std::string& path, const Json& entry, const KnownTest& test, KeyForm form) {
        if (!entry.is_object()) {
            CheckValue(path, entry, {test.planName, KeyShape::kObject}, form);
            return;
        }
        Names names;
        for (const KnownKey& key : test.keys) {
            if (StandsIn(key, form) && key.form != KeyForm::kWritten) names.push_back(key.name);
        }
        CheckKeys(path, entry, names, form, [&](std::string_view name) { return test.Find(name, form); });
    }

    std::vector<std::string> Take() {
        if (leftOut_ > 0) lines_.push_back(source_ + ": " + std::to_string(leftOut_) + " more" + kPassedOver);
        return std::move(lines_);
    }

 private:
    template <typename Find>
    void CheckKeys(const std::string& path, const Json& object, const Names& names, KeyForm form, Find find) {
        for (const auto& [name, value] : object.items()) {
            const std::string place = path + "." + name;
            if (const KnownKey* const key = find(name)) {
                CheckValue(place, value, *key, form);
            } else {
                AddUnknown(place, kUnknownKey, name, names, names);
            }
        }
    }

    const std::string& source_;
    std::vector<std::string> lines_;
    std::size_t leftOut_ = 0;
};

Names TopNames(KeyForm form) {
    Names names;
    for (const KnownKey& key : KnownTopKeys()) {
        if (StandsIn(key, form) && key.shape != KeyShape::kAny) names.push_back(key.name);
    }
    return names;
}

// ---- A plan ----

void CheckPlanTest(const Json& test, const std::string& path, const std::string& source, Remarks& remarks) {
    const std::string& name = test.begin().key();
    const std::string inner = path + "." + name;
    const std::string planName = PlanTestName(name, *test.begin(), source, inner);
    if (const KnownTest* const known = FindKnownTest(planName, KeyForm::kPlan)) {
        remarks.CheckTest(inner, *test.begin(), *known, KeyForm::kPlan);
        return;
    }
    Names listed;
    for (const TestName& one : TestNames()) {
        if (std::ranges::find(listed, one.name) == listed.end()) listed.push_back(one.name);
    }
    remarks.AddUnknown(inner, "unknown test", name, NamesOfPlanTests(), listed);
}

// ---- A request ----

/// What a request calls the tests that may be meant: a user may think of the names of `tarn tests`.
Names InRequest(const Names& names) {
    Names inRequest;
    const auto add = [&](std::string_view name) {
        if (!name.empty() && std::ranges::find(inRequest, name) == inRequest.end()) inRequest.push_back(name);
    };
    for (const std::string_view name : names) {
        const std::vector<const KnownTest*> tests = TestsNamed(name);
        if (tests.empty()) add(name);
        for (const KnownTest* const test : tests) add(test->requestName);
    }
    return inRequest;
}

class RequestCheck {
 public:
    RequestCheck(const Json& request, const std::string& source) : remarks_(source) {
        for (const auto& [name, value] : request.items()) {
            if (!value.is_null()) settings_.emplace_back(name, &value);
        }
    }

    std::vector<std::string> Lines() {
        Walk();
        for (const auto& [name, value] : settings_) Check(name, *value);
        return remarks_.Take();
    }

 private:
    const Json* Find(std::string_view name) const {
        const auto found = std::ranges::find(settings_, name, [](const auto& setting) { return setting.first; });
        return found == settings_.end() ? nullptr : found->second;
    }
    bool HasFields(std::string_view key) const {
        const Json* const value = Find(key);
        return value != nullptr && value->is_array() && !value->empty();
    }
    bool IsTestOf(std::size_t position, TestFamily family) const {
        const KnownTest* const test = FindKnownTest(settings_[position].first, KeyForm::kRequest);
        return test != nullptr && test->family == family;
    }

    /// As the engine does: the tests of a family stand behind its key, and any other key ends them.
    void Walk() {
        for (std::size_t i = 0; i < settings_.size(); ++i) {
            for (const FamilyKeys& keys : KeysOfFamilies()) {
                if (settings_[i].first != keys.isAutomatic) continue;
                std::size_t end = i + 1;
                for (; end < settings_.size() && IsTestOf(end, keys.family); ++end) found_.insert(settings_[end].first);
                const std::size_t count = end - i - 1;
                const bool isLost =
                    keys.family == TestFamily::kIndependent && end == settings_.size() && count != CountOf(keys.family);
                if (isLost) unended_.insert(keys.family);
            }
        }
    }

    static std::size_t CountOf(TestFamily family) {
        return static_cast<std::size_t>(std::ranges::count_if(
            KnownTests(), [&](const KnownTest& test) { return test.family == family && !test.requestName.empty(); }));
    }

    void Check(const std::string& name, const Json& value) {
        if (const KnownKey* const key = FindTopKey(name, KeyForm::kRequest)) {
            remarks_.CheckValue(name, value, *key, KeyForm::kRequest);
        } else if (const KnownTest* const test = FindKnownTest(name, KeyForm::kRequest)) {
            CheckTest(name, value, *test);
        } else {
            Names names = TopNames(KeyForm::kRequest);
            const Names expected = names;
            for (const KnownTest& one : KnownTests()) {
                names.push_back(one.requestName);
                names.emplace_back(one.userName);
            }
            for (const TestName& one : TestNames()) names.push_back(one.name);
            std::erase(names, "");
            const std::string hint = DidYouMean(InRequest(NearestNames(name, names)));
            remarks_.Add(name, kUnknownKey + std::string(kPassedOver) +
                                   (hint.empty() ? "; expected " + Alternatives(expected) : hint));
        }
    }

    void CheckTest(const std::string& name, const Json& value, const KnownTest& test) {
        remarks_.CheckTest(name, value, test, KeyForm::kRequest);
        const bool isSelected =
            value.is_object() && value.contains(kIsSelected) && FlagOf(value[kIsSelected]).value_or(false);
        const std::string reason = isSelected ? WhyNotLookedAt(name, test.family) : "";
        if (!reason.empty()) remarks_.Add(name, "selected test" + std::string(kPassedOver) + "; " + reason);
    }

    /// Why the engine doesn't come to a selected test; empty if it does. Users of a family that has no fields, or is
    /// left to the engine, don't expect its tests.
    std::string WhyNotLookedAt(const std::string& name, TestFamily family) const {
        const FamilyKeys& keys = *std::ranges::find(KeysOfFamilies(), family, &FamilyKeys::family);
        const std::string automatic = keys.isAutomatic;
        const Json* const isAutomatic = Find(automatic);
        // What can't be read leaves a family to the engine.
        if (isAutomatic != nullptr && FlagOf(*isAutomatic).value_or(true)) return "";
        if (!HasFields(keys.fields) || (family == TestFamily::kIndependent && !HasFields(kGroupField))) return "";
        if (!found_.contains(name)) return "expected behind " + automatic + " with no other key between";
        if (unended_.contains(family)) return std::string("expected a key behind the last test, such as ") + kDone;
        return "";
    }

    Remarks remarks_;
    std::vector<std::pair<std::string, const Json*>> settings_;  ///< in their order, without what is absent
    std::set<std::string> found_;                                ///< the tests that the engine meets on its walk
    std::set<TestFamily> unended_;
};

}  // namespace

std::vector<std::string> PassedOverInPlan(const Json& plan, const std::string& source) {
    Remarks remarks(source);
    for (const auto& [name, value] : plan.items()) {
        const KnownTest* const test = FindKnownTest(name, KeyForm::kPlan);
        if (name == kPlanTests) {
            for (std::size_t i = 0; i < value.size(); ++i) {
                CheckPlanTest(value[i], name + "[" + std::to_string(i) + "]", source, remarks);
            }
        } else if (const KnownKey* const key = FindTopKey(name, KeyForm::kPlan)) {
            remarks.CheckValue(name, value, *key, KeyForm::kPlan);
        } else if (test != nullptr) {
            // The engine knows a test by its name wherever it stands.
            remarks.CheckTest(name, value, *test, KeyForm::kPlan);
        } else if (!TestsNamed(name).empty()) {
            remarks.Add(name, kUnknownKey + std::string(kPassedOver) + "; expected within " + Quoted(kPlanTests));
        } else {
            const Names keys = TopNames(KeyForm::kPlan);
            Names near = keys;
            const Names tests = NamesOfPlanTests();
            if (value.is_object()) near.insert(near.end(), tests.begin(), tests.end());
            remarks.AddUnknown(name, kUnknownKey, name, near, keys);
        }
    }
    return remarks.Take();
}

std::vector<std::string> PassedOverInRequest(const Json& request, const std::string& source) {
    return RequestCheck(request, source).Lines();
}

}  // namespace tarn
