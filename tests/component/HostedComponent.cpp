#include "tests/component/HostedComponent.h"

#include <filesystem>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include "support/QKVecValue.h"
#include "tests/component/SettingsText.h"
#include "tests/harness/Command.h"

namespace component_test {

const TinyLibrary& Library() {
    static const TinyLibrary library = [] {
        TinyLibrary loaded;
        const char* const missing = tiny_load(TARN_LIBRARY_PATH, &loaded);
        EXPECT_EQ(missing, nullptr) << missing;
        return loaded;
    }();
    return library;
}

FreshLibrary::FreshLibrary() : TinyLibrary() {
#ifdef __SANITIZE_ADDRESS__
    __lsan_disable();
#endif
    static const harness::ScratchFolder folder;
    static int copies = 0;
    const std::string path = folder.Path("libtarn-" + std::to_string(++copies) + ".so");
    std::filesystem::copy_file(TARN_LIBRARY_PATH, path);
    const char* const missing = tiny_load(path.c_str(), this);
    EXPECT_EQ(missing, nullptr) << missing;
}

FreshLibrary::~FreshLibrary() {
#ifdef __SANITIZE_ADDRESS__
    __lsan_enable();
#endif
}

// ---- Documents ----

ModelText& ModelText::Continuous(const std::string& name, const std::string& more) {
    return Raw("<Field name=\"" + name + "\" storage=\"number\" level=\"continuous\" " + more + "/>");
}

ModelText& ModelText::Categories(const std::string& name, const std::string& level,
                                 const std::vector<std::string>& values, const std::string& storage) {
    Raw("<Field name=\"" + name + "\" storage=\"" + storage + "\" level=\"" + level + "\">");
    for (const std::string& value : values) Raw("<Category value=\"" + value + "\"/>");
    return Raw("</Field>");
}

ModelText& ModelText::Weight(const std::string& name) {
    return Continuous(name, "role=\"frequencyWeight\"");
}

ModelText& ModelText::Raw(const std::string& text) {
    fields_ += text;
    return *this;
}

ModelText& ModelText::Counts(const std::string& attributes) {
    counts_ = " " + attributes;
    return *this;
}

Request& Request::List(const std::string& key, const std::vector<std::string>& names) {
    AddVecSetting(settings_, key, names, true);
    return *this;
}

Request& Request::Text(const std::string& key, const std::string& value) {
    settings_.AddSetting(key, value);
    return *this;
}

Request& Request::SignTest() {
    QKSettings test;
    test.AddSetting("isSelected", true);
    settings_.AddSetting("isAutomaticallyRelated", false);
    settings_.AddSetting("RSign", test);
    settings_.AddSetting("done", true);
    return *this;
}

// ---- The fixture ----

HostedComponent::HostedComponent() {
    tiny_host_init(&host);
    library.initialise(&host.host);
}

HostedComponent::~HostedComponent() {
    if (component != nullptr) {
        library.endExecution(component, nullptr);
        library.destroy(component);
    }
    tiny_host_free(&host);
}

void HostedComponent::GivePair() {
    Give(Request().List("relatedVariables", {"before", "after"}).SignTest());
    const std::string model = ModelText().Continuous("before").Continuous("after").Build();
    GiveSource(model);
    GiveExecution(model);
    GiveRows({{1, 2}, {2, 4}, {3, 2}, {4, 4}});
}

void HostedComponent::Give(const Request& request) {
    Give(SettingsText(request.Settings()));
}

void HostedComponent::Give(const std::string& settings) {
    settings_ = settings;
    host.settings = settings_.c_str();
}

void HostedComponent::GiveSource(const std::string& model) {
    sourceModel_ = model;
    host.sourceModel = sourceModel_.c_str();
}

void HostedComponent::GiveExecution(const std::string& model) {
    executionModel_ = model;
    host.executionModel = executionModel_.c_str();
}

void HostedComponent::GiveRows(const std::vector<std::vector<double>>& rows) {
    values_.clear();
    for (const auto& row : rows) values_.insert(values_.end(), row.begin(), row.end());
    host.values = values_.data();
    host.recordCount = host.recordsOfLaterPasses = rows.size();
    host.fieldCount = rows.empty() ? 0 : rows.front().size();
}

unsigned HostedComponent::Create() {
    return library.create(&host.context, nullptr, &component, &errorCode);
}

unsigned HostedComponent::RunAll() {
    unsigned result = Create();
    if (result == HX_OK) result = Configure();
    if (result == HX_OK) result = Begin();
    return result;
}

std::string HostedComponent::TextOf(AskForText ask) {
    std::size_t needed = 0;
    const unsigned sized = ask(component, nullptr, 0, &needed, &errorCode);
    if (sized != HX_BUFFER_TOO_SMALL) return "(result " + std::to_string(sized) + ")";
    std::string text(needed, '?');
    EXPECT_EQ(ask(component, text.data(), text.size(), &needed, &errorCode), HX_OK);
    text.resize(needed - 1);
    return text;
}

}  // namespace component_test
