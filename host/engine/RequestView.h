#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/TestNames.h"
#include "host/engine/AnalysisRequest.h"
#include "host/table/Table.h"

namespace tarn {

/// What a user asks for beside the table that it is asked of: what the checks of a request and its making both look up.
/// Borrows both.
class RequestView {
 public:
    RequestView(const AnalysisOptions& options, const Table& table) : options_(options), table_(table) {}

    const AnalysisOptions& Options() const { return options_; }
    const Table& Data() const { return table_; }

    const std::vector<std::string>& FieldsOf(TestFamily family) const;
    bool IsAsked(TestFamily family) const { return !FieldsOf(family).empty(); }
    /// The column of a field, which the table has.
    const Column& ColumnOf(const std::string& field) const;

    /// The tests of a family by their names; none where the engine chooses. Where its choice would hand a field to a
    /// test that can't take it, or has no test for ordered fields or for steps, the test is named here.
    std::vector<std::string> TestsOf(TestFamily family) const;
    /// Whether one of two tests is named, by their names in a request.
    bool IsSelected(std::string_view first, std::string_view second) const;
    /// The categorical fields of the tests that take a first class.
    std::vector<const Column*> ColumnsOfSuccess() const;

 private:
    std::vector<std::string> ChooseForOrdered() const;
    std::vector<std::string> ChooseForGroups() const;
    std::vector<std::string> ChooseForSteps(TestFamily family) const;

    const AnalysisOptions& options_;
    const Table& table_;
};

}  // namespace tarn
