// Executions: the order of what can fail, what the host is told, and the document that it is given.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "tests/component/HostedComponent.h"
#include "tests/harness/AllocationFailure.h"
#include "tests/harness/Document.h"

namespace component_test {

namespace {

class Execution : public HostedComponent {
 protected:
    Execution() { GivePair(); }
};

// ---- A good run ----

TEST_F(Execution, TheHostIsCalledInOrderAndGetsOneFile) {
    ASSERT_EQ(RunAll(), HX_OK);
    EXPECT_STREQ(host.calls,
                 "DeclareOutputs GetInputIterator GetModelId OpenOutputContainer SetMetadata PutString Close ");
    EXPECT_STREQ(host.containerName, "Tabulon");
    EXPECT_EQ(host.containerMode, 1);
    EXPECT_STREQ(host.mimeType, "application/vnd.zomr.stat+xml");
    EXPECT_STREQ(host.fileName, "TARNtabulon.xml");
    EXPECT_EQ(host.closedCount, 1);
    EXPECT_STREQ(host.messages, "");
}

TEST_F(Execution, TheDocumentHoldsTheTestsOfTheRequest) {
    ASSERT_EQ(RunAll(), HX_OK);
    const harness::Document document(Document());
    ASSERT_EQ(document.TestCount(), 1);
    EXPECT_EQ(document.Test(0).Attribute("name"), "RSign");
    EXPECT_EQ(document.Test(0).Sub("StatisticsResult").Row("TotalN"), "4");
    EXPECT_STREQ(document.Root().attribute("xmlns").value(), "urn:tarn:tabulon:1.0");
    EXPECT_STREQ(document.Root().attribute("xmlns:xsi").value(), "http://www.w3.org/2001/XMLSchema-instance");
    EXPECT_STREQ(document.Root().attribute("version").value(), "1.0");
    EXPECT_STRNE(document.Root().attribute("xsi:schemaLocation").value(), "");
}

TEST_F(Execution, ProgressGoesToTheHostOnAScaleOfAHundred) {
    ASSERT_EQ(RunAll(), HX_OK);
    EXPECT_GT(host.progressCount, 0);
    EXPECT_EQ(host.lastTotal, 100.0);
    EXPECT_EQ(host.lastStep, 90.0);
    EXPECT_EQ(host.lastSecondsLeft, -1);
}

TEST_F(Execution, TheHostsInformationStandsInTheHeader) {
    host.applicationName = "Tiny";
    host.applicationVersion = "2.1";
    host.copyright = "nobody";
    ASSERT_EQ(RunAll(), HX_OK);
    const harness::Document document(Document());
    const pugi::xml_node header = document.Output().child("Header");
    EXPECT_STREQ(header.attribute("copyright").value(), "nobody");
    EXPECT_STREQ(header.child("Application").attribute("name").value(), "Tiny");
    EXPECT_STREQ(header.child("Application").attribute("version").value(), "2.1");
}

TEST_F(Execution, AHostThatTellsNothingOfItselfGetsTheFixedHeader) {
    host.host.GetInformation = nullptr;
    ASSERT_EQ(RunAll(), HX_OK);
    const harness::Document document(Document());
    const pugi::xml_node header = document.Output().child("Header");
    EXPECT_STREQ(header.attribute("copyright").value(), "TARN");
    EXPECT_STREQ(header.child("Application").attribute("name").value(), "NonparametricTests");
    EXPECT_FALSE(header.child("Application").attribute("version"));
}

TEST_F(Execution, TheModelIdIsTheHosts) {
    host.modelId = 12;
    ASSERT_EQ(RunAll(), HX_OK);
    const harness::Document document(Document());
    EXPECT_STREQ(document.Root().child("PMMLModel").attribute("modelID").value(), "12");
}

TEST_F(Execution, WithoutAModelIdItIsZero) {
    host.modelId = 12;
    host.failure = TINY_GET_MODEL_ID;
    ASSERT_EQ(RunAll(), HX_OK);
    EXPECT_EQ(errorCode, 0);
    const harness::Document document(Document());
    EXPECT_STREQ(document.Root().child("PMMLModel").attribute("modelID").value(), "0");
}

TEST_F(Execution, TheCountsAreThoseOfThePreparedData) {
    GiveExecution(ModelText()
                      .Counts("totalCount='9' totalFreq='10.5' droppedCount='3' droppedFreq='4' badWeightCount='2'")
                      .Continuous("before")
                      .Continuous("after")
                      .Build());
    ASSERT_EQ(RunAll(), HX_OK);
    const harness::Document document(Document());
    const pugi::xml_node counts = document.Root().child("DescriptiveModel").child("DescriptiveSummary").child("Counts");
    EXPECT_STREQ(counts.attribute("totalFreq").value(), "10.5");
    EXPECT_STREQ(counts.attribute("totalCount").value(), "9");
    EXPECT_STREQ(counts.attribute("droppedCount").value(), "3");
    EXPECT_STREQ(counts.attribute("badWeightCount").value(), "2");
    EXPECT_STREQ(counts.attribute("droppedFreq").value(), "4");
}

TEST_F(Execution, TheSizeOfTheHostsBlocksDoesNotShow) {
    ASSERT_EQ(RunAll(), HX_OK);
    const std::string first = Document();
    for (const std::size_t size : {std::size_t{1}, std::size_t{4}, std::size_t{100}}) {
        ASSERT_EQ(End(), HX_OK);
        host.blockSize = size;
        ASSERT_EQ(Begin(), HX_OK);
        EXPECT_EQ(Document(), first);
    }
}

TEST_F(Execution, ASecondExecutionNeedsNoNewConfiguration) {
    ASSERT_EQ(RunAll(), HX_OK);
    const std::string first = Document();
    ASSERT_EQ(End(), HX_OK);
    ASSERT_EQ(Begin(), HX_OK);
    EXPECT_EQ(Document(), first);
    EXPECT_EQ(host.closedCount, 2);
}

TEST_F(Execution, AnExecutionMayFollowOneThatWasNotEnded) {
    ASSERT_EQ(RunAll(), HX_OK);
    const std::string first = Document();
    ASSERT_EQ(Begin(), HX_OK);
    EXPECT_EQ(Document(), first);
}

TEST_F(Execution, TwoComponentsGiveTheSameDocument) {
    ASSERT_EQ(RunAll(), HX_OK);
    const std::string first = Document();
    void* other = nullptr;
    ASSERT_EQ(library.create(&host.context, nullptr, &other, &errorCode), HX_OK);
    ASSERT_EQ(library.configure(other, &errorCode), HX_OK);
    ASSERT_EQ(library.beginExecution(other, &host.progress, &errorCode), HX_OK);
    EXPECT_EQ(Document(), first);
    ASSERT_EQ(End(), HX_OK);
    ASSERT_EQ(Begin(), HX_OK);
    EXPECT_EQ(Document(), first);
    EXPECT_EQ(library.endExecution(other, &errorCode), HX_OK);
    EXPECT_EQ(library.destroy(other), HX_OK);
}

TEST_F(Execution, AComponentStaysWithTheHostForWhichItWasMade) {
    host.applicationName = "made for";
    TinyHost later;
    tiny_host_init(&later);
    later.applicationName = "told of later";
    HXHost given = host.host;
    ASSERT_EQ(library.initialise(&given), HX_OK);
    ASSERT_EQ(Create(), HX_OK);
    ASSERT_EQ(library.initialise(&later.host), HX_OK);
    given = HXHost{};  // as it is with a host whose memory went back
    ASSERT_EQ(Configure(), HX_OK);
    ASSERT_EQ(Begin(), HX_OK);
    const harness::Document document(Document());
    const pugi::xml_node application = document.Output().child("Header").child("Application");
    EXPECT_STREQ(application.attribute("name").value(), "made for");
    tiny_host_free(&later);
}

// ---- Failures, in their order ----

TEST_F(Execution, AComponentThatIsNotConfiguredHasNoTest) {
    ASSERT_EQ(Create(), HX_OK);
    EXPECT_EQ(Begin(), HX_FAILED);
    EXPECT_STREQ(host.messages, "3 220001\n");
}

TEST_F(Execution, ADataModelThatIsNotWellFormedFailsTheExecution) {
    GiveExecution("<DataModel>");
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, HX_ERROR_DATA_MODEL);
    EXPECT_STREQ(host.messages, "3 240003\n");
    host.messageAnswer = 42;
    EXPECT_EQ(Begin(), 42u);
}

TEST_F(Execution, ADataModelOfFieldsThatCantBeIs240004) {
    for (const char* model : {"<DataModel><Field/></DataModel>", "<DataModel totalCount='many'/>",
                              "<DataModel droppedFreq='few'/>", "<DataModel badWeightCount='-1'/>"}) {
        SCOPED_TRACE(model);
        GiveExecution(model);
        host.messages[0] = '\0';
        if (component == nullptr) {
            EXPECT_EQ(RunAll(), HX_FAILED);
        } else {
            EXPECT_EQ(Begin(), HX_FAILED);
        }
        EXPECT_EQ(errorCode, 240004);
        EXPECT_STREQ(host.messages, "3 240004\n");
    }
}

TEST_F(Execution, ARequestWithoutTestIs220001) {
    Give(Request().List("relatedVariables", {"before", "after"}));
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_STREQ(host.messages, "3 220001\n");
    EXPECT_EQ(Document(), "(none)");
    host.messageAnswer = 42;
    EXPECT_EQ(Begin(), 42u);
}

TEST_F(Execution, AnInputWithNoRecordsIs240037EvenThoughTheRunHadFailedWith220003) {
    GiveRows({});
    host.fieldCount = 2;
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, 240037);
    EXPECT_STREQ(host.messages, "3 240037\n");
    host.messageAnswer = 42;
    EXPECT_EQ(Begin(), 42u);
}

