#include "contract/TARNTest.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

/// A test that does nothing, with its state open to view.
class OpenTest : public TARNTest {
 public:
    OpenTest() : TARNTest(std::make_unique<QKSettings>()) {}
    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override { return status; }
    QKStatus ProcessRecord(Record&) override { return status; }
    bool NeedsAnotherPass() override { return false; }
    QKStatus EndPass() override { return status; }
    void GetUsedVariables(std::vector<int>&) override {}
    QKXML::XMLElement* MakeResultElement() override { return nullptr; }

    using TARNTest::messages;
    using TARNTest::passesRemaining;
    using TARNTest::status;
};

const TestMessage kMessage{QKStatus(220903), MessageKind::kError, {"x", "y"}, {{"group", "a"}}};

}  // namespace

TEST(TARNTestTest, StartsWithoutErrorMessageOrPass) {
    OpenTest test;
    EXPECT_TRUE(test.status.IsOK());
    EXPECT_TRUE(test.messages.empty());
    EXPECT_EQ(test.passesRemaining, 0);
    EXPECT_EQ(test.GetPassKind(), 0);
}

TEST(TARNTestTest, GetPassKindIsTheNumberOfPassesThatRemain) {
    OpenTest test;
    test.passesRemaining = 3;
    EXPECT_EQ(test.GetPassKind(), 3);
}

TEST(TARNTestTest, AddingTheSameMessageTwiceLeavesOne) {
    OpenTest test;
    test.AddMessage(kMessage);
    test.AddMessage(TestMessage(kMessage));
    EXPECT_EQ(test.messages, (std::vector<TestMessage>{kMessage}));
}

TEST(TARNTestTest, AMessageThatDiffersInAnyPartIsAnother) {
    using Change = std::pair<const char*, void (*)(TestMessage&)>;
    const std::vector<Change> changes{
        {"code", [](TestMessage& m) { m.status = QKStatus(220904); }},
        {"warning flag of the status", [](TestMessage& m) { m.status = QKStatus(220903, true); }},
        {"kind", [](TestMessage& m) { m.kind = MessageKind::kWarning; }},
        {"first parameter", [](TestMessage& m) { m.params[0] = "z"; }},
        {"order of the parameters", [](TestMessage& m) { std::swap(m.params[0], m.params[1]); }},
        {"one parameter less", [](TestMessage& m) { m.params.pop_back(); }},
        {"no parameters", [](TestMessage& m) { m.params.clear(); }},
        {"name of a named parameter", [](TestMessage& m) { m.namedParams[0].first = "field"; }},
        {"value of a named parameter", [](TestMessage& m) { m.namedParams[0].second = "b"; }},
        {"no named parameters", [](TestMessage& m) { m.namedParams.clear(); }},
    };
    for (const auto& [what, change] : changes) {
        OpenTest test;
        TestMessage other = kMessage;
        change(other);
        test.AddMessage(kMessage);
        test.AddMessage(other);
        EXPECT_EQ(test.messages, (std::vector<TestMessage>{kMessage, other})) << what;
        test.AddMessage(kMessage);
        EXPECT_EQ(test.messages.size(), 2u) << what;
    }
}

TEST(TARNTestTest, OnlyAMessageOfKindErrorStopsTheTest) {
    struct Row {
        MessageKind kind;
        bool stops;
    };
    for (const Row& row :
         {Row{MessageKind::kError, true}, Row{MessageKind::kWarning, false}, Row{MessageKind::kHelpMessage, false}}) {
        OpenTest test;
        test.passesRemaining = 2;
        test.AddStatusMessage(QKStatus(220916), row.kind);
        EXPECT_EQ(test.status, row.stops ? QKStatus(220916) : QKStatus()) << static_cast<int>(row.kind);
        EXPECT_EQ(test.passesRemaining, row.stops ? 0 : 2) << static_cast<int>(row.kind);
        EXPECT_EQ(test.messages.size(), 1u);
    }
    EXPECT_EQ(static_cast<int>(MessageKind::kError), 0);
    EXPECT_EQ(static_cast<int>(MessageKind::kWarning), 1);
    EXPECT_EQ(static_cast<int>(MessageKind::kHelpMessage), 2);
}

TEST(TARNTestTest, AWarningBehindAnErrorLeavesTheError) {
    OpenTest test;
    test.AddStatusMessage(QKStatus(220903), MessageKind::kError);
    test.passesRemaining = 1;
    test.AddStatusMessage(QKStatus(220916), MessageKind::kHelpMessage);
    EXPECT_EQ(test.status, QKStatus(220903));
    EXPECT_EQ(test.passesRemaining, 1);
    test.AddStatusMessage(QKStatus(220918), MessageKind::kError);
    EXPECT_EQ(test.status, QKStatus(220918)) << "the last error is the test's status";
    EXPECT_EQ(test.passesRemaining, 0);
}

TEST(TARNTestTest, AnEqualErrorHasNoEffectAtAll) {
    OpenTest test;
    test.AddStatusMessage(QKStatus(220903), MessageKind::kError);
    test.status = QKStatus();
    test.passesRemaining = 2;
    test.AddStatusMessage(QKStatus(220903), MessageKind::kError);
    EXPECT_TRUE(test.status.IsOK());
    EXPECT_EQ(test.passesRemaining, 2);
}

TEST(TARNTestTest, AStatusMessageHasNoParameters) {
    OpenTest test;
    test.AddStatusMessage(QKStatus(220003), MessageKind::kWarning);
    EXPECT_EQ(test.messages, (std::vector<TestMessage>{{QKStatus(220003), MessageKind::kWarning, {}, {}}}));
}

TEST(TARNTestTest, AddMessagesAddsEachInOrder) {
    OpenTest test;
    const TestMessage warning{QKStatus(221217), MessageKind::kWarning, {}, {}};
    test.AddMessages({warning, kMessage, warning});
    EXPECT_EQ(test.messages, (std::vector<TestMessage>{warning, kMessage}));
    EXPECT_EQ(test.status, kMessage.status);
    test.AddMessages({});
    EXPECT_EQ(test.messages.size(), 2u);
}
