// What plan builders meet in a run, and how the planner divides tests among workers. Scripted plan builders stand in
// for those of the catalogue.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "planning/TARNPlanner.h"
#include "tests/planning/WorkerRig.h"

using harness::Fields;

namespace {

using Rows = std::vector<std::vector<double>>;

constexpr int kX = 1;
constexpr int kY = 2;

/// "id" numbers the records; in the order of x they are 2, 3, 1 and in the order of y 1, 3, 2.
const Rows kRows{{1, 30, 5}, {2, 10, 7}, {3, 20, 6}};

/// A scripted test that looks at the descriptives as soon as it gets them.
class LookingTest : public ScriptedTest {
 public:
    using Look = std::function<void(const UnivariateResults&)>;

    LookingTest(CallLog& log, Look look) : ScriptedTest(Script{}, log), look_(std::move(look)) {}
    void SetUnivariateResults(UnivariateResults* results) override {
        ASSERT_NE(results, nullptr);
        look_(*results);
    }

 private:
    Look look_;
};

class TARNPlannerPlanTest : public testing::Test {
 protected:
    TARNPlannerPlanTest() {
        running_ = this;
        settings_ = OneThread();
    }
    ~TARNPlannerPlanTest() override { running_ = nullptr; }

    /// Settings without a test yet: the tests share one log, whose order is what is looked at.
    static QKSettings OneThread() {
        QKSettings settings;
        settings.AddSetting("threads", 1);
        return settings;
    }
    /// Adds an entry to the settings whose plan builder this is.
    void Plan(std::function<void(TARNPlan&)> builder) {
        QKSettings entry;
        entry.AddSetting("number", static_cast<int>(builders_.size()));
        builders_.push_back(std::move(builder));
        settings_.AddSetting("Scripted", entry);
    }
    void PlanMain(Script script) {
        Plan([this, script](TARNPlan& plan) { plan.AddToMainWorker(Make(script)); });
    }
    void PlanSorted(Script script, int field, const QKStatus& status = QKStatus()) {
        Plan([this, script, field, status](TARNPlan& plan) { plan.AddSortedTest(Make(script), field, status); });
    }

    std::unique_ptr<TARNTest> Make(Script script) {
        script.remaining.try_emplace("begin1", 1);
        script.remaining.try_emplace("end1", 0);
        return std::make_unique<ScriptedTest>(std::move(script), log_);
    }

    TARNPlanner& Planner() {
        if (planner_ == nullptr) {
            planner_ = std::make_unique<TARNPlanner>(settings_, fields_.List(), Find);
            planner_->SetProgressListener(&listener_);
        }
        return *planner_;
    }
    QKStatus Run(const Rows& rows = kRows) {
        stream_ = std::make_unique<harness::RowStream>(rows);
        return Planner().Run(*stream_);
    }

    /// The names of the elements of the document, in its order.
    std::vector<std::string> ElementNames() {
        std::ostringstream out;
        EXPECT_TRUE(Planner().WriteResults(out, {}).IsOK());
        const harness::Document document(out.str());
        std::vector<std::string> names;
        for (const pugi::xml_node& element : document.Output().child("NonParametricTests").children()) {
            names.emplace_back(element.name());
        }
        return names;
    }

    /// The calls that end in one of these words: "a results" for "results".
    CallLog CallsNamed(const std::vector<std::string>& words) const {
        CallLog calls;
        for (const std::string& call : log_) {
            for (const std::string& word : words) {
                if (call.ends_with(" " + word)) calls.push_back(call);
            }
        }
        return calls;
    }
    CallLog RecordsOf(const std::string& name) const {
        CallLog records;
        for (const std::string& call : log_) {
            if (call.starts_with(name + " rec1:")) records.push_back(call.substr(name.size() + 6));
        }
        return records;
    }

    QKSettings settings_;
    Fields fields_ = Fields().Continuous("id").Continuous("x").Continuous("y");
    CallLog log_;
    StepListener listener_;
    std::unique_ptr<harness::RowStream> stream_;
    std::unique_ptr<TARNPlanner> planner_;

 private:
    static const TARNTestRow* Find(std::string_view settingName) {
        static constexpr TARNTestRow kRow{"Scripted", PlanByNumber};
        return settingName == kRow.settingName ? &kRow : nullptr;
    }
    static void PlanByNumber(const QKSettings& entry, TARNPlan& plan) {
        int number = -1;
        ASSERT_TRUE(entry.GetSettingValByName("number", number));
        running_->builders_.at(static_cast<std::size_t>(number))(plan);
    }