TEST_F(Execution, AnIteratorThatFailsAtOnceDeliversNoRecord) {
    for (const TinyFailure failure : {TINY_REWIND, TINY_NEXT_BLOCK}) {
        host.failure = failure;
        host.messages[0] = '\0';
        EXPECT_EQ(component == nullptr ? RunAll() : Begin(), HX_FAILED);
        EXPECT_EQ(errorCode, 240037);
        EXPECT_STREQ(host.messages, "3 240037\n");
    }
}

TEST_F(Execution, RecordsThatBreakOffFailTheRun) {
    host.failure = TINY_SECOND_BLOCK;
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, TINY_FAILURE_CODE);
    EXPECT_EQ(Document(), "(none)");
}

TEST_F(Execution, TheRecordsAreReadOnce) {
    ASSERT_EQ(RunAll(), HX_OK);
    EXPECT_EQ(host.passes, 1);
}

TEST_F(Execution, ALaterPassWithOtherRecordsFailsTheRun) {
    // Where a value is no number, the passes of a test read the stream itself.
    GiveRows({{1, 2}, {std::nan(""), 4}, {3, 1}, {5, 5}});
    ASSERT_EQ(RunAll(), HX_OK);
    EXPECT_EQ(host.passes, 3);
    const std::string first = Document();
    for (const std::size_t size : {std::size_t{3}, std::size_t{2}}) {
        host.passes = 0;
        host.recordsOfLaterPasses = size;
        EXPECT_EQ(Begin(), HX_FAILED);
        EXPECT_EQ(errorCode, HX_ERROR_RECORDS);
    }
    host.passes = 0;
    host.recordCount = 3;
    host.recordsOfLaterPasses = 4;
    EXPECT_EQ(Begin(), HX_FAILED);
    EXPECT_EQ(errorCode, HX_ERROR_RECORDS);
    EXPECT_EQ(Document(), first);
}

