#pragma once

#include <string>

/// Debug output. It is off unless a program sets a sink.
class QKDisplay {
 public:
    using Sink = void (*)(const std::string& line);

    /// Lines go to `sink` from now on; null turns the output off.
    static void SetSink(Sink sink);

    static void DisplayI(const std::string& label, int value);
    static void DisplayS(const std::string& label, const std::string& value);
    static void DisplayText(const std::string& text);
};
