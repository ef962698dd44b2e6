#include "platform/common/QKStatus.h"

#include <gtest/gtest.h>

TEST(QKStatusTest, WithoutArgumentsIsOK) {
    const QKStatus status;
    EXPECT_TRUE(status.IsOK());
    EXPECT_FALSE(status.IsError());
    EXPECT_FALSE(status.IsWarning());
    EXPECT_EQ(status.GetErrorCode(), 0);
}

TEST(QKStatusTest, ACodeOtherThanZeroIsAnErrorOrAWarning) {
    for (const long code : {1L, 6L, 220012L, 240037L, -5L}) {
        const QKStatus error(code);
        EXPECT_FALSE(error.IsOK()) << code;
        EXPECT_TRUE(error.IsError()) << code;
        EXPECT_FALSE(error.IsWarning()) << code;
        EXPECT_EQ(error.GetErrorCode(), code);

        const QKStatus warning(code, true);
        EXPECT_FALSE(warning.IsOK()) << code;
        EXPECT_FALSE(warning.IsError()) << code;
        EXPECT_TRUE(warning.IsWarning()) << code;
        EXPECT_EQ(warning.GetErrorCode(), code);
    }
}

TEST(QKStatusTest, CodeZeroIsOKAndNoWarning) {
    for (const bool isWarning : {false, true}) {
        const QKStatus status(0, isWarning);
        EXPECT_TRUE(status.IsOK());
        EXPECT_FALSE(status.IsError());
        EXPECT_FALSE(status.IsWarning());
        EXPECT_EQ(status, QKStatus());
    }
}

TEST(QKStatusTest, EqualAreThoseOfOneCodeAndOneSeverity) {
    EXPECT_EQ(QKStatus(220014, true), QKStatus(220014, true));
    EXPECT_FALSE(QKStatus(220014, true) == QKStatus(220014));
    EXPECT_FALSE(QKStatus(220014) == QKStatus(220015));
    EXPECT_FALSE(QKStatus(220014) == QKStatus());
    QKStatus copy;
    copy = QKStatus(220014, true);
    EXPECT_EQ(copy, QKStatus(220014, true));
}
