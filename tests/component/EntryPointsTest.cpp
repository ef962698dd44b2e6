// The library's functions as a host sees them: results on every path, null handles and short buffers included.

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <pugixml.hpp>
#include <string>
#include <thread>
#include <utility>

#include "tests/component/HostedComponent.h"
#include "tests/harness/AllocationFailure.h"
#include "tests/harness/Document.h"

namespace component_test {

namespace {

using EntryPoints = HostedComponent;

// ---- The library ----

TEST(Library, InitialiseOfNullIsABadHandleAndLeavesNoHost) {
    const FreshLibrary fresh;
    EXPECT_EQ(fresh.initialise(nullptr), HX_BAD_HANDLE);
    std::size_t needed = 99;
    int error = 0;
    EXPECT_EQ(fresh.getModuleInformation(nullptr, 0, &needed, &error), HX_NO_HOST_HELPER);
    EXPECT_EQ(needed, 99u);
}

TEST(Library, InitialiseOfNullKeepsTheHostThatIsThere) {
    const FreshLibrary fresh;
    TinyHost host;
    tiny_host_init(&host);
    EXPECT_EQ(fresh.initialise(&host.host), HX_OK);
    EXPECT_EQ(fresh.initialise(nullptr), HX_BAD_HANDLE);
    std::size_t needed = 0;
    EXPECT_EQ(fresh.getModuleInformation(nullptr, 0, &needed, nullptr), HX_BUFFER_TOO_SMALL);
    tiny_host_free(&host);
}

TEST(Library, AHostOfAnUnknownVersionIsNone) {
    const FreshLibrary fresh;
    TinyHost host;
    tiny_host_init(&host);
    for (const auto& [version, result] : {std::pair{0, HX_NO_HOST_HELPER},
                                          {1, HX_BUFFER_TOO_SMALL},
                                          {2, HX_BUFFER_TOO_SMALL},
                                          {3, HX_NO_HOST_HELPER}}) {
        host.host.interfaceVersion = version;
        EXPECT_EQ(fresh.initialise(&host.host), HX_OK);
        std::size_t needed = 0;
        EXPECT_EQ(fresh.getModuleInformation(nullptr, 0, &needed, nullptr), result) << version;
    }
    tiny_host_free(&host);
}

TEST(Library, AComponentMadeBeforeInitialiseHasNoHelper) {
    const FreshLibrary fresh;
    TinyHost host;
    tiny_host_init(&host);
    void* component = nullptr;
    int error = 0;
    ASSERT_EQ(fresh.create(&host.context, nullptr, &component, &error), HX_OK);
    EXPECT_EQ(fresh.configure(component, &error), HX_NO_HELPER);
    EXPECT_EQ(fresh.beginExecution(component, nullptr, &error), HX_NO_HELPER);
    EXPECT_EQ(fresh.endExecution(component, &error), HX_OK);
    EXPECT_EQ(fresh.destroy(component), HX_OK);
}

TEST(Library, CleanupIsGood) {
    EXPECT_EQ(Library().cleanup(), HX_OK);
}

TEST_F(EntryPoints, ModuleInformationNeedsRoomForTheZero) {
    std::size_t needed = 0;
    ASSERT_EQ(library.getModuleInformation(nullptr, 0, &needed, &errorCode), HX_BUFFER_TOO_SMALL);
    const std::size_t length = needed - 1;

    std::string buffer(length + 1, '?');
    needed = 0;
    EXPECT_EQ(library.getModuleInformation(buffer.data(), length, &needed, &errorCode), HX_BUFFER_TOO_SMALL);
    EXPECT_EQ(needed, length + 1);
    EXPECT_EQ(buffer, std::string(length + 1, '?')) << "a short buffer stays as it is";

    EXPECT_EQ(library.getModuleInformation(buffer.data(), length + 1, &needed, &errorCode), HX_OK);
    EXPECT_EQ(needed, length + 1);
    EXPECT_EQ(buffer.back(), '\0');
}

TEST_F(EntryPoints, ModuleInformationNamesTheModule) {
    char buffer[1000];
    std::size_t needed = 0;
    ASSERT_EQ(library.getModuleInformation(buffer, sizeof buffer, &needed, &errorCode), HX_OK);
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(buffer));
    const pugi::xml_node module = document.child("ModuleInformation").child("Module");
    EXPECT_STREQ(module.attribute("name").value(), "TARN");
    EXPECT_STREQ(module.attribute("provider").value(), "ZOMR");
    EXPECT_STREQ(module.attribute("version").value(), "1.0.0.0");
    EXPECT_STRNE(module.attribute("copyright").value(), "");
}

// ---- Null handles ----

TEST_F(EntryPoints, EveryFunctionAnswersANullComponentWithABadHandle) {
    std::size_t needed = 0;
    char buffer[8];
    void* value = nullptr;
    long long number = 0;
    long long* numbers = nullptr;
    EXPECT_EQ(library.configure(nullptr, &errorCode), 2u);
    EXPECT_EQ(library.getDataModel(nullptr, 0, buffer, 8, &needed, &errorCode), 2u);
    EXPECT_EQ(library.getExecutionRequirements(nullptr, buffer, 8, &needed, &errorCode), 2u);
    EXPECT_EQ(library.beginExecution(nullptr, nullptr, &errorCode), 2u);
    EXPECT_EQ(library.endExecution(nullptr, &errorCode), 2u);
    EXPECT_EQ(library.cancelExecution(nullptr, &errorCode), 2u);
    EXPECT_EQ(library.nextRecord(nullptr, &errorCode), 2u);
    EXPECT_EQ(library.getRecordValue(nullptr, 0, &value, &needed, &errorCode), 2u);
    EXPECT_EQ(library.getIteratorRequirements(nullptr, &number, &numbers, &number, &errorCode), 2u);
}

TEST_F(EntryPoints, GetMessagesAnswersANullComponentWithACodeOfItsOwn) {
    std::size_t needed = 0;
    EXPECT_EQ(library.getMessages(nullptr, nullptr, 0, &needed, &errorCode), 9u);
}

TEST_F(EntryPoints, DestroyOfNullIsABadHandle) {
    EXPECT_EQ(library.destroy(nullptr), 2u);
}

TEST_F(EntryPoints, ANullContextFailsTheConfiguration) {
    ASSERT_EQ(library.create(nullptr, nullptr, &component, &errorCode), HX_OK);
    EXPECT_EQ(Configure(), HX_CONFIGURATION_FAILED);
    EXPECT_EQ(errorCode, HX_ERROR_SETTINGS);
    EXPECT_EQ(Begin(), HX_BAD_HANDLE);
}

TEST_F(EntryPoints, NoFunctionNeedsAPlaceForTheErrorCode) {
    GivePair();
    ASSERT_EQ(library.create(&host.context, nullptr, &component, nullptr), HX_OK);
    EXPECT_EQ(library.configure(component, nullptr), HX_OK);
    EXPECT_EQ(library.beginExecution(component, nullptr, nullptr), HX_OK);
    EXPECT_EQ(library.endExecution(component, nullptr), HX_OK);
    EXPECT_EQ(library.getMessages(component, nullptr, 0, nullptr, nullptr), HX_BUFFER_TOO_SMALL);
}

// ---- Creation ----

TEST_F(EntryPoints, AFailedAllocationOfAComponentHasItsErrorCode) {
    int untouched = 0;
    component = &untouched;
    unsigned result = HX_OK;
    {
        const AllocationFailure failure(0);
        result = library.create(&host.context, nullptr, &component, &errorCode);
    }
    EXPECT_EQ(result, 1u);
    EXPECT_EQ(errorCode, 240001);
    EXPECT_EQ(component, &untouched);
    component = nullptr;
}

// ---- Configuration ----

TEST_F(EntryPoints, ConfigureDeclaresTheOutputAndAnswersWithTheHostsAnswer) {
    GivePair();
    ASSERT_EQ(Create(), HX_OK);
    EXPECT_EQ(Configure(), HX_OK);
    EXPECT_STREQ(host.calls, "DeclareOutputs ");
    EXPECT_EQ(host.declaredKind, 21);
    EXPECT_EQ(host.declaredCount, 1);

    host.failure = TINY_DECLARE_OUTPUTS;
    EXPECT_EQ(Configure(), unsigned{TINY_FAILURE_RESULT});
    EXPECT_EQ(errorCode, TINY_FAILURE_CODE);
}

TEST_F(EntryPoints, AFailedConfigurationDeclaresNothing) {
    GivePair();
    Give(Request());
    ASSERT_EQ(Create(), HX_OK);
    EXPECT_EQ(Configure(), HX_CONFIGURATION_FAILED);
    EXPECT_STREQ(host.calls, "");
}

TEST_F(EntryPoints, RequirementsAreThereOnceConfigured) {
    GivePair();
    ASSERT_EQ(Create(), HX_OK);
    EXPECT_EQ(Requirements(), "(result 1)");
    EXPECT_EQ(errorCode, HX_ERROR_NO_REQUIREMENTS);
    ASSERT_EQ(Configure(), HX_OK);
    EXPECT_NE(Requirements().find("<Execution>"), std::string::npos);
}

TEST_F(EntryPoints, ShortBuffersStayAsTheyAre) {
    GivePair();
    ASSERT_EQ(Create(), HX_OK);
    ASSERT_EQ(Configure(), HX_OK);
    for (const auto ask : {library.getExecutionRequirements, library.getMessages}) {
        std::size_t needed = 0;
        ASSERT_EQ(ask(component, nullptr, 0, &needed, &errorCode), HX_BUFFER_TOO_SMALL);
        std::string buffer(needed, '?');
        EXPECT_EQ(ask(component, buffer.data(), needed - 1, &needed, &errorCode), HX_BUFFER_TOO_SMALL);
        EXPECT_EQ(needed, buffer.size());
        EXPECT_EQ(buffer, std::string(needed, '?'));
        EXPECT_EQ(ask(component, buffer.data(), needed, &needed, &errorCode), HX_OK);
    }
}

TEST_F(EntryPoints, TheOutputHasOneDataModelWithoutFields) {
    ASSERT_EQ(Create(), HX_OK);
    char buffer[200];
    std::size_t needed = 0;
    ASSERT_EQ(library.getDataModel(component, 0, buffer, sizeof buffer, &needed, &errorCode), HX_OK);
    EXPECT_NE(std::string(buffer).find("<DataModel/>"), std::string::npos) << buffer;
    EXPECT_EQ(library.getDataModel(component, 1, buffer, sizeof buffer, &needed, &errorCode), HX_FAILED);
    EXPECT_EQ(errorCode, HX_ERROR_DATA_MODEL);
}

TEST_F(EntryPoints, OneInputIsReadAsOftenAsTheTestsAsk) {
    ASSERT_EQ(Create(), HX_OK);
    long long inputs = 0;
    long long count = 0;
    long long* passes = nullptr;
    ASSERT_EQ(library.getIteratorRequirements(component, &inputs, &passes, &count, &errorCode), HX_OK);
    EXPECT_EQ(inputs, 1);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(passes[0], -1);
}

// ---- Execution ----

TEST_F(EntryPoints, AFailedIteratorCallIsABadHandle) {
    GivePair();
    ASSERT_EQ(Create(), HX_OK);
    ASSERT_EQ(Configure(), HX_OK);
    host.failure = TINY_GET_ITERATOR;
    EXPECT_EQ(Begin(), 2u);
    EXPECT_EQ(errorCode, TINY_FAILURE_CODE);
}

TEST_F(EntryPoints, ThereAreNoOutputRecords) {
    GivePair();
    ASSERT_EQ(RunAll(), HX_OK);
    void* value = &host;
    std::size_t size = 1;
    EXPECT_EQ(library.nextRecord(component, &errorCode), HX_NO_MORE_RECORDS);
    EXPECT_EQ(library.getRecordValue(component, 0, &value, &size, &errorCode), HX_NO_MORE_RECORDS);
    EXPECT_EQ(value, nullptr);
    EXPECT_EQ(size, 0u);
}

TEST_F(EntryPoints, EndExecutionClearsTheErrorCode) {
    GivePair();
    ASSERT_EQ(RunAll(), HX_OK);
    errorCode = 5;
    EXPECT_EQ(End(), HX_OK);
    EXPECT_EQ(errorCode, 0);
}

/// A host that cancels from a thread of its own as soon as it hears of progress.
struct CancelOnProgress {
    const TinyLibrary* library;
    void* component;
    static void Call(void* user) {
        auto* self = static_cast<CancelOnProgress*>(user);
        std::thread([self] {
            int error = 0;
            EXPECT_EQ(self->library->cancelExecution(self->component, &error), HX_OK);
        }).join();
    }
};

TEST_F(EntryPoints, ACancelDuringAnExecutionEndsItUntilItIsEnded) {
    GivePair();
    ASSERT_EQ(Create(), HX_OK);
    ASSERT_EQ(Configure(), HX_OK);
    CancelOnProgress cancel{&library, component};
    host.onProgress = CancelOnProgress::Call;
    host.user = &cancel;
    EXPECT_EQ(Begin(), HX_FAILED);
    EXPECT_STREQ(host.messages, "3 1\n");
    EXPECT_EQ(Document(), "(none)");

    host.onProgress = nullptr;
    EXPECT_EQ(Begin(), HX_FAILED) << "a cancel holds until the execution is ended";
    EXPECT_EQ(End(), HX_OK);
    EXPECT_EQ(Begin(), HX_OK);
}

std::ptrdiff_t ChildCount(const pugi::xml_node& node) {
    return std::distance(node.begin(), node.end());
}

/// One allocation fails, or that one and all after it.
class ExhaustedMemory : public HostedComponent, public testing::WithParamInterface<bool> {};

INSTANTIATE_TEST_SUITE_P(, ExhaustedMemory, testing::Values(false, true),
                         [](const auto& kind) { return kind.param ? "ForGood" : "Once"; });

TEST_P(ExhaustedMemory, BecomesAResultWhereverItComes) {
    GivePair();
    bool reachedTheEnd = false;
    for (long successes = 0; !reachedTheEnd; ++successes) {
        SCOPED_TRACE(successes);
        host.messages[0] = host.calls[0] = '\0';
        void* made = nullptr;
        unsigned result = HX_OK;
        {
            const AllocationFailure failure(successes, GetParam());
            result = library.create(&host.context, nullptr, &made, &errorCode);
            if (result == HX_OK) result = library.configure(made, &errorCode);
            if (result == HX_OK) result = library.beginExecution(made, &host.progress, &errorCode);
            reachedTheEnd = !AllocationFailure::HasFailed();
        }
        if (result == HX_OK) {
            // What a test could not allocate is an error of that test, told in the document; the document is whole.
            const harness::Document document(Document());
            EXPECT_EQ(document.TestCount(), 1);
            EXPECT_STREQ(document.Root().child("DataDictionary").attribute("numberOfFields").value(), "2");
            EXPECT_EQ(ChildCount(document.Root().child("DataDictionary")), 2);
            EXPECT_TRUE(document.Root().child("PMMLModel").child("PredictiveSummary"));
            EXPECT_EQ(ChildCount(document.Output().child("DataDictionary")), 2);
            EXPECT_EQ(ChildCount(document.Output().child("FieldInfos")), 2);
        } else {
            EXPECT_EQ(Document(), "(none)");
        }
        tiny_host_free(&host);
        if (made == nullptr) continue;
        EXPECT_EQ(library.endExecution(made, &errorCode), HX_OK);
        EXPECT_EQ(library.destroy(made), HX_OK);
    }
}

TEST(Library, FunctionsCanBeCalledInTheirOrderByAHostInC) {
    const FreshLibrary fresh;
    const std::string model = ModelText().Continuous("before").Continuous("after").Build();
    const double values[] = {1, 2, 2, 4, 3, 2, 4, 4};
    TinyHost host;
    tiny_host_init(&host);
    host.settings =
        "<Settings>"
        "<Setting name='relatedVariables' kind='stringVector'><Element value='before'/><Element value='after'/>"
        "</Setting>"
        "<Setting name='isAutomaticallyRelated' kind='bool' value='false'/>"
        "<Setting name='RSign' kind='list'><Setting name='isSelected' kind='bool' value='true'/></Setting>"
        "<Setting name='done' kind='bool' value='true'/>"
        "</Settings>";
    host.sourceModel = host.executionModel = model.c_str();
    host.values = values;
    host.recordCount = host.recordsOfLaterPasses = 4;
    host.fieldCount = 2;
    EXPECT_EQ(tiny_host_run(&fresh, &host), 0);
    ASSERT_NE(host.content, nullptr);
    EXPECT_NE(std::string(host.content).find("<Algorithm name=\"RSign\""), std::string::npos);
    tiny_host_free(&host);
}

}  // namespace

}  // namespace component_test