    static inline TARNPlannerPlanTest* running_ = nullptr;  // plan builders are plain functions
    std::vector<std::function<void(TARNPlan&)>> builders_;
};

}  // namespace

// ---- Workers ----

TEST_F(TARNPlannerPlanTest, TwoSortedTestsOnOneFieldShareAWorkerAndAnotherFieldGetsAnother) {
    PlanSorted({.name = "a"}, kX);
    PlanSorted({.name = "b"}, kY);
    PlanSorted({.name = "c"}, kX);
    EXPECT_TRUE(Run().IsOK());
    const CallLog expected{"a results", "c results", "a begin1",  "a used1",   "c begin1",  "c used1",  "a rec1:2",
                           "c rec1:2",  "a rec1:3",  "c rec1:3",  "a rec1:1",  "c rec1:1",  "a end1",   "c end1",
                           "a again1",  "c again1",  "a element", "c element", "b results", "b begin1", "b used1",
                           "b rec1:1",  "b rec1:3",  "b rec1:2",  "b end1",    "b again1",  "b element"};
    EXPECT_EQ(log_, expected);
}

TEST_F(TARNPlannerPlanTest, TheMainWorkerExistsWithoutATestInItAndIsThenNotRun) {
    PlanSorted({.name = "a"}, kX);
    EXPECT_TRUE(Run().IsOK());
    EXPECT_EQ(stream_->RewindCount(), 1) << "the source is read once, into the store";
    EXPECT_EQ(stream_->NextCount(), 3);
    EXPECT_EQ(ElementNames(), (std::vector<std::string>{"a"}));
}

TEST_F(TARNPlannerPlanTest, TheMainWorkerComesFirstInTheRunAndInTheDocument) {
    PlanSorted({.name = "s"}, kY);
    PlanMain({.name = "m"});
    PlanSorted({.name = "t"}, kX);
    PlanMain({.name = "n"});
    PlanSorted({.name = "u"}, kY);
    EXPECT_TRUE(Run().IsOK());
    EXPECT_EQ(CallsNamed({"element"}), (CallLog{"m element", "n element", "s element", "u element", "t element"}));
    EXPECT_EQ(ElementNames(), (std::vector<std::string>{"m", "n", "s", "u", "t"}));
    EXPECT_EQ(RecordsOf("m"), (CallLog{"1", "2", "3"}));
    EXPECT_EQ(RecordsOf("t"), (CallLog{"2", "3", "1"}));
    EXPECT_EQ(stream_->RewindCount(), 2) << "the source is read into the store and by the main worker";
}

// A worker made under an error status keeps the sort field -1, whatever the field that was asked for: tests that failed
// without a field find it, a good test of that field doesn't, and a failed one joins a sorted worker that is there.
TEST_F(TARNPlannerPlanTest, AFailedSortedTestReadsTheStoreInFileOrder) {
    const QKStatus failed(220303);
    PlanSorted({.name = "h"}, kX, failed);
    PlanSorted({.name = "f"}, -1, failed);
    PlanSorted({.name = "s"}, kX);
    PlanSorted({.name = "g"}, -1, failed);
    PlanSorted({.name = "k"}, kX, failed);
    EXPECT_TRUE(Run().IsOK());
    EXPECT_EQ(CallsNamed({"results", "element"}),
              (CallLog{"h results", "f results", "g results", "h element", "f element", "g element", "s results",
                       "k results", "s element", "k element"}));
    for (const char* inFileOrder : {"h", "f", "g"}) EXPECT_EQ(RecordsOf(inFileOrder), (CallLog{"1", "2", "3"}));
    for (const char* sorted : {"s", "k"}) EXPECT_EQ(RecordsOf(sorted), (CallLog{"2", "3", "1"}));
    EXPECT_EQ(stream_->RewindCount(), 1) << "the store and not the source";
}

TEST_F(TARNPlannerPlanTest, UnderListwiseASortedWorkerLosesWhatTheReaderDroppedAndTheMainWorkerDoesNot) {
    fields_.Other("o");  // kind 4: -1 is missing for the reader alone, the missing double for the passes alone
    settings_.AddSetting("missingTreatment", "listwise");
    PlanMain({.name = "m"});
    PlanSorted({.name = "s"}, kX);
    EXPECT_TRUE(Run({{1, 30, 0, 5}, {2, 10, 0, -1}, {3, 20, 0, harness::kNone}, {4, harness::kNone, 0, 5}}).IsOK());
    EXPECT_EQ(RecordsOf("m"), (CallLog{"1", "2"}));
    EXPECT_EQ(RecordsOf("s"), (CallLog{"1"}));
}

