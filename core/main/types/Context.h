#pragma once

#include <tbb/concurrent_unordered_map.h>

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "core/main/types/PackedStructOffsets.h"
#include "core/main/utility/InternTable.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"

namespace lum::core {

/// The registry of the canonical types, and with it the table of names: one object, made on first
/// use and destroyed at unload.
///
/// A look-up of a known type takes no lock. A new type is built first, then put into the owner
/// list, then published; where another thread was quicker, its type is the one that is handed out,
/// and the loser stays in the owner list, never returned. A constructor may come back for the types
/// that it is made of, since no lock is held then.
class Context {
public:
    static Context& Get();

    Context();
    ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    const BoolType m_bool;
    const IntType m_int32{StoreType::Int32};
    const IntType m_int64{StoreType::Int64};
    const DateType m_date;
    const DateTimeType m_dateTime;
    const ColorType m_color;
    const RealType* m_defaultReal32 = nullptr;
    const RealType* m_defaultReal64 = nullptr;

    const RealType* GetReal(StoreType storeType, signed char precision, signed char scale);
    const StringType* GetDefaultString();
    const StringType* GetString(const Collation& collation);
    const ExternalType* GetExternal(unsigned short typeId);
    const ArrayType* MakeArray(const Type* elementType);
    const SetType* MakeSet(const Type* elementType);
    const KeySetType* GetKeySet(const Type* keyType, const Type* elementType);
    const KeyMapType* GetKeyMap(std::vector<NamedHeterogeneousType::Member>&& members);
    const TableType* GetTable(std::vector<NamedHeterogeneousType::Member>&& members);
    const TupleType* GetTuple(std::vector<const Type*>&& members);
    const PackedStructOffsets* MakeOffsets(const std::vector<const Type*>& members);

    InternTable& GetNames() noexcept { return m_names; }

private:
    using Members = std::vector<NamedHeterogeneousType::Member>;
    using KeyAndElement = std::pair<const Type*, const Type*>;

    // Hashes of the keys; see the .cpp file.
    struct KeyHash {
        std::size_t operator()(unsigned short key) const;
        std::size_t operator()(const Collation& key) const;
        std::size_t operator()(const KeyAndElement& key) const;
        std::size_t operator()(const Members& key) const;
        std::size_t operator()(const std::vector<const Type*>& key) const;
    };
    template <typename Key, typename T>
    using Map = tbb::concurrent_unordered_map<Key, const T*, KeyHash>;

    template <typename T>
    const T* Own(std::unique_ptr<const T> type);
    template <typename Key, typename T, typename Make>
    const T* GetOrMake(Map<Key, T>& map, const Key& key, const Make& make);

    InternTable m_names;

    Map<unsigned short, RealType> m_real32s;
    Map<unsigned short, RealType> m_real64s;
    Map<Collation, StringType> m_strings;
    Map<unsigned short, ExternalType> m_externals;
    Map<KeyAndElement, KeySetType> m_keySets;
    Map<Members, KeyMapType> m_keyMaps;
    Map<Members, TableType> m_tables;
    Map<std::vector<const Type*>, TupleType> m_tuples;

    std::once_flag m_defaultStringFlag;
    const StringType* m_defaultString = nullptr;

    std::mutex m_ownersMutex;  // Over the two lists below.
    std::vector<std::unique_ptr<const Type>> m_ownedTypes;
    std::vector<std::unique_ptr<const PackedStructOffsets>> m_ownedOffsets;
};

}  // namespace lum::core
