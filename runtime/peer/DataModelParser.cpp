#include "platform/peer/DataModelParser.h"

#include "platform/hx/HXDocuments.h"

bool DataModelParser::IsDataModel() const {
    return GetRoot().getName() == HX_DATA_MODEL_ROOT;
}
