#pragma once

#include "platform/common/QKVarList.h"
#include "platform/peer/DataModelParser.h"
#include "platform/peer/HxCppHelper.h"

/// Makes the fields of a run from a data model.
class InputAdapter {
 public:
    /// Borrows both; the data helper, null while there are no records, is given the number of values of a record.
    ///
    /// `withoutLabels`: fields and categories bear no labels. `withoutOrder`: an ordinal field counts as nominal.
    /// `withoutDates`: dates and times count as plain numbers. `withWeight`: the field that the model marks becomes
    /// the frequency weight. `withCounts`: the counts of the records are taken, which a model bears once the data are
    /// prepared.
    InputAdapter(HxCppHelperV1::DataHelper* dataHelper, const DataModelParser& parser, bool withoutLabels,
                 bool withoutOrder, bool withoutDates, bool withWeight, bool withCounts);

    /// False for a model that describes fields that can't exist; `*errorCode` then says so.
    bool BuildVarlist(int* errorCode);
    /// The fields, empty before they are built.
    QKVarList& GetVarList() { return varList_; }
    const QKVarList& GetVarList() const { return varList_; }

 private:
    bool AddField(const HxCppHelperV1::XMLElement& field, QKVarList& fields) const;

    HxCppHelperV1::DataHelper* dataHelper_;
    const DataModelParser* parser_;
    bool withoutLabels_;
    bool withoutOrder_;
    bool withoutDates_;
    bool withWeight_;
    bool withCounts_;
    QKVarList varList_;
};