TEST_F(TARNPlannerPlanTest, EachWorkerFillsThePartOfTheScaleThatItsNumberOfTestsEarns) {
    struct Row {
        std::vector<int> tests;  // of the main worker, of the worker sorted by x, of that by y
        std::vector<int> steps;
    };
    const std::vector<Row> rows{
        {{1, 0, 0}, {25, 90}},
        {{0, 2, 0}, {25, 90}},
        {{1, 2, 0}, {25, 46, 46, 90}},  // a third of 65: 46.67
        {{2, 0, 1}, {25, 68, 68, 90}},  // two thirds: 68.33
        {{1, 2, 1}, {25, 41, 41, 73, 73, 90}},
        // In doubles 0.25 + 0.325 + 0.325 is a little below 0.9, and the percent is truncated.
        {{1, 1, 0}, {25, 57, 57, 89}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.tests));
        settings_ = OneThread();
        planner_.reset();
        listener_.steps.clear();
        for (int i = 0; i < row.tests[0]; ++i) PlanMain({});
        for (int i = 0; i < row.tests[1]; ++i) PlanSorted({}, kX);
        for (int i = 0; i < row.tests[2]; ++i) PlanSorted({}, kY);
        EXPECT_TRUE(Run().IsOK());
        EXPECT_EQ(listener_.steps, row.steps);
    }
}

// ---- What a plan builder may ask ----

TEST_F(TARNPlannerPlanTest, PlanBuildersSeeTheLevelsTheFieldsAndTheWeight) {
    settings_.AddSetting("sigLevel", 0.01);
    settings_.AddSetting("confidenceLevel", 0.5);
    int called = 0;
    int weightIndex = -7;
    Plan([&](TARNPlan& plan) {
        ++called;
        EXPECT_EQ(plan.GetSigLevel(), 0.01);
        EXPECT_EQ(plan.GetConfidenceLevel(), 0.5);
        EXPECT_EQ(&plan.GetVarList(), &fields_.List());
        weightIndex = plan.GetWeightIndex();
    });
    EXPECT_TRUE(Run().IsOK());
    EXPECT_EQ(called, 1);
    EXPECT_EQ(weightIndex, TARNPlan::kNoWeight);

    fields_.Weight("w");
    planner_.reset();
    EXPECT_TRUE(Run({{1, 2, 3, 1}}).IsOK());
    EXPECT_EQ(weightIndex, 3);
}

TEST_F(TARNPlannerPlanTest, TheMeasureLevelIsTheKindOfAFieldThatATestCanTake) {
    fields_.Numeric("n", {1}).Text("s", {"a"});
    std::vector<int> levels;
    Plan([&](TARNPlan& plan) {
        for (const char* name : {"x", "n", "s"}) levels.push_back(plan.GetMeasureLevel(name));
    });
    EXPECT_TRUE(Run({{1, 2, 3, 0, 0}}).IsOK());
    EXPECT_EQ(levels, (std::vector<int>{1, 2, 3}));
}

TEST_F(TARNPlannerPlanTest, AnUnknownKindFailsTheWholeRunBehindTheWalkOfTheSettings) {
    fields_.Other("o");
    for (const std::string name : {"o", "nowhere", ""}) {
        SCOPED_TRACE(name);
        settings_ = OneThread();
        planner_.reset();
        bool walkedOn = false;
        PlanMain({.name = "before"});
        Plan([&](TARNPlan& plan) { EXPECT_EQ(plan.GetMeasureLevel(name), 0); });
        Plan([&](TARNPlan& plan) {
            walkedOn = true;
            EXPECT_EQ(plan.GetMeasureLevel("x"), 1) << "which does not mend the status";
        });
        EXPECT_EQ(Run({{1, 2, 3, 4}}), QKStatus(220004));
        EXPECT_TRUE(walkedOn);
        EXPECT_TRUE(log_.empty()) << "no test is run";
        EXPECT_FALSE(Planner().IsComplete());
        std::ostringstream out;
        EXPECT_EQ(Planner().WriteResults(out, {}), QKStatus(6));
    }
}

