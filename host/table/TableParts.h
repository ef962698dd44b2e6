#pragma once

#include <cstddef>
#include <span>

#include "host/table/Table.h"

namespace tarn {

/// A table of some records of another one, by their places from 0. A category that occurs in the whole table and in
/// none of these records is none of theirs; one that never occurred, and was listed, stays.
Table RecordsOf(const Table& table, std::span<const std::size_t> records);

/// Makes a continuous column nominal, with its numbers in ascending order as categories, as reading it so would have.
void MakeNominal(Table& table, std::size_t column);

/// Puts a category of a categorical column in front of the others, whose order stays.
void PutFirst(Table& table, std::size_t column, std::size_t category);

}  // namespace tarn
