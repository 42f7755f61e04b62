#pragma once

/// The names of the library without their definitions, for headers that only name them.

#include "lum/core/store/SortSpecOrder.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/StoreType.h"
#include "lum/core/utility/LumError.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/vtl/OperatorType.h"

namespace lumsys {
class TStringCore;
}

namespace lum::core {

using lumsys::TStringCore;

// Utility.
class Collation;
class ICollator;
class ICollatorPool;
class LumColor;
class LumDateTime;
class LumDateTimeParts;
class LumException;
class LumISO8601DateTimeParts;
class LumLogger;
class LumLogicException;
class LumRuntimeException;
class LumStreamLogger;
class LumTuple;
class LumTupleData;
class RFormatString;
class RIndirectString;
class RInternString;

// Types.
class ArrayType;
class BoolType;
class CollectionType;
class ColorType;
class DateTimeType;
class DateType;
class ExternalType;
class HeterogeneousType;
class IntType;
class KeyMapType;
class KeySetType;
class NamedHeterogeneousType;
class RealType;
class SetType;
class StringType;
class TableType;
class TupleType;
class Type;
class TypeRef;
class OptionalTypeRef;
class VariableTypeRef;

// Values, collections and the store.
class ConstRawDataView;
class IDataStore;
class IJsonObject;
class ISharedArrayBuffer;
class ISharedDataBuffer;
class IStoreArray;
class IStoreCollection;
class IStoreKeyMap;
class IStoreMutableCollection;
class IStoreSet;
class IStoreTable;
class IStoreValueIterator;
class IUniformCollection;
class KeyPath;
class KeySegment;
class RawData;
class RawDataView;
class TemporaryRawData;
class ValueExternal;
template <typename T>
class ArrayAdapter;
template <typename T>
class ArrayCursor;
template <typename T>
class ArrayView;
template <typename K, typename V>
class DictionaryCursor;
template <typename K, typename V>
class IStoreDictionary;
template <typename V, V kDefault>
class KeyPathPrefixTreeMap;
template <typename T>
class ITypedArray;
template <typename T>
class ITypedSet;
template <typename K, typename V>
class KeySetAdapter;
template <typename T>
class SetAdapter;
template <typename T>
class SetCursor;

// Programs.
class FunctionSpec;
class ITypeLookup;
class ITypeRecorder;
class KeyPathPrefixTree;
class KeyPathTypeLookup;
class TransformSpec;
class ValueSpec;
enum class BufferType : unsigned int;
struct GraphEdge;

// Text and binary forms.
class BinaryListType;
class BinaryProtocolCreator;
class BinaryProtocolReader;
class BinaryValueExtractor;
class BinaryValuePacker;
class JsonSerializer;
class KeyPathSerializerCache;
struct JsonOptions;

// Functions.
class FunctionInfo;
class FunctionKey;
class FunctionRegistry;
class IFunctionLookup;
class IRawBinaryFunctor;
class IRawUnaryFunctor;
class RegisteredFunctions;
class RegistryOfBinaryFunctions;
class RegistryOfMultinaryFunctions;
class RegistryOfUnaryFunctions;
template <typename Mapped>
class FunctionRegistryMap;
template <typename RawFunctor>
class LumRawFunctions;
using LumRawBinaryFunctions = LumRawFunctions<IRawBinaryFunctor>;
using LumRawUnaryFunctions = LumRawFunctions<IRawUnaryFunctor>;

}  // namespace lum::core