TEST_F(Execution, RecordsOfAnotherWidthDontFitTheModel) {
    GiveRows({{1, 2, 3}, {4, 5, 6}});
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, 240038);
    EXPECT_STREQ(host.messages, "3 240038\n");
    EXPECT_EQ(Document(), "(none)");
}

TEST_F(Execution, AnUnknownCategoryInTheFirstBlockDoesntFitTheModel) {
    GiveExecution(
        ModelText().Continuous("before").Continuous("after").Categories("c", "nominal", {"a", "b"}, "string").Build());
    GiveRows({{1, 2, 2}, {1, 2, 1}});
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, 240038);
    EXPECT_STREQ(host.messages, "3 240038\n");
}

TEST_F(Execution, RecordsWithoutValuesDontFitTheModel) {
    host.iterator.NextBlock = [](void*, const double** values, size_t* recordCount, size_t*, int*) {
        *values = nullptr;
        *recordCount = 2;
        return unsigned{HX_OK};
    };
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, 240038);
}

TEST_F(Execution, ACodeThatTheHostGaveWithRecordsThatDontFitIsTheReason) {
    GiveRows({{1, 2, 3}, {4, 5, 6}});
    host.iterator.NextBlock = [](void* handle, const double** values, size_t* recordCount, size_t* fieldCount,
                                 int* code) {
        const auto* tiny = static_cast<const TinyHost*>(handle);
        *values = tiny->values;
        *recordCount = tiny->recordCount;
        *fieldCount = tiny->fieldCount;
        *code = TINY_FAILURE_CODE;
        return unsigned{HX_OK};
    };
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, TINY_FAILURE_CODE);
}