TEST_F(TARNPlannerPlanTest, AQuantileIsRefusedAsLongAsNoSortedWorkerExists) {
    std::vector<bool> answers;
    const auto ask = [&](TARNPlan& plan, int field) { answers.push_back(plan.Request(field, Statistic::kMedian)); };
    Plan([&](TARNPlan& plan) {
        plan.RequestSorted(kX);  // registers the field, but is no worker
        ask(plan, kX);
    });
    PlanMain({});
    Plan([&](TARNPlan& plan) { ask(plan, kX); });
    PlanSorted({}, kY, QKStatus(220303));  // any worker for sorted tests will do
    Plan([&](TARNPlan& plan) {
        ask(plan, kX);
        plan.AddToMainWorker(std::make_unique<LookingTest>(log_, [](const UnivariateResults& results) {
            EXPECT_EQ(results.GetMedian(kX), 20);
            EXPECT_EQ(results.GetMedian(kY), QKMV::Missing());
        }));
    });
    EXPECT_TRUE(Run().IsOK());
    EXPECT_EQ(answers, (std::vector<bool>{false, false, true}));
}

TEST_F(TARNPlannerPlanTest, RegisterSortedAsksForNoStatistic) {
    bool looked = false;
    Plan([&](TARNPlan& plan) {
        plan.RegisterSorted(kX);
        plan.AddToMainWorker(std::make_unique<LookingTest>(log_, [&](const UnivariateResults& results) {
            looked = true;
            EXPECT_FALSE(results.HasVariable(kX));
        }));
    });
    EXPECT_TRUE(Run().IsOK());
    EXPECT_TRUE(looked);
}

TEST_F(TARNPlannerPlanTest, RequestSortedAsksForTheStatisticsThatGoWithASortedField) {
    bool looked = false;
    Plan([&](TARNPlan& plan) {
        for (const int field : {kX, -1, 99}) plan.RequestSorted(field);
        plan.AddSortedTest(std::make_unique<LookingTest>(log_,
                                                         [&](const UnivariateResults& results) {
                                                             looked = true;
                                                             // x is 30, 10, 20
                                                             EXPECT_EQ(results.GetMin(kX), 10);
                                                             EXPECT_EQ(results.GetMax(kX), 30);
                                                             EXPECT_EQ(results.GetMean(kX), 20);
                                                             EXPECT_DOUBLE_EQ(results.GetStdDev(kX), 10);
                                                             ASSERT_NE(results.GetContinuous(kX), nullptr);
                                                             EXPECT_EQ(results.GetContinuous(kX)->size(), 400u);
                                                             for (const int field : {-1, kY, 99}) {
                                                                 EXPECT_FALSE(results.HasVariable(field)) << field;
                                                             }
                                                         }),
                           kX, QKStatus());
    });
    EXPECT_TRUE(Run().IsOK());
    EXPECT_TRUE(looked);
}

// ---- Failures, cancel, and the life of the tests ----

TEST_F(TARNPlannerPlanTest, AFailedReadPlansNothing) {
    Plan([](TARNPlan&) { ADD_FAILURE() << "planned without records"; });
    EXPECT_EQ(Run(Rows{}), QKStatus(220003));
}

TEST_F(TARNPlannerPlanTest, Code220012OfATestStopsTheRun) {
    PlanMain({.name = "m", .answers = {{"rec1:2", QKStatus(220012)}}});
    PlanSorted({.name = "s"}, kX);
    EXPECT_EQ(Run(), QKStatus(220012));
    EXPECT_FALSE(Planner().IsComplete());
    EXPECT_EQ(log_.back(), "m rec1:2");
}

TEST_F(TARNPlannerPlanTest, AnAllocationFailureOfAPlanBuilderEndsTheRunWith220002) {
    bool fails = true;
    PlanMain({.name = "m"});
    Plan([&](TARNPlan&) {
        if (fails) throw std::bad_alloc();
    });
    EXPECT_EQ(Run(), QKStatus(220002));
    EXPECT_FALSE(Planner().IsComplete());
    EXPECT_TRUE(log_.empty());
    fails = false;
    EXPECT_TRUE(Run().IsOK()) << "the next run starts afresh";
    EXPECT_EQ(ElementNames(), (std::vector<std::string>{"m"}));
}

