#pragma once

#include <memory>

#include "component/PublicFields.h"
#include "platform/common/QKXML.h"

/// An "Algorithm" element with its field references renumbered, which shares with the first one whatever stays; the
/// first one itself where all does. Its name decides where the references are; an element of any other name keeps its
/// indices. Names in "Condition" the fields that were taken by their encoded copies.
std::shared_ptr<const QKXML::XMLElement> RenumberReferences(std::shared_ptr<const QKXML::XMLElement> algorithm,
                                                            const PublicFields& fields);