TEST_F(Execution, ACallThatFailsBeforeAnyRecordDeliversNoneWhateverItGave) {
    host.iterator.NextBlock = [](void* handle, const double** values, size_t* recordCount, size_t* fieldCount,
                                 int* code) {
        const auto* tiny = static_cast<const TinyHost*>(handle);
        *values = tiny->values;
        *recordCount = tiny->recordCount;
        *fieldCount = tiny->fieldCount;
        *code = TINY_FAILURE_CODE;
        return unsigned{TINY_FAILURE_RESULT};
    };
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, 240037);
    EXPECT_STREQ(host.messages, "3 240037\n");
}

TEST_F(Execution, ACategoryThatTheModelLacksFailsTheRun) {
    GiveExecution(
        ModelText().Continuous("before").Continuous("after").Categories("c", "nominal", {"a", "b"}, "string").Build());
    GiveRows({{1, 2, 0}, {1, 2, 1}, {1, 2, -1}, {1, 2, 1}});
    ASSERT_EQ(RunAll(), HX_OK);
    for (const double category : {2.0, 0.5, -2.0, kNone}) {
        SCOPED_TRACE(category);
        GiveRows({{1, 2, 0}, {1, 2, 1}, {1, 2, -1}, {1, 2, category}});
        host.passes = 0;
        EXPECT_EQ(Begin(), HX_FAILED);
        EXPECT_EQ(errorCode, HX_ERROR_RECORDS);
    }
}

// ---- Columns in the place of blocks ----

/// What a host hands over by `Columns`.
struct ColumnsOfHost {
    std::vector<std::vector<double>> values;
    std::vector<const double*> pointers;
    std::size_t recordCount = 0;
    int code = 0;
    unsigned answer = HX_OK;
    int calls = 0;
};

class ExecutionByColumns : public Execution {
 protected:
    ExecutionByColumns() {
        host.user = &columns;
        host.iterator.Columns = [](void* handle, const double* const** values, size_t* recordCount, size_t* fieldCount,
                                   int* code) {
            auto& given = *static_cast<ColumnsOfHost*>(static_cast<TinyHost*>(handle)->user);
            ++given.calls;
            *values = given.pointers.data();
            *recordCount = given.recordCount;
            *fieldCount = given.pointers.size();
            *code = given.code;
            return given.answer;
        };
        TurnRows();
    }