TEST_F(TARNPlannerPlanTest, ACancelBetweenWorkersCollectsNoMoreAndLastsForLaterRuns) {
    PlanMain({.name = "m", .onCall = [this](const std::string& call) {
                  if (call == "end1") Planner().Cancel();
              }});
    PlanSorted({.name = "s"}, kX);
    EXPECT_EQ(Run(), QKStatus(1));
    EXPECT_FALSE(Planner().IsComplete());
    EXPECT_EQ(log_.back(), "m end1");
    log_.clear();
    EXPECT_EQ(Run(), QKStatus(1));
    EXPECT_TRUE(log_.empty());
}

TEST_F(TARNPlannerPlanTest, ACancelIsHeardWhileTheRecordsAreRead) {
    Plan([](TARNPlan&) { ADD_FAILURE() << "planned after a cancel"; });
    Planner().Cancel();
    EXPECT_EQ(Run(), QKStatus(1));
    EXPECT_FALSE(Planner().IsComplete());
}

// ---- The document as a tree ----

std::string TextOf(const QKXML::XMLElement& document) {
    return QKXML::TextOfTree(document, {});
}

TEST_F(TARNPlannerPlanTest, TheTreeIsThatOfTheWrittenDocument) {
    std::unique_ptr<QKXML::XMLElement> document;
    PlanMain({.name = "m"});
    PlanSorted({.name = "s"}, kX);
    EXPECT_EQ(Planner().MakeDocument({}, document), QKStatus(6)) << "before a run";
    ASSERT_TRUE(Run().IsOK());
    ASSERT_TRUE(Planner().MakeDocument({}, document).IsOK());
    std::ostringstream written;
    ASSERT_TRUE(Planner().WriteResults(written, {}).IsOK());
    EXPECT_EQ(TextOf(*document), written.str());
    EXPECT_NE(written.str().find("><m/><s/></NonParametricTests>"), std::string::npos) << written.str();
}

TEST_F(TARNPlannerPlanTest, AnEditorMakesTheElementsOfTheDocument) {
    PlanMain({.name = "m"});
    PlanSorted({.name = "s"}, kX);
    Planner().SetResultEditor([](const std::shared_ptr<const QKXML::XMLElement>& element) {
        return QKXML::XMLWritten::Take("<edited was='" + element->GetName() + "'/>");
    });
    ASSERT_TRUE(Run().IsOK());
    for (int i = 0; i < 2; ++i) {
        std::unique_ptr<QKXML::XMLElement> document;
        ASSERT_TRUE(Planner().MakeDocument({}, document).IsOK());
        EXPECT_NE(TextOf(*document).find("><edited was='m'/><edited was='s'/></NonParametricTests>"),
                  std::string::npos);
    }
}

TEST_F(TARNPlannerPlanTest, ACancelEndsTheTreeButNotTheWritingOfACompleteRun) {
    PlanMain({.name = "m"});
    ASSERT_TRUE(Run().IsOK());
    Planner().Cancel();
    std::unique_ptr<QKXML::XMLElement> document;
    EXPECT_EQ(Planner().MakeDocument({}, document), QKStatus(1));
    EXPECT_EQ(document, nullptr);
    std::ostringstream written;
    EXPECT_TRUE(Planner().WriteResults(written, {}).IsOK());
}

TEST_F(TARNPlannerPlanTest, TestsAreGivenUpWithTheirResultsAndOthersByTheNextRunOrTheDestruction) {
    const auto life = std::make_shared<int>();
    const auto holds = [life](const std::string&) {};
    bool plans = true;
    bool succeeds = true;
    Plan([&, holds](TARNPlan& plan) {
        if (!plans) return;
        plan.AddToMainWorker(Make({.onCall = holds}));
        plan.AddSortedTest(Make({.onCall = holds}), kX, QKStatus());
        if (!succeeds) plan.GetMeasureLevel("none");  // a mistake that ends the run
    });
    const long unplanned = life.use_count();
    EXPECT_TRUE(Run().IsOK());
    EXPECT_EQ(life.use_count(), unplanned);
    succeeds = false;
    EXPECT_TRUE(Run().IsError());
    EXPECT_EQ(life.use_count(), unplanned + 2);
    plans = false;
    EXPECT_TRUE(Run().IsOK());
    EXPECT_EQ(life.use_count(), unplanned);
    plans = true;
    EXPECT_TRUE(Run().IsError());
    planner_.reset();
    EXPECT_EQ(life.use_count(), unplanned);
}
