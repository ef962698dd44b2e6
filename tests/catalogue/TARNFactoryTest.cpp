#include "catalogue/TARNFactory.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/harness/AllocationFailure.h"
#include "tests/harness/TestRun.h"

TEST(TARNFactoryTest, MakesAnAlgorithmThatTheCallerOwns) {
    QKSettings settings;
    harness::Fields fields;
    fields.Continuous("x");
    TARNFactory factory;
    EXPECT_TRUE(factory.GetStatus().IsOK());
    const std::unique_ptr<IQKAlgorithm> algorithm(factory.CreateQKAlgorithm(settings, fields.List()));
    ASSERT_NE(algorithm, nullptr);
    EXPECT_TRUE(factory.GetStatus().IsOK());
    EXPECT_TRUE(algorithm->GetStatus().IsOK());
    EXPECT_FALSE(algorithm->IsComplete());
}

TEST(TARNFactoryTest, MakesAnAlgorithmOfItsOwnForEachCall) {
    QKSettings settings;
    harness::AddListTest(settings, "RSign", {"x", "y"});
    harness::Fields fields;
    fields.Continuous("x").Continuous("y");
    TARNFactory factory;
    const std::unique_ptr<IQKAlgorithm> first(factory.CreateQKAlgorithm(settings, fields.List()));
    const std::unique_ptr<IQKAlgorithm> second(factory.CreateQKAlgorithm(settings, fields.List()));
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    harness::RowStream stream(std::vector<std::vector<double>>{{1, 2}});
    EXPECT_TRUE(first->Run(stream).IsOK());
    EXPECT_TRUE(first->IsComplete());
    EXPECT_FALSE(second->IsComplete());
}

TEST(TARNFactoryTest, AFailedAllocationGivesNullAnd220012UntilTheNextCreation) {
    QKSettings settings;
    harness::Fields fields;
    fields.Continuous("x");
    TARNFactory factory;
    std::unique_ptr<IQKAlgorithm> algorithm;
    {
        const component_test::AllocationFailure failure(0);
        algorithm.reset(factory.CreateQKAlgorithm(settings, fields.List()));
    }
    EXPECT_EQ(algorithm, nullptr);
    EXPECT_EQ(factory.GetStatus(), QKStatus(220012));
    EXPECT_EQ(TARNFactory(factory).GetStatus(), QKStatus(220012)) << "a copy has the status";
    algorithm.reset(factory.CreateQKAlgorithm(settings, fields.List()));
    EXPECT_NE(algorithm, nullptr);
    EXPECT_TRUE(factory.GetStatus().IsOK());
}

TEST(TARNFactoryTest, IsCopiedAndAssignedAsAValueAndOutlivedByItsAlgorithm) {
    QKSettings settings;
    harness::Fields fields;
    fields.Continuous("x");
    std::unique_ptr<IQKAlgorithm> algorithm;
    {
        const TARNFactory original;
        TARNFactory copy(original);
        TARNFactory assigned;
        assigned = copy;
        algorithm.reset(assigned.CreateQKAlgorithm(settings, fields.List()));
    }
    ASSERT_NE(algorithm, nullptr);
    harness::RowStream stream(std::vector<std::vector<double>>{{1}});
    EXPECT_EQ(algorithm->Run(stream), QKStatus(220001));
}

TEST(TARNFactoryTest, TheWarningsOfTheProcessAreEmptyInEveryCase) {
    const TARNFactory factory;
    EXPECT_TRUE(factory.GetWarnings().empty());
    QKSettings settings;
    harness::AddListTest(settings, "RSign", {"x", "y"});
    harness::Fields fields;
    fields.Continuous("x").Continuous("y");
    for (const bool withRecords : {true, false}) {
        const auto rows =
            withRecords ? std::vector<std::vector<double>>{{1, 2}, {2, 1}} : std::vector<std::vector<double>>{};
        EXPECT_EQ(harness::Run(settings, fields, rows).complete, withRecords);
        EXPECT_TRUE(factory.GetWarnings().empty());
        std::vector<QKStatus> copy = factory.GetWarnings();
        copy.push_back(QKStatus(220014, true));
        EXPECT_TRUE(factory.GetWarnings().empty()) << "what is handed out is a copy";
    }
}
