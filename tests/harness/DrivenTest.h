#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "contract/TARNTest.h"
#include "platform/common/QKXML.h"
#include "tests/harness/Document.h"
#include "tests/harness/TestRun.h"

/// A test that is driven by hand, without an engine around it.
namespace harness {

/// A pass over the rows but for its end, which is the caller's: its status differs.
inline void BeginPassOver(TARNTest& test, std::vector<std::vector<double>> rows) {
    EXPECT_FALSE(test.BeginPass().IsError());
    RowStream stream(std::move(rows));
    while (stream.HasMore()) EXPECT_FALSE(test.ProcessRecord(*stream.Next()).IsError());
}

/// Its "Algorithm" element.
inline Table ElementOf(TARNTest& test) {
    const std::unique_ptr<QKXML::XMLElement> element(test.MakeResultElement());
    return TableOf(*element);
}

}  // namespace harness
