#pragma once

#include <memory>
#include <ostream>
#include <vector>

#include "contract/TARNVariableInfo.h"
#include "machine/WorkShare.h"
#include "platform/common/IQKAlgorithm.h"
#include "platform/common/QKStatus.h"
#include "platform/common/QKVarList.h"
#include "platform/common/QKXML.h"
#include "support/UnivariateResults.h"

/// What a run's document holds besides its elements.
struct TARNRunParameters {
    int modelId = 0;
    bool analysisMissing = true;
    double sigLevel = 0;
    double confidenceLevel = 0;
    int weightIndex = -1;
    int caseIdIndex = -1;
};

/// Writes the document of a run: "Tabulon" with the counts, the data dictionary, the elements of all tests and the
/// field information. Field indices are those of the variable list of the run.
class TARNResultWriter {
 public:
    using Elements = std::vector<std::shared_ptr<const QKXML::XMLNode>>;

    /// Borrows the fields; shares the elements.
    TARNResultWriter(const QKVarList& varList, const TARNVariableInfo& variableInfo, UnivariateResults results,
                     Elements elements, const TARNRunParameters& parameters);

    /// The document as a tree, which shares the elements; null where the work was stopped.
    std::unique_ptr<QKXML::XMLElement> MakeDocument(const QKOutputParameters& output, const WorkShare& work) const;
    /// Writes the document and flushes the stream. `work` is never stopped.
    void Write(std::ostream& out, const QKOutputParameters& output, const WorkShare& work) const;

 private:
    using ElementPointer = std::unique_ptr<QKXML::XMLElement>;

    ElementPointer MakePmmlModel() const;
    ElementPointer MakeDescriptiveModel() const;
    ElementPointer MakeHeader(const QKOutputParameters& output) const;
    ElementPointer MakeDataDictionary() const;
    ElementPointer MakeDataField(int field) const;
    ElementPointer MakeTests() const;

    const QKVarList* varList;
    UnivariateResults univariateResults;
    Elements elements;
    TARNRunParameters parameters;
    TARNVariableInfo variableInfo;
};
