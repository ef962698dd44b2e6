#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/common/QKMV.h"
#include "platform/common/QKSettings.h"
#include "tests/component/tiny_host.h"

namespace component_test {

inline constexpr double kNone = QKMV::Missing();

/// The library under test, loaded once.
const TinyLibrary& Library();
/// A copy of the library of its own, to which no host was given yet. What is allocated while it lives is no leak: what
/// a destroyed component keeps by definition can't be told by the names of functions here, since the copy is gone when
/// leaks are looked at.
class FreshLibrary : public TinyLibrary {
 public:
    FreshLibrary();
    FreshLibrary(const FreshLibrary&) = delete;
    FreshLibrary& operator=(const FreshLibrary&) = delete;
    ~FreshLibrary();
};

/// Writes a data model document, field by field.
class ModelText {
 public:
    ModelText& Continuous(const std::string& name, const std::string& more = "");
    ModelText& Categories(const std::string& name, const std::string& level, const std::vector<std::string>& values,
                          const std::string& storage = "number");
    ModelText& Weight(const std::string& name);
    ModelText& Raw(const std::string& text);
    /// Attributes of the root, as they stand in the text.
    ModelText& Counts(const std::string& attributes);

    std::string Build() const { return "<DataModel" + counts_ + ">" + fields_ + "</DataModel>"; }

 private:
    std::string counts_;
    std::string fields_;
};

/// A request: lists of fields and the sign test, which is selected.
class Request {
 public:
    Request& List(const std::string& key, const std::vector<std::string>& names);
    Request& Text(const std::string& key, const std::string& value);
    Request& SignTest();

    const QKSettings& Settings() const { return settings_; }

 private:
    QKSettings settings_;
};

/// A component behind the library's functions, with the tiny host in front of it.
class HostedComponent : public testing::Test {
 protected:
    HostedComponent();
    ~HostedComponent() override;

    /// A pair of continuous fields with a sign test and four records.
    void GivePair();
    void Give(const Request& request);
    void Give(const std::string& settings);
    void GiveSource(const std::string& model);
    void GiveExecution(const std::string& model);
    void GiveRows(const std::vector<std::vector<double>>& rows);

    unsigned Create();
    unsigned Configure() { return library.configure(component, &errorCode); }
    unsigned Begin() { return library.beginExecution(component, &host.progress, &errorCode); }
    unsigned End() { return library.endExecution(component, &errorCode); }
    /// Creates, configures and executes; the result of the first call that fails.
    unsigned RunAll();

    std::string Requirements() { return TextOf(library.getExecutionRequirements); }
    std::string Messages() { return TextOf(library.getMessages); }
    std::string Document() const { return host.content != nullptr ? host.content : "(none)"; }

    const TinyLibrary& library = Library();
    TinyHost host;
    void* component = nullptr;
    int errorCode = 0;

 private:
    using AskForText = unsigned (*)(void*, char*, size_t, size_t*, int*);
    std::string TextOf(AskForText ask);

    std::string settings_;
    std::string sourceModel_;
    std::string executionModel_;
    std::vector<double> values_;
};

}  // namespace component_test