    /// The rows of the host as its columns.
    void TurnRows() {
        columns.values.assign(host.fieldCount, std::vector<double>(host.recordCount));
        columns.pointers.clear();
        columns.recordCount = host.recordCount;
        for (std::size_t field = 0; field < host.fieldCount; ++field) {
            for (std::size_t record = 0; record < host.recordCount; ++record) {
                columns.values[field][record] = host.values[record * host.fieldCount + field];
            }
            columns.pointers.push_back(columns.values[field].data());
        }
    }

    ColumnsOfHost columns;
};

TEST_F(ExecutionByColumns, TheDocumentIsThatOfTheBlocks) {
    ASSERT_EQ(RunAll(), HX_OK);
    const std::string byColumns = Document();
    EXPECT_EQ(columns.calls, 1);
    EXPECT_EQ(host.passes, 0) << "no block was asked for";
    host.iterator.Columns = nullptr;
    ASSERT_EQ(Begin(), HX_OK);
    EXPECT_GT(host.passes, 0);
    EXPECT_EQ(Document(), byColumns);
}

TEST_F(ExecutionByColumns, AHostOfVersionOneIsAskedForBlocksAlone) {
    host.host.interfaceVersion = 1;
    ASSERT_EQ(RunAll(), HX_OK);
    EXPECT_EQ(columns.calls, 0);
    EXPECT_GT(host.passes, 0);
}

TEST_F(ExecutionByColumns, TheStructureOfVersionOneIsNotReadBeyondItsEnd) {
    // As large as it was then, so that AddressSanitizer sees every look behind it.
    constexpr std::size_t kSize = offsetof(HXIterator, Columns);
    const std::unique_ptr<char[]> old(new char[kSize]);
    std::memcpy(old.get(), &host.iterator, kSize);
    host.host.interfaceVersion = 1;
    host.user = old.get();
    host.context.GetInputIterator = [](void* handle, int, HXIterator** iterator, int*) {
        *iterator = static_cast<HXIterator*>(static_cast<TinyHost*>(handle)->user);
        return unsigned{HX_OK};
    };
    ASSERT_EQ(RunAll(), HX_OK);
    const harness::Document document(Document());
    EXPECT_EQ(document.Test(0).Sub("StatisticsResult").Row("TotalN"), "4");
}

TEST_F(ExecutionByColumns, WithoutRecordsThereIsNone) {
    columns.recordCount = 0;
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, 240037);
}

TEST_F(ExecutionByColumns, ACallThatFailsDeliversNoneWhateverItGave) {
    columns.answer = TINY_FAILURE_RESULT;
    columns.code = TINY_FAILURE_CODE;
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, 240037);
    EXPECT_STREQ(host.messages, "3 240037\n");
}

TEST_F(ExecutionByColumns, AnotherNumberOfColumnsDoesntFitTheModel) {
    columns.pointers.pop_back();
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, 240038);
    EXPECT_STREQ(host.messages, "3 240038\n");
    columns.code = TINY_FAILURE_CODE;
    EXPECT_EQ(Begin(), HX_FAILED);
    EXPECT_EQ(errorCode, TINY_FAILURE_CODE) << "a code that the host gave is the reason";
}

TEST_F(ExecutionByColumns, AColumnWithoutValuesDoesntFitTheModel) {
    columns.pointers.back() = nullptr;
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_EQ(errorCode, 240038);
}

