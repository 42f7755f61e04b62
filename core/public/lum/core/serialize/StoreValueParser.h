#pragma once

#include <memory>

#include "lum/core/Export.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

class BinaryProtocolReader;
class IDataStore;
class IJsonObject;

/// Values and stores from the JSON text that StoreValueSerializer writes, and stores from payloads.
/// What follows is told of the text; the operation tells it of payloads.
///
/// The text says nothing of types but in the keys of dictionaries, which are key segments with the
/// type of their value: {"a:A<i>":[1,2]}. From there on, the type says how an item is read.
///
/// A value's string that is a name of a special kind is the special value of the expected type; one
/// that is a word or a quoted literal stands for its text. Elements of arrays, sets and key sets
/// are strings as they stand, and special in a pair or a list of kinds of their own.
///
/// What was written reads back, but for
/// - untyped keys and colours as integers, which cannot be read;
/// - the sort statements of tables, and the constant or composite form of arrays, which text lacks;
/// - Real32, of which eight digits are written, and the placeholder date below a special that had
///   none; the placeholders of special members of rows, which are not written;
/// - strings as values of their own and in rows: blanks around a single word, and what follows a
///   zero; elements and members of other collections: what follows a zero;
/// - lone surrogates anywhere;
/// - names that a key segment cannot spell: empty ones, digits behind a zero, those with zeros;
/// - in key sets, the lowest Int64 as a key, and strings with quotes or backslashes in rows that
///   are keys, since these are unescaped twice;
/// - external values, by what the host's functions do.
///
/// Threads: any; beside what is made only the tables of names and types are touched, which never
///   forget.
/// Ownership: what is made is the caller's. Nothing of the text is kept.
/// Errors: nothing partial is given. LumRuntimeException:
///   JsonParseFailure from the text; KeyPathLacksType for a key without a type, and those of
///   KeyPath::ParseString for one that is no segment;
///   KeyMapNeedsDictionary, TableValueNotArray, JsonArrayExpected for arrays and sets,
///   KeySetNeedsContainer, TupleNeedsArray, JsonStringExpected for an item of another form than its
///   type's;
///   ArrayContentExpected, SpecialPairEmpty, SpecialPairShort, SpecialPairLong for the pair of a
///   special element; CollectionArraySpecials where elements cannot be special;
///   NestedSpecialsExpected, UnexpectedSetContent for sets; UnexpectedKeySetContent,
///   NestedSpecialsExpected for key sets; TupleSizeMismatch for too few members of a row;
///   CannotParseSpecialKind; NullArgument for an external value that the host does not make; those
///   of the typed readers for dates, colours, bytes and keys; those of making the value, such as
///   ColumnSizeMismatch.
///   std::out_of_range, "invalid vector subscript", for too many members of a row. The exceptions
///   of IJsonObject for a number or string that is none. What the host's functions throw.
/// Cost: linear in the text; a column is read without an object for each element. Stack and time
///   also depend on the nesting, which the JSON parser limits.
namespace StoreValueParser {

/// A store with the members of the root, which is a dictionary.
LUM_CORE_API std::shared_ptr<IDataStore> MakeDataStore(const TStringCore& json);
LUM_CORE_API SV MakeKeyMap(const TStringCore& json);
/// The value of that type.
/// Errors: also NullArgument for a null type or object.
LUM_CORE_API SV MakeStoreValueFromJsonObject(const Type* type,
                                             const std::shared_ptr<IJsonObject>& object);

/// A store from the root dictionary of the reader's payload, as SerializeDataStore writes it. The
/// reader then stands behind the root, ready for the next payload of its stream.
///
/// Values come back in the form that was written: numbers as views into the payload, constant and
/// composite arrays as such, statements of order with them. Of members, keys and entries under one
/// name or key the first counts.
///
/// Threads: the reader belongs to this thread; the values may be read on any.
/// Ownership: the store is the caller's. Columns of numbers and of kinds, and composite arrays'
///   indices, keep the payload's buffer alive, whatever becomes of the reader and of the caller's
///   share; all else is copied out of it.
/// Errors: nothing partial is given; the reader is good for nothing but destruction then. A payload
///   may be any bytes. LumRuntimeException with the codes of BinaryProtocolReader and
///   InvalidStoreType; NormalBoxedSpecial for special values that are none, IllegalSpecialKind for
///   a kind without a name, but not within a column of kinds; InvalidListType for a list that is
///   not of the type's kind, ExpectedTuple for one that is no row, Unspecified for a row of another
///   size; ListValueCountMismatch for a composite array with segments of unlike length;
///   NestedCollectionSpecials for special collections in an array; InvalidBinaryData for values
///   that nest deeper than 256 levels, for an index of a composite array outside of its runs, for
///   an external value that the host does not make, and, with "corrupt table sort metadata", for a
///   table's statement of order that is none; those of making the value, such as
///   SpecialsSizeMismatch, ColumnSizeMismatch, TableColumnNotArray, and OutOfRange for runs of 2^32
///   elements and more; those of the hash of strings, as without a collator pool. Also what
///   BinaryProtocolReader and the host's functions for external values throw.
/// Cost: O(1) a column of numbers, whatever its length; else linear in the payload, but for keys
///   and members whose hashes a hostile payload chose to collide. A payload takes at most 64 KiB
///   and 256 times its size of memory, beside what is remembered of names and types.
LUM_CORE_API std::shared_ptr<IDataStore> MakeDataStore(BinaryProtocolReader& reader);

}  // namespace StoreValueParser

}  // namespace lum::core
