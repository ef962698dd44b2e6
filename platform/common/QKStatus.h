#pragma once

/// The outcome of an operation, by value: OK, a warning or an error, with the code that a host resolves to a text.
///
/// A failure moves upward by return; a status is never thrown. The default is OK, and so is code 0.
class [[nodiscard]] QKStatus {
 public:
    QKStatus() = default;
    explicit QKStatus(long code, bool isWarning = false) : code_(code), isWarning_(isWarning && code != 0) {}

    bool IsOK() const { return code_ == 0; }
    bool IsError() const { return code_ != 0 && !isWarning_; }
    bool IsWarning() const { return isWarning_; }
    long GetErrorCode() const { return code_; }

    friend bool operator==(const QKStatus&, const QKStatus&) = default;

 private:
    long code_ = 0;
    bool isWarning_ = false;
};