TEST_F(ExecutionByColumns, ACategoryThatTheModelLacksFailsTheRun) {
    GiveExecution(
        ModelText().Continuous("before").Continuous("after").Categories("c", "nominal", {"a", "b"}, "string").Build());
    GiveRows({{1, 2, 0}, {1, 2, 1}, {1, 2, -1}, {1, 2, 1}});
    TurnRows();
    ASSERT_EQ(RunAll(), HX_OK);
    for (const double category : {2.0, 0.5, -0.5, -2.0, kNone, std::nan("")}) {
        SCOPED_TRACE(category);
        columns.values.back().back() = category;
        EXPECT_EQ(Begin(), HX_FAILED);
        EXPECT_EQ(errorCode, HX_ERROR_RECORDS);
    }
}

TEST_F(Execution, AnErrorOfTheRunIsReportedAndIsTheResult) {
    GiveExecution(ModelText().Continuous("before").Continuous("after").Weight("n").Build());
    GiveRows({{1, 2, 3e9}});
    EXPECT_EQ(RunAll(), HX_FAILED);
    EXPECT_STREQ(host.messages, "3 220026\n");
    host.messageAnswer = 42;
    host.passes = 0;
    EXPECT_EQ(Begin(), 42u);
}

TEST_F(Execution, AFailedContainerCallIsTheResultAndTheDocumentIsDropped) {
    ASSERT_EQ(Create(), HX_OK);
    ASSERT_EQ(Configure(), HX_OK);
    host.failure = TINY_OPEN_CONTAINER;
    EXPECT_EQ(Begin(), unsigned{TINY_FAILURE_RESULT});
    EXPECT_EQ(host.closedCount, 0);
    EXPECT_EQ(Document(), "(none)");
}

TEST_F(Execution, ANullContainerHasNoHelper) {
    host.failure = TINY_NULL_CONTAINER;
    EXPECT_EQ(RunAll(), HX_NO_HELPER);
}

TEST_F(Execution, AContainerIsClosedWhateverFailed) {
    ASSERT_EQ(Create(), HX_OK);
    ASSERT_EQ(Configure(), HX_OK);
    for (const TinyFailure failure : {TINY_SET_METADATA, TINY_PUT_STRING, TINY_CLOSE}) {
        host.failure = failure;
        host.closedCount = 0;
        EXPECT_EQ(Begin(), unsigned{TINY_FAILURE_RESULT});
        EXPECT_EQ(errorCode, TINY_FAILURE_CODE);
        EXPECT_EQ(host.closedCount, 1);
    }
}

TEST_F(Execution, FunctionsThatTheHostLacksAreCallsThatFailed) {
    ASSERT_EQ(Create(), HX_OK);
    ASSERT_EQ(Configure(), HX_OK);
    host.context.OpenOutputContainer = nullptr;
    EXPECT_EQ(Begin(), HX_BAD_HANDLE);
    host.context.DeclareOutputs = nullptr;
    EXPECT_EQ(Configure(), HX_BAD_HANDLE);
    host.context.GetInputIterator = nullptr;
    EXPECT_EQ(Begin(), HX_BAD_HANDLE);
}

TEST_F(Execution, MemoryExhaustedByTheSecondStageIsToldAndStoresNoDocument) {
    ASSERT_EQ(RunAll(), HX_OK);
    const std::string whole = Document();
    bool reachedTheEnd = false;
    int toldFailures = 0;
    for (long successes = 0; !reachedTheEnd; ++successes) {
        SCOPED_TRACE(successes);
        tiny_host_free(&host);
        host.messages[0] = host.calls[0] = '\0';
        ASSERT_EQ(End(), HX_OK);
        unsigned result = HX_OK;
        {
            const AllocationFailure failure(successes);
            result = Begin();
            reachedTheEnd = !AllocationFailure::HasFailed();
        }
        if (result == HX_OK) continue;
        EXPECT_EQ(result, HX_FAILED);
        EXPECT_EQ(Document(), "(none)");
        if (host.messages == std::string("3 220012\n") && errorCode == HX_ERROR_OUT_OF_MEMORY) ++toldFailures;
    }
    EXPECT_GT(toldFailures, 20);
    EXPECT_EQ(Document(), whole);
}

// ---- What the expansion leaves out ----

