#pragma once

#include <ostream>
#include <string>

#include "lum/core/store/SortSpecOrder.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumTuple.h"

// Columns, sets and rows from short text, and values as text, so that a case and what is expected
// of it are one line each:
//
//   text      type [!] ":" cell...           "i: 1 2 7!Null -"
//   type      b i l f r s d t c              the one-letter codes of the types
//             P{type,...}                    a row of them
//   !         room for kinds though no cell is special
//   cell      literal                        a value
//             literal!Kind                   a special over the placeholder `literal`
//             !Kind                          a special over a default value
//             -                              short for !Null
//   literal   word                           what the typed readers take
//             'two words'                    a string; '' is a quote in it
//             (cell...)                      a row
//
// Bad text throws std::invalid_argument, bad literals what the typed readers throw.

namespace lum::test {

const core::Type* TypeOf(const std::string& type);
core::SV ColumnOf(const std::string& text,
                  core::SortSpecOrder order = core::SortSpecOrder::UNKNOWN);
/// The set of the cells' values and kinds; needs a collator pool for strings.
core::SV SetOf(const std::string& text);
/// The cells are the members: "P{i,s}: 1 x!Null".
core::LumTuple RowOf(const std::string& text);

/// An array as above, placeholders included. A set likewise behind "S ", a key map as
/// "{name = value, ...}" and a key set as "K<i,s<ROOT>>: !Null=a 1=b", all of them sorted. Any
/// other value as a cell, or as the name of its store type.
std::string TextOf(const core::StoreValue& value);
std::string TextOf(const core::SV& value);
std::string TextOf(const core::LumTuple& row);
std::string TextOf(core::SpecialKind kind);

}  // namespace lum::test

// What GoogleTest shows of a value in a message.
namespace lum::core {

inline void PrintTo(const SV& value, std::ostream* stream) {
    *stream << test::TextOf(value);
}
inline void PrintTo(const LumTuple& row, std::ostream* stream) {
    *stream << test::TextOf(row);
}
inline void PrintTo(SpecialKind kind, std::ostream* stream) {
    *stream << test::TextOf(kind);
}
inline void PrintTo(const RIndirectString& text, std::ostream* stream) {
    *stream << '\'' << text.toStdString() << '\'';
}

}  // namespace lum::core
