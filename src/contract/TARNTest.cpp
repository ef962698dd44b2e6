#include "contract/TARNTest.h"

#include <algorithm>

int TARNTest::GetPassKind() {
    return passesRemaining;
}

void TARNTest::AddMessages(const std::vector<TestMessage>& added) {
    for (const TestMessage& message : added) AddMessage(message);
}

void TARNTest::AddMessage(const TestMessage& message) {
    if (std::find(messages.begin(), messages.end(), message) != messages.end()) return;
    messages.push_back(message);
    if (message.kind == MessageKind::kError) {
        status = message.status;
        passesRemaining = 0;
    }
}

void TARNTest::AddStatusMessage(const QKStatus& messageStatus, MessageKind kind) {
    AddMessage(TestMessage{messageStatus, kind, {}, {}});
}