class Warnings : public HostedComponent {
 protected:
    Warnings() {
        GivePair();
        Give(Asking({"RSign"}));
    }

    /// A request for a chi-square test, which takes none of the two continuous fields and is warned of with 220021,
    /// and for these tests of the pair.
    static std::string Asking(const std::vector<std::string>& pairTests) {
        const auto selected = [](const std::string& test) {
            return "<Setting name='" + test +
                   "' kind='list'><Setting name='isSelected' kind='bool' value='true'/></Setting>";
        };
        std::string text =
            "<Settings>"
            "<Setting name='oneSampleVariables' kind='stringVector'><Element value='before'/><Element value='after'/>"
            "</Setting>"
            "<Setting name='relatedVariables' kind='stringVector'><Element value='before'/><Element value='after'/>"
            "</Setting>"
            "<Setting name='isAutomaticallyOneSample' kind='bool' value='false'/>" +
            selected("OChiSquare") + "<Setting name='isAutomaticallyRelated' kind='bool' value='false'/>";
        for (const std::string& test : pairTests) text += selected(test);
        return text + "<Setting name='done' kind='bool' value='true'/></Settings>";
    }
};

TEST_F(Warnings, GoToTheHostWithTheirArgumentsAndStopNothing) {
    ASSERT_EQ(RunAll(), HX_OK);
    EXPECT_STREQ(host.messages, "2 220021 [before ,after]\n");
    EXPECT_EQ(harness::Document(Document()).TestCount(), 1);
    EXPECT_NE(Messages().find("<Message type=\"warning\" code=\"220021\"><Parameter value=\"before ,after\"/>"),
              std::string::npos);
}

TEST_F(Warnings, OfOneComponentStayWhenAnotherOneRuns) {
    ASSERT_EQ(RunAll(), HX_OK);
    const std::string told = Messages();
    ASSERT_NE(told.find("220021"), std::string::npos);
    void* other = nullptr;
    ASSERT_EQ(library.create(&host.context, nullptr, &other, &errorCode), HX_OK);
    ASSERT_EQ(library.configure(other, &errorCode), HX_OK);
    ASSERT_EQ(library.beginExecution(other, &host.progress, &errorCode), HX_OK);
    EXPECT_EQ(Messages(), told);
    EXPECT_EQ(library.endExecution(other, &errorCode), HX_OK);
    EXPECT_EQ(library.destroy(other), HX_OK);
}

TEST_F(Warnings, AreStoppedByTheHostsAnswerWhileTheRunGoesOn) {
    // McNemar's test is of categorical fields: 220020.
    Give(Asking({"RSign", "RMcNemar"}));
    ASSERT_EQ(RunAll(), HX_OK);
    ASSERT_STREQ(host.messages, "2 220021 [before ,after]\n2 220020 [McNemar]\n");
    const std::string document = Document();

    host.messages[0] = '\0';
    host.messageAnswer = 42;
    EXPECT_EQ(Begin(), HX_OK);
    EXPECT_STREQ(host.messages, "2 220021 [before ,after]\n");
    EXPECT_EQ(Document(), document);
}

TEST_F(Warnings, AreFollowedByTheErrorOfTheRequestWhateverTheHostAnswered) {
    Give(Asking({"RMcNemar"}));
    host.messageAnswer = 42;
    EXPECT_EQ(RunAll(), 42u);
    EXPECT_STREQ(host.messages, "2 220021 [before ,after]\n3 220001\n");

    // A host that answers to warnings alone leaves the failure of the error.
    host.context.TakeMessage = [](void*, int type, int, const char* const*, size_t, int*) {
        return type == HX_MESSAGE_WARNING ? 42u : 0u;
    };
    EXPECT_EQ(Begin(), HX_FAILED);
    EXPECT_EQ(Document(), "(none)");
}

// ---- Encoded copies ----

