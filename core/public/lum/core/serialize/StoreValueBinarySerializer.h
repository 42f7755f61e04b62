#pragma once

#include "lum/core/Export.h"

namespace lum::core {

class BinaryProtocolCreator;
class IDataStore;

/// Writes a store as the root dictionary of a payload, which `creator` then finalizes.
/// StoreValueParser::MakeDataStore reads it; docs/wire-format.md tells the form of each value.
///
/// Values keep the form in which they stand in memory: constant and composite arrays stay as small
/// as they are, with their indices and kinds. A plain array with indices is the exception: its
/// elements are written in their order, and it comes back without indices. Statements of order
/// are kept in all forms, and so are placeholders below special elements.
///
/// Entries of key maps, tables, sets and key sets are written in the order of their containers,
/// so the bytes of equal stores may differ.
///
/// Threads: the store is only read; the creator belongs to this thread.
/// Ownership: the creator keeps shares of large columns until it finalizes the payload, and copies
///   all else. Later changes of key maps do not reach it.
/// Errors: LumRuntimeException with
///   NullArgument for a store without a root;
///   NullSerializedValue for a member or an element that has no value, placeholders of special
///   elements included;
///   CollectionArraySpecials for a special value among the elements that an array, a set, a row or
///   a key set stores as values, since only kinds of their own have room there, and for arrays of
///   collections with kinds; TupleSetSpecials for sets of rows with kinds;
///   NotTypedArray, NotTypedSet, NotKeyedCollection for a collection of numbers, strings or rows
///   that are stored as values; OutOfBounds for an array with an index outside of its storage;
///   UnsupportedPrimitiveKey, plain, with the store type's name, for what has no form;
///   those of the creator for its state;
/// and what the host's functions for external values throw. What was written by then stays in the
/// creator, which is good for nothing but destruction.
/// Cost: linear; numbers without indices go into the payload by one copy of the column. Values are
/// walked by recursion without a limit, as deep as they are nested in memory; a reader takes 256
/// levels.
LUM_CORE_API void SerializeDataStore(BinaryProtocolCreator& creator, const IDataStore& store);

}  // namespace lum::core
