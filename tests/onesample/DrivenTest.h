#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <pugixml.hpp>
#include <sstream>

#include "contract/TARNTest.h"
#include "platform/common/QKXML.h"
#include "tests/harness/Document.h"

namespace harness {

/// The "Algorithm" element of a test that was driven without an engine around it.
inline Table ElementOf(TARNTest& test) {
    const std::unique_ptr<QKXML::XMLElement> element(test.MakeResultElement());
    std::ostringstream out;
    QKXML::WriteTree(out, "", element.get(), 0);
    auto document = std::make_shared<pugi::xml_document>();
    EXPECT_TRUE(document->load_string(out.str().c_str())) << out.str();
    return Table(document->document_element(), document);
}

}  // namespace harness
