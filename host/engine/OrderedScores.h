#pragma once

#include <string>
#include <vector>

#include "host/table/Table.h"

namespace tarn {

/// Gives the fields among `fields` whose categories have a given order the numbers 1, 2, 3, ... in that order, and what
/// a reader is shown for the categories as their labels. The engine ranks ordinal numbers and no texts, so that every
/// rank test takes the field then. Numbers that ascend in their order keep their values.
void ScoreOrderedFields(Table& table, const std::vector<std::string>& fields);

/// Throws an `InputError` where fields that are compared with one another have orders that differ: their scores would
/// count unlike answers as equal.
void CheckOneOrder(const Table& table, const std::vector<std::string>& related);

/// Gives the categories of booleans, which are the numbers 1 and 0, the words of the file as labels.
void LabelBooleans(Table& table);

/// The option by which the order of a field's categories can be given, ready to copy where the words are of a scale
/// that is known: "--order dose=low,medium,high"; otherwise with dots in the place of the words.
std::string OrderOptionFor(const Column& column);

}  // namespace tarn
