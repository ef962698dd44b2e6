#include "platform/common/QKDisplay.h"

#include <atomic>

namespace {

std::atomic<QKDisplay::Sink> currentSink = nullptr;

void Emit(const std::string& line) {
    if (const QKDisplay::Sink sink = currentSink.load()) sink(line);
}

}  // namespace

void QKDisplay::SetSink(Sink sink) {
    currentSink = sink;
}
void QKDisplay::DisplayI(const std::string& label, int value) {
    Emit(label + ": " + std::to_string(value));
}
void QKDisplay::DisplayS(const std::string& label, const std::string& value) {
    Emit(label + ": " + value);
}
void QKDisplay::DisplayText(const std::string& text) {
    Emit(text);
}
