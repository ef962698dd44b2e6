// The table of known keys against the engine: each test is planned in every way that leads to another key, and what the
// engine reads of its entry is what the table has for it, no more and no less. The same for a request.

#include "host/engine/KnownKeys.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "catalogue/TARNTestCatalog.h"
#include "selection/TARNSettingsExpansion.h"
#include "support/QKVecValue.h"
#include "tests/harness/Command.h"
#include "tests/harness/TestRun.h"
#include "tests/host/engine/ReadKeys.h"

namespace {

using tarn::KeyForm;
using tarn::KeyShape;
using tarn::KnownKey;
using tarn::KnownTest;
using Names = std::vector<std::string>;

constexpr const char* kTop = "top";
constexpr const char* kObjects = " objects";

harness::Fields ManyFields() {
    harness::Fields fields;
    fields.Continuous("x").Continuous("y");
    fields.Numeric("g", {1, 2}).Numeric("h", {1, 2});
    fields.Text("arm", {"a", "b"}).Text("sex", {"a", "b"});
    fields.Numeric("low", {1, 2}, true).Numeric("high", {1, 2}, true);
    return fields;
}

const std::vector<std::vector<double>> kRows{
    {1, 2, 0, 1, 0, 1, 0, 0}, {2, 1, 1, 1, 1, 1, 1, 0}, {4, 7, 0, 0, 0, 0, 0, 1}, {3, 9, 1, 0, 1, 0, 1, 1}};

/// One way to fill an entry. A plan builder reads some keys only behind the right word of another one.
struct Way {
    Names fields;
    std::string group;
    std::string word;     ///< under every key of a text
    std::string leftOut;  ///< a key that hides others
    bool flag = true;
};

void AddValue(QKSettings& settings, const KnownKey& key, const std::string& watchedAs, const Way& way) {
    const std::string name(key.name);
    switch (key.shape) {
        case KeyShape::kText:
            settings.AddSetting(name, way.word);
            break;
        case KeyShape::kNumber:
            settings.AddSetting(name, 1.0);
            break;
        case KeyShape::kFlag:
            settings.AddSetting(name, way.flag);
            break;
        case KeyShape::kList:
            AddVecSetting(settings, name, Names{"1", "a"}, false);
            break;
        case KeyShape::kObjects: {
            QKSettings object;
            object.AddSetting(read_keys::kWatched, watchedAs + kObjects);
            for (const KnownKey& inner : key.ofObjects) AddValue(object, inner, "", {{}, "", "1", ""});
            AddVecSetting(settings, name, std::vector<QKSettings>{object, object}, false);
            break;
        }
        case KeyShape::kObject:
        case KeyShape::kAny:
            break;
    }
}

QKSettings EntryOf(const KnownTest& test, KeyForm form, const std::string& watchedAs, const Way& way) {
    QKSettings entry;
    entry.AddSetting(read_keys::kWatched, watchedAs);
    for (const KnownKey& key : test.keys) {
        if (!tarn::StandsIn(key, form) || key.name == way.leftOut) continue;
        if (key.name == tarn::kGroupVariableKey) {
            entry.AddSetting(tarn::kGroupVariableKey, way.group);
        } else if (key.name == tarn::kVariableKey && key.shape == KeyShape::kList) {
            AddVecSetting(entry, tarn::kVariableKey, way.fields, false);
        } else if (key.name == tarn::kVariableKey) {
            entry.AddSetting(tarn::kVariableKey, way.fields.front());
        } else if (key.name == tarn::kIsSelected) {
            entry.AddSetting(tarn::kIsSelected, true);
        } else {
            AddValue(entry, key, watchedAs, way);
        }
    }
    return entry;
}

std::vector<Way> Ways() {
    std::vector<Way> ways;
    for (const Names& fields : {Names{"x", "y"}, Names{"g", "h"}, Names{"arm", "sex"}}) {
        for (const char* const word : {"givenCategoryList", "givenExpectedValue", "givenCutPoint", "cutPointValue"}) {
            for (const char* const leftOut : {"", "catVarClassFormation"}) {
                for (const bool flag : {false, true}) {
                    ways.push_back({fields, fields[0] == "g" ? "g" : "arm", word, leftOut, flag});
                }
            }
        }
    }
    return ways;
}

/// A key and what the table says of it: "sigLevel number". Each number is a text, too.
using Lines = std::set<std::string>;

std::string Line(std::string_view key, KeyShape shape) {
    constexpr const char* kShapes[] = {"text", "number", "flag", "list", "objects", "object", "any"};
    return std::string(key) + " " + kShapes[static_cast<std::size_t>(shape)];
}

Lines Read(const std::string& watchedAs) {
    Lines lines;
    for (const auto& [key, shapes] : read_keys::All()[watchedAs]) {
        const bool isText = shapes == std::set<KeyShape>{KeyShape::kText, KeyShape::kNumber};
        EXPECT_TRUE(isText || shapes.size() == 1) << key;
        lines.insert(Line(key, *shapes.begin()));
    }
    return lines;
}

template <typename Keys>
Lines InTable(const Keys& keys, KeyForm form) {
    Lines lines;
    for (const KnownKey& key : keys) {
        const bool isRead = key.form != KeyForm::kWritten && key.shape != KeyShape::kAny;
        if (isRead && tarn::StandsIn(key, form)) lines.insert(Line(key.name, key.shape));
    }
    return lines;
}

Lines OfObjectsInTable(const KnownTest& test) {
    Lines lines;
    for (const KnownKey& key : test.keys) lines.merge(InTable(key.ofObjects, KeyForm::kBoth));
    return lines;
}

// ---- A plan ----

TEST(KnownKeys, HaveTheTestsOfThePlanner) {
    std::set<std::string_view> known;
    for (const KnownTest& test : tarn::KnownTests()) known.insert(test.planName);
    std::set<std::string_view> planned;
    for (const TARNTestRow& row : TestCatalog()) planned.insert(row.settingName);
    EXPECT_EQ(known, planned);
}

TEST(KnownKeys, OfATestOfAPlanAreThoseThatItsPlanBuilderReads) {
    read_keys::All().clear();
    for (const KnownTest& test : tarn::KnownTests()) {
        const std::string name(test.planName);
        for (const Way& way : Ways()) {
            QKSettings plan;
            plan.AddSetting(name, EntryOf(test, KeyForm::kPlan, name, way));
            harness::Fields fields = ManyFields();
            EXPECT_TRUE(harness::Run(plan, fields, kRows).complete) << name;
        }
        EXPECT_EQ(Read(name), InTable(test.keys, KeyForm::kPlan)) << name;
        EXPECT_EQ(Read(name + kObjects), OfObjectsInTable(test)) << name;
    }
}

TEST(KnownKeys, AtTheTopOfAPlanAreThoseThatThePlannerReads) {
    read_keys::All().clear();
    QKSettings plan;
    plan.AddSetting(read_keys::kWatched, kTop);
    plan.AddSetting("RSign", QKSettings());
    harness::Fields fields = ManyFields();
    EXPECT_TRUE(harness::Run(plan, fields, kRows).complete);
    Lines known = InTable(tarn::KnownTopKeys(), KeyForm::kPlan);
    EXPECT_EQ(known.erase(Line(tarn::kPlanTests, KeyShape::kObjects)), 1u) << "the one that is of the file alone";
    EXPECT_EQ(Read(kTop), known);
}

// ---- A request ----

const Names kFamilyFields{"x", "y", "g", "h", "low", "high"};

/// Every family with fields of every kind and all of its tests, and a key behind them; what comes of it in a plan.
QKSettings ExpandEverything(bool isAutomatic, const Names& related) {
    QKSettings request;
    request.AddSetting(read_keys::kWatched, kTop);
    for (const KnownKey& key : tarn::KnownTopKeys()) {
        const bool isOfRun = tarn::StandsIn(key, KeyForm::kRequest) && key.shape != KeyShape::kList;
        if (isOfRun && !key.name.starts_with("isAutomatically")) AddValue(request, key, "", {{}, "", "id", ""});
    }
    AddVecSetting(request, tarn::kGroupField, Names{"arm"}, false);
    for (const tarn::FamilyKeys& family : tarn::KeysOfFamilies()) {
        const bool isRelated = family.family == tarn::TestFamily::kRelated;
        AddVecSetting(request, family.fields, isRelated ? related : kFamilyFields, false);
        request.AddSetting(family.isAutomatic, isAutomatic);
        for (const KnownTest& test : tarn::KnownTests()) {
            const std::string name(test.requestName);
            if (name.empty() || test.family != family.family) continue;
            request.AddSetting(name, EntryOf(test, KeyForm::kRequest, name, {{}, "", "word", ""}));
        }
    }
    request.AddSetting(tarn::kDone, true);
    harness::Fields fields = ManyFields();
    QKSettings execution;
    const TARNSettingsExpansion::RenamedFields renamed{{"low", "x"}, {"high", "y"}};
    EXPECT_FALSE(TARNSettingsExpansion(&request, &fields.List(), &execution, &renamed).Expand().IsError());
    return execution;
}

TEST(KnownKeys, OfARequestAreThoseThatItsExpansionReads) {
    read_keys::All().clear();
    ExpandEverything(false, kFamilyFields);
    Lines known = InTable(tarn::KnownTopKeys(), KeyForm::kRequest);
    EXPECT_EQ(known.erase(Line("userMissing", KeyShape::kText)), 1u) << "the component reads it for the host";
    for (const KnownTest& test : tarn::KnownTests()) {
        if (test.requestName.empty()) continue;
        const std::string name(test.requestName);
        known.insert(Line(name, KeyShape::kObject));
        EXPECT_EQ(Read(name), InTable(test.keys, KeyForm::kRequest)) << name;
    }
    EXPECT_EQ(Read(kTop), known);
}

TEST(KnownKeys, OfAPlanHoldWhatARequestWritesIntoIt) {
    std::set<const KnownKey*> written;
    for (const bool isAutomatic : {false, true}) {
        for (const Names& related : {kFamilyFields, Names{"x", "y", "g", "h"}, Names{"low", "high"}}) {
            const QKSettings plan = ExpandEverything(isAutomatic, related);
            for (std::size_t i = 0; i < plan.Size(); ++i) {
                const QKSetting& setting = plan.GetSettingAt(i);
                const KnownTest* const test = tarn::FindKnownTest(setting.GetName(), KeyForm::kPlan);
                if (test == nullptr) {
                    EXPECT_NE(tarn::FindTopKey(setting.GetName(), KeyForm::kPlan), nullptr) << setting.GetName();
                    continue;
                }
                const auto& entry = static_cast<const QKSettingListValue&>(setting.GetValue()).GetListValue();
                for (const std::string& name : entry.GetSettingNames()) {
                    const KnownKey* const key = test->Find(name, KeyForm::kPlan);
                    ASSERT_NE(key, nullptr) << setting.GetName() << " " << name;
                    written.insert(key);
                }
            }
        }
    }
    std::set<std::string_view> writtenNames;
    for (const KnownKey* const key : written) writtenNames.insert(key->name);
    for (const KnownTest& test : tarn::KnownTests()) {
        for (const KnownKey& key : test.keys) {
            if (key.form != KeyForm::kWritten) continue;
            EXPECT_TRUE(writtenNames.contains(key.name)) << key.name;
        }
    }
}

// ---- Names ----

TEST(KnownKeys, HaveTheNamesOfTheList) {
    const auto userName = [](const char* planName) { return tarn::FindKnownTest(planName, KeyForm::kPlan)->userName; };
    EXPECT_EQ(userName("RSign"), "sign");
    EXPECT_EQ(userName("IMedian"), "median");
    EXPECT_EQ(userName("OKolmogorovSmirnovPoisson"), "kolmogorov-smirnov-poisson");
    EXPECT_EQ(userName("OEstimateConfidenceInterval"), "");
    for (const tarn::TestName& test : tarn::TestNames()) {
        const bool isOfFour = test.requestKey == "OKolmogorovSmirnov";
        EXPECT_EQ(tarn::FindKnownTest(test.requestKey, KeyForm::kRequest) == nullptr, isOfFour) << test.requestKey;
        EXPECT_EQ(tarn::FindKnownTest(test.resultName, KeyForm::kPlan) == nullptr, isOfFour) << test.resultName;
    }
    EXPECT_EQ(tarn::FindKnownTest("", KeyForm::kRequest), nullptr);
}

TEST(KnownKeys, StandInThePageOfTheCommandLine) {
    const std::string page = harness::ReadFile(harness::SourcePath("docs/command-line.md"));
    const auto shows = [&](std::string_view name) {
        return page.find("`" + std::string(name) + "`") != std::string::npos;
    };
    for (const KnownKey& key : tarn::KnownTopKeys()) EXPECT_TRUE(shows(key.name)) << key.name;
    for (const KnownTest& test : tarn::KnownTests()) {
        EXPECT_TRUE(shows(test.planName)) << test.planName;
        for (const KnownKey& key : test.keys) {
            if (key.form == KeyForm::kWritten) continue;
            EXPECT_TRUE(shows(key.name)) << key.name;
        }
    }
}

}  // namespace
