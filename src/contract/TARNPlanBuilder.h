#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "contract/TARNPlan.h"
#include "platform/common/QKSettings.h"
#include "platform/common/QKStatus.h"
#include "support/ComparisonRules.h"
#include "vocabulary/SettingKeys.h"

/// What a test has under "originVariableName": the name of one field, or a list of names.
enum class Origins { kOne, kSeveral };

/// Which of the run's levels a test's settings receive.
enum class CommonSettings { kSigLevel, kConfidenceLevel, kBothLevels };

/// The steps that all plan builders have in common. A plan builder makes one of these, reads the keys of its entry,
/// resolves the fields, writes the test's own settings, requests what the test needs, and hands the test over, in
/// error or not: a failed test stays in the plan and shows its error in the document.
class TARNPlanBuilder {
 public:
    /// Borrows both for its life. The test's settings get the levels and, with a weight, the weight field's index.
    TARNPlanBuilder(const QKSettings& entry, TARNPlan& plan, CommonSettings common);

    bool IsOK() const { return !status.IsError(); }
    /// Notes a failure. The last one of a message gives its code; every parameter is kept, in the order of arrival.
    void Fail(long code);
    void Fail(long code, const std::string& parameter);
    /// Ends the message of the failures so far: those that follow make one of their own, beside it.
    void EndMessage();

    /// Reads a key of the entry; false, with `out` unchanged, if it is absent or not convertible.
    template <typename T>
    bool Read(const char* key, T& out) const {
        return entry_.GetSettingValByName(key, out);
    }
    /// The indices of the named fields up to the first unknown one, which fails with its name.
    std::vector<int> ResolveFields(const std::vector<std::string>& names, long unknownField);

    /// The settings that the test will own.
    QKSettings& TestSettings() { return *settings; }

    /// Requests the frequencies of the fields under "originVariableName", from which the test's fields were made, so
    /// that the document can show them; a brief run shows none. Unknown names, and a setting of the other shape, are
    /// passed over.
    void RequestOriginFrequencies(Origins origins);

    /// Reads which comparison of its samples the entry asks for, and writes it into the test's settings, where
    /// `ComparisonRequest` finds it. `unsaid`: the code of an entry that doesn't say, where the rules make that a
    /// failure.
    void ReadComparison(const ComparisonRules& rules, long unsaid = 0);

    /// Makes the test over its settings, and over what else its constructor takes, and gives it to the worker in file
    /// order.
    template <typename Test, typename... Arguments>
    void AddToMainWorker(Arguments&&... arguments) {
        plan_.AddToMainWorker(MakeTest<Test>(std::forward<Arguments>(arguments)...));
    }
    /// The same for the worker sorted by `field`.
    template <typename Test, typename... Arguments>
    void AddToSortedWorker(int field, Arguments&&... arguments) {
        plan_.AddSortedTest(MakeTest<Test>(std::forward<Arguments>(arguments)...), field, status);
    }

 private:
    template <typename Test, typename... Arguments>
    std::unique_ptr<TARNTest> MakeTest(Arguments&&... arguments) {
        auto test = std::make_unique<Test>(std::move(settings), std::forward<Arguments>(arguments)...);
        EndMessage();
        test->AddMessages(messages);
        test->SetBrief(plan_.IsBrief());
        test->SetExtended(plan_.IsExtended());
        return test;
    }

    const QKSettings& entry_;
    TARNPlan& plan_;
    std::unique_ptr<QKSettings> settings;
    QKStatus status;
    /// The messages that are complete, and whether one more is being made, with its parameters.
    std::vector<TestMessage> messages;
    bool isMessageOpen = false;
    std::vector<std::string> parameters;
};
