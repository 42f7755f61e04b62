#pragma once

#include "lum/core/Export.h"
#include "lum/core/serialize/JsonOptions.h"
#include "lum/core/utility/LumString.h"

/// Values and stores as JSON text, from which a reader that knows the type of a value rebuilds it:
///
///   a special value   the name of its kind as a string, whatever its type
///   Bool, numbers     literals, as FormatPrimitive writes them; "nan", "+inf", "-inf" as strings
///   String            a string. One that could be read as a special value, or that begins with a
///                     single quote, is written as a quoted literal inside the string: "'Null'"
///   Date, DateTime    strings: "2024-03-01T09:05:00"
///   Color             a string of eight hexadecimal digits, alpha first; or its packed number
///   Tuple             an array of the members, strings by the rule above
///   External          the bytes of SerializeExternalType as a string of hexadecimal digits
///   Array             an array; a special element is the pair of its placeholder and its kind:
///                     [1,[0,"Null"],3]. Strings stand without the quotes of the rule above.
///   Set               an array in ascending order; with special members an array of two, the
///                     array of the values and that of the kinds: [[1,2],["Null"]]
///   KeySet            a dictionary with the keys in ascending order, numbers, dates and colours as
///                     the text of such values, strings as they stand, rows as compact text; with
///                     special keys an array of two, that dictionary and the one of the special
///                     keys by the names of their kinds: [{"a":1},{"Null":2}]
///   KeyMap, Table     a dictionary with the keys in order of their text, each written as the key
///                     segment of its name and the type of its value: {"a:i":1}. Without typed
///                     keys, as the name.
///
/// The same value always gives the same text, but for sets of external values, and for sets and
/// keys of rows that hold a NaN, which have no full order. In readable text arrays of rows and
/// collections have a line for each element, and dictionaries one for each key; all others stand on
/// one line.
///
/// Threads: values are only read, so any number of threads may write one at the same time.
/// Ownership: nothing is kept.
/// Errors: LumRuntimeException with NullSerializedValue for an element that has no value;
///   InvalidDateTime for a date out of range, but below a special kind the default date is written
///   for it; OutOfBounds for an array with an index outside of its storage; IllegalSpecialKind for
///   a kind without a name; CollectionArraySpecials and TupleSetSpecials for special elements
///   beside rows and collections; NotTypedArray, NotTypedSet, NotKeyedCollection for a collection
///   of numbers, strings or rows that are stored as values; UnsupportedPrimitiveKey, plain, with
///   the store type's name, for what has no text; and what the host's functions for external values
///   throw. std::length_error beyond 2^30 units. The text of a writer that was given is of no use
///   then.
/// Cost: linear in the text; numbers and strings of a column go from its storage into the text
///   without an object or a call for each. Sets, key sets, key maps and tables are sorted. Values
///   are walked by recursion without a limit, as deep as they are nested in memory.
namespace lum::core {

class IDataStore;
class JsonSerializer;
class StoreValue;

/// Compact text, typed keys, colours in hexadecimal.
LUM_CORE_API TStringCore SerializeValue(const StoreValue& value);
/// The same as the next item of a writer. Errors: also those of the writer where no item is due.
LUM_CORE_API void SerializeValue(JsonSerializer& serializer, const StoreValue& value);

/// A store is written as its root key map.
LUM_CORE_API TStringCore SerializeDataStore(const IDataStore& store, const JsonOptions& options);
/// With typed keys and colours in hexadecimal, as the next item of a writer.
LUM_CORE_API void SerializeDataStore(JsonSerializer& serializer, const IDataStore& store);
/// Compact text, typed keys, colours in hexadecimal.
LUM_CORE_API TStringCore SerializeDataStoreCompact(const IDataStore& store);

}  // namespace lum::core
