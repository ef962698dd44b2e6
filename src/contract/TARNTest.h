#pragma once

#include <memory>
#include <vector>

#include "machine/WorkShare.h"
#include "platform/common/QKSettings.h"
#include "platform/common/QKStatus.h"
#include "platform/common/QKXML.h"
#include "platform/common/Record.h"
#include "support/Arithmetic.h"
#include "support/TestMessage.h"
#include "support/UnivariateResults.h"
#include "vocabulary/DefaultLevels.h"

/// The base of all tests: one object per requested test and its fields. A worker drives it through passes over the
/// data in this order: `SetUnivariateResults`; then per pass `BeginPass`, `GetUsedVariables`, `ProcessRecord` for
/// each record that the test may see, `EndPass`, `NeedsAnotherPass`; at last `MakeResultElement`. The order of the
/// virtual operations is fixed.
///
/// An operation that fails returns a status. Code 220012 stops the whole run; any other error takes the test out of
/// the rest of the pass. A test enters its error state by a message of kind error, and an error without a message
/// is a mistake, since the result element ends at the messages alone. The error stays in the test: it still answers
/// `MakeResultElement`.
class TARNTest {
 public:
    virtual ~TARNTest() = default;
    TARNTest(const TARNTest&) = delete;
    TARNTest& operator=(const TARNTest&) = delete;

    /// Called once before the first pass. The results are borrowed and outlive the passes.
    virtual void SetUnivariateResults(UnivariateResults* results) = 0;
    /// Prepares the counters of a pass and sets `passesRemaining`; the first one reads the settings and validates
    /// them.
    virtual QKStatus BeginPass() = 0;
    virtual QKStatus ProcessRecord(Record& record) = 0;
    /// Asked after each pass, of a test in error as well.
    virtual bool NeedsAnotherPass() = 0;
    /// Where a test computes. Called only if the pass began well and no record failed.
    virtual QKStatus EndPass() = 0;
    /// Appends the fields whose missing values keep a record from this test. With none the test gets only records
    /// that miss nothing at all.
    virtual void GetUsedVariables(std::vector<int>& fieldIndices) = 0;
    /// The caller owns the element.
    virtual QKXML::XMLElement* MakeResultElement() = 0;
    /// Despite its name the number of passes that the test still expects, as an estimate for progress.
    virtual int GetPassKind();
    virtual void AddMessages(const std::vector<TestMessage>& added);
    /// Adds a message unless an equal one is there. One of kind error puts the test into its error state.
    virtual void AddMessage(const TestMessage& message);
    virtual void AddStatusMessage(const QKStatus& messageStatus, MessageKind kind);
    /// Says that no histogram, no box and no outlier is wanted: a test that makes any leaves it out of its element, and
    /// has no pass for it.
    void SetBrief(bool brief) { isBrief = brief; }
    /// Says in which of the two ways of `Arithmetic` the test computes. Called before the first pass.
    void SetExtended(bool extended) { arithmetic.Extend(extended); }
    const Arithmetic& GetArithmetic() const { return arithmetic; }
    /// The threads of the run, and the question whether to stop, for work that takes longer than some milliseconds.
    /// Called before the first pass; borrowed, and needed until the last pass has ended.
    void SetWork(const WorkShare* share) { work = share; }

 protected:
    /// A constructor only stores its settings.
    explicit TARNTest(std::unique_ptr<QKSettings> testSettings) : settings(std::move(testSettings)) {}

    std::unique_ptr<QKSettings> settings;
    QKStatus status;
    std::vector<TestMessage> messages;
    int passesRemaining = 0;
    bool isBrief = false;
    Arithmetic arithmetic;
    const WorkShare* work = nullptr;  // null for a test that is driven without a run
};
