#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/common/QKSettings.h"
#include "platform/common/QKStatus.h"
#include "platform/common/QKVarList.h"
#include "selection/RequestedTest.h"
#include "vocabulary/TestFacts.h"

/// Translates a user's request into execution settings: from lists of fields and one entry per test to one
/// self-contained entry per test and field, or fields. Decides by the fields' kinds which test applies to which field,
/// lets `TARNAutoSelect` choose where the request says so, and collects a warning for what it had to leave out.
///
/// The entries of a family stand behind the key that starts it, so the order of the keys in the request is the order
/// of the entries. One object serves one expansion.
class TARNSettingsExpansion {
 public:
    using RenamedFields = std::map<std::string, std::string>;

    /// Borrows all for its life; none may be null. `renamed`: the name of an ordinal field's encoded copy, by the
    /// field's name.
    TARNSettingsExpansion(const QKSettings* request, const QKVarList* fields, QKSettings* execution,
                          const RenamedFields* renamed);

    /// Writes the execution settings. 220001 if no entry came of the request; anything else left out is a warning.
    QKStatus Expand();

 private:
    void ReadGlobalKey(const std::string& key);
    void SplitByKind(const std::vector<std::string>& fields, std::vector<std::string>& continuous,
                     std::vector<std::string>& categorical) const;

    // What the families have in common.
    bool SelectsAutomatically(const char* key, bool& isAutomatically, const char* family,
                              const std::vector<std::string>& fields, const std::string& group);
    bool WalkTests(std::size_t& position, const std::function<bool(const std::string& name)>& take) const;
    double NextTestIndex() { return ++testIndex; }
    QKSettings BeginEntry(const std::string& test, const std::string& field);
    QKSettings BeginEntry(const std::string& test, const std::vector<std::string>& fields);
    void Warn(long code, std::vector<std::string> arguments);
    static std::string Join(const std::vector<std::string>& names);
    void WarnOf(long code, const std::vector<std::string>& names);

    // What is known of a field.
    static constexpr int kUnknownField = 0;  // no kind has this number
    int KindOf(const std::string& field) const;
    bool IsOrdinal(const std::string& field) const;
    const std::string* FindEncodedName(const std::string& field) const;
    const std::string* FindOrigin(const std::string& encodedName) const;

    // One sample.
    struct OneSampleField;
    void ExpandOneSample(std::size_t& position);
    bool ExpandOneSampleTest(const std::string& name);
    void ExpandBinomial(const RequestedTest& test);
    void AddConfidenceInterval(const RequestedTest& test, const std::string& field, bool categorical);
    void ExpandChiSquare(const RequestedTest& test);
    void ExpandRuns(const RequestedTest& test);
    void ExpandKolmogorovSmirnov(const RequestedTest& test);
    void ExpandNumbers(const RequestedTest& test);
    std::optional<OneSampleField> AsContinuous(const std::string& field) const;
    void RejectField(const std::string& field);
    void WarnOfOneSample();

    // Related samples.
    void SplitRelatedFields();
    void ExpandRelated(std::size_t& position);
    bool ExpandRelatedTest(const std::string& name);
    std::vector<std::string> ContinuousGroup() const;
    void ExpandOver(const std::vector<std::string>& fields, const TestFacts& facts, const RequestedTest& test,
                    std::vector<std::string>& mismatch);
    void ExpandCategoricalGroup(const TestFacts& facts, const RequestedTest& test);
    void ExpandOverCategories(const std::vector<std::string>& fields, const TestFacts& facts, const RequestedTest& test,
                              std::vector<std::string>& mismatch);
    void WarnOfRelated();

    // Independent samples.
    void ExpandIndependent(std::size_t& position);
    void ResolveIndependent();
    void SplitIndependentByEncoding();
    void ExpandIndependentTest(const TestFacts& facts);
    void WarnOfIndependent();

    const QKSettings* modelSettings;
    QKSettings* executionSettings;
    const QKVarList* varList;
    std::vector<std::string> oneSampleFields;
    std::vector<std::string> oneSampleContinuous;
    std::vector<std::string> oneSampleCategorical;
    std::vector<std::string> rejectedFields;  // one-sample fields that a test couldn't take
    std::vector<std::string> relatedFields;
    std::vector<std::string> relatedContinuous;
    std::vector<std::string> relatedOrdinal;
    std::vector<std::string> relatedNominal;
    std::vector<std::string> independentFields;
    std::vector<std::string> independentContinuous;
    std::vector<std::string> independentCategorical;
    std::string groupVariable;
    bool isAutomaticallyOneSample = true;
    bool isAutomaticallyRelated = true;
    bool isAutomaticallyIndependent = true;
    std::int32_t testIndex = -1;
    QKStatus status;

 public:
    /// The warnings of `Expand`, in order, and beside each the texts that its message names.
    std::vector<QKStatus> warningCodes;
    std::vector<std::vector<std::string>> warningArguments;

 private:
    // A related test has asked for fields of that sort.
    bool continuousUsed = false;
    bool ordinalUsed = false;
    bool nominalUsed = false;
    std::vector<std::string> relatedTestsWithoutFields;
    std::vector<std::string> relatedContinuousMismatch;
    std::vector<std::string> relatedOrdinalMismatch;
    std::vector<std::string> relatedNominalMismatch;
    std::vector<std::string> rejectingTests;  // tests that rejected a one-sample field
    std::vector<std::string> oneSampleTestsWithoutFields;
    bool chiSquareSawContinuous = false;
    std::vector<const TestFacts*> independentTests;  // in the order of the request
    bool groupVariableUsable = false;
    bool independentHasCategorical = false;
    const RenamedFields* renamedFields;
};
