#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/common/QKStatus.h"
#include "vocabulary/StatusCodes.h"

/// One message of a test: a status code with the parameters that its text will name.
struct TestMessage {
    QKStatus status;
    MessageKind kind = MessageKind::kError;
    std::vector<std::string> params;
    std::vector<std::pair<std::string, std::string>> namedParams;

    friend bool operator==(const TestMessage&, const TestMessage&) = default;
};
