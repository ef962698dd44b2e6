#pragma once

#include "component/PublicFields.h"
#include "platform/peer/HxCppXml.h"

/// Renumbers the field references of an "Algorithm" element. Its name decides where they are; an element of any other
/// name keeps its indices. Names in "Condition" the fields that were taken by their encoded copies.
void RenumberReferences(HxCppHelperV1::XMLElement algorithm, const PublicFields& fields);