class Copies : public HostedComponent {
 protected:
    /// A pair of ordinal fields: the request takes their continuous copies.
    Copies() {
        Give(Request().List("relatedVariables", {"first", "second"}).SignTest().Text("caseIDField", "id"));
        GiveSource(ModelText()
                       .Continuous("id")
                       .Categories("first", "ordinal", {"1", "2", "3"})
                       .Categories("second", "ordinal", {"1", "2", "3"})
                       .Weight("n")
                       .Build());
        GiveExecution(ModelText()
                          .Categories("first", "ordinal", {"1", "2", "3"})
                          .Continuous("$_first")
                          .Categories("second", "ordinal", {"1", "2", "3"})
                          .Continuous("$_second")
                          .Weight("n")
                          .Continuous("id")
                          .Build());
        GiveRows({{0, 1, 1, 2, 1, 101}, {1, 2, 2, 3, 2, 102}, {2, 3, 0, 1, 1, 103}});
    }
};

TEST_F(Copies, AnOrdinalCopyShowsUpAsThePublicField) {
    ASSERT_EQ(RunAll(), HX_OK);
    const harness::Document document(Document());
    const harness::Table condition = document.Test(0).Sub("Condition");
    EXPECT_EQ(condition.Row("%0"), "0");
    EXPECT_EQ(condition.Row("%1"), "1");
    EXPECT_EQ(condition.Row("OrdinalTreatedAsCont"), "0;1");
    EXPECT_EQ(document.Test(0).Sub("ContinuousDistribution").Row("PositiveDifferences"), "3");
}

TEST_F(Copies, NumberOfFieldsCountsThePublicFields) {
    ASSERT_EQ(RunAll(), HX_OK);
    const harness::Document document(Document());
    const pugi::xml_node dictionary = document.Output().child("DataDictionary");
    EXPECT_STREQ(dictionary.attribute("numberOfFields").value(), "4");
    std::vector<std::string> fields;
    for (const pugi::xml_node& field : dictionary.children()) {
        fields.push_back(std::string(field.attribute("index").value()) + " " + field.attribute("name").value());
    }
    EXPECT_EQ(fields, (std::vector<std::string>{"0 first", "1 second", "2 n", "3 id"}));
}

TEST_F(Copies, FieldInfosHaveNoEntryForTheWeightTheCaseIdAndTheCopies) {
    ASSERT_EQ(RunAll(), HX_OK);
    const harness::Document document(Document());
    std::vector<std::string> indices;
    for (const pugi::xml_node& info : document.Output().child("FieldInfos").children()) {
        indices.push_back(info.attribute("varIndex").value());
    }
    for (const char* hidden : {"2", "3", "4", "5"}) {
        EXPECT_EQ(std::count(indices.begin(), indices.end(), hidden), 0) << hidden;
    }
}

TEST_F(Copies, TheExportedModelHasThePublicFields) {
    ASSERT_EQ(RunAll(), HX_OK);
    const harness::Document document(Document());
    const pugi::xml_node dictionary = document.Root().first_child();
    EXPECT_STREQ(dictionary.name(), "DataDictionary");
    EXPECT_STREQ(dictionary.attribute("numberOfFields").value(), "4");
    EXPECT_STREQ(dictionary.first_child().attribute("name").value(), "first");
    EXPECT_STREQ(dictionary.first_child().attribute("optype").value(), "ordinal");
    EXPECT_STREQ(dictionary.first_child().first_child().attribute("value").value(), "1");
}

TEST_F(Execution, WithNoOrdinalCopiesTheIndicesStay) {
    ASSERT_EQ(RunAll(), HX_OK);
    const harness::Document document(Document());
    const harness::Table condition = document.Test(0).Sub("Condition");
    EXPECT_EQ(condition.Row("%0"), "0");
    EXPECT_EQ(condition.Row("%1"), "1");
    EXPECT_FALSE(condition.HasRow("OrdinalTreatedAsCont"));
}

}  // namespace

}  // namespace component_test
