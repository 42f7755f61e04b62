#include "core/main/types/Context.h"

#include "lum/core/utility/Fnv.h"

namespace lum::core {
namespace {

constexpr std::size_t kInitialBuckets = 8;
constexpr float kMaxLoadFactor = 4.0f;

/// Precisions that agree in their low four bits share one place on purpose.
unsigned short RealKey(signed char precision, signed char scale) {
    return static_cast<unsigned short>((precision & 0x0F) | static_cast<unsigned char>(scale) << 8);
}

template <typename... Maps>
void Configure(Maps&... maps) {
    (maps.max_load_factor(kMaxLoadFactor), ...);
    (maps.rehash(kInitialBuckets), ...);
}

}  // namespace

InternTable& GetInternTable() {
    return Context::Get().GetNames();
}

std::size_t Context::KeyHash::operator()(unsigned short key) const {
    return FnvHash(key);
}

std::size_t Context::KeyHash::operator()(const Collation& key) const {
    return std::hash<Collation>()(key);
}

std::size_t Context::KeyHash::operator()(const KeyAndElement& key) const {
    return HashCombine(FnvHash(key.first->GetHashValue()), FnvHash(key.second->GetHashValue()));
}

std::size_t Context::KeyHash::operator()(const Members& key) const {
    uint64 hash = 0;
    for (const NamedHeterogeneousType::Member& member : key) {
        hash = HashCombine(hash, member.GetHashValue());
    }
    return hash;
}

std::size_t Context::KeyHash::operator()(const std::vector<const Type*>& key) const {
    uint64 hash = 0;
    for (const Type* member : key) {
        hash = HashCombine(hash, FnvHash(member->GetHashValue()));
    }
    return hash;
}

Context& Context::Get() {
    static const std::unique_ptr<Context> s_context(new Context);
    return *s_context;
}

// Nothing here may ask for the registry, which does not stand before this returns.
Context::Context() {
    Configure(m_real32s, m_real64s, m_strings, m_externals, m_keySets, m_keyMaps, m_tables,
              m_tuples);
    // The default reals come first, so that no parameters take their places in the maps.
    m_defaultReal32 = GetReal(StoreType::Real32, -1, -1);
    m_defaultReal64 = GetReal(StoreType::Real64, -1, -1);
}

Context::~Context() = default;

template <typename T>
const T* Context::Own(std::unique_ptr<const T> type) {
    const T* const pointer = type.get();
    const std::lock_guard guard(m_ownersMutex);
    if constexpr (std::is_base_of_v<Type, T>) {
        m_ownedTypes.push_back(std::move(type));
    } else {
        m_ownedOffsets.push_back(std::move(type));
    }
    return pointer;
}

template <typename Key, typename T, typename Make>
const T* Context::GetOrMake(Map<Key, T>& map, const Key& key, const Make& make) {
    const auto found = map.find(key);
    if (found != map.end()) {
        return found->second;
    }
    const T* const made = Own(std::unique_ptr<const T>(make()));
    return map.insert({key, made}).first->second;
}

const RealType* Context::GetReal(StoreType storeType, signed char precision, signed char scale) {
    return GetOrMake(storeType == StoreType::Real32 ? m_real32s : m_real64s,
                     RealKey(precision, scale),
                     [=] { return new RealType(storeType, precision, scale); });
}

const StringType* Context::GetDefaultString() {
    std::call_once(m_defaultStringFlag, [this] {
        m_defaultString = Own(std::unique_ptr<const StringType>(new StringType(Collation())));
    });
    return m_defaultString;
}

const StringType* Context::GetString(const Collation& collation) {
    // The default collation is known by its name, so that it needs no pool. Any other one does: its
    // equality is the pool's, and is asked even where the map would find no candidate.
    if (collation.IsDefault()) {
        return GetDefaultString();
    }
    if (collation == Collation()) {
        return GetDefaultString();
    }
    return GetOrMake(m_strings, collation, [&] { return new StringType(collation); });
}

const ExternalType* Context::GetExternal(unsigned short typeId) {
    return GetOrMake(m_externals, typeId, [=] { return new ExternalType(typeId); });
}

const ArrayType* Context::MakeArray(const Type* elementType) {
    return Own(std::unique_ptr<const ArrayType>(new ArrayType(elementType)));
}

const SetType* Context::MakeSet(const Type* elementType) {
    return Own(std::unique_ptr<const SetType>(new SetType(elementType)));
}

const KeySetType* Context::GetKeySet(const Type* keyType, const Type* elementType) {
    if (keyType == nullptr || elementType == nullptr) {
        return new KeySetType(keyType, elementType);  // Fails by the check that fits.
    }
    return GetOrMake(m_keySets, KeyAndElement(keyType, elementType),
                     [=] { return new KeySetType(keyType, elementType); });
}

const KeyMapType* Context::GetKeyMap(Members&& members) {
    return GetOrMake(m_keyMaps, members, [&] { return new KeyMapType(Members(members)); });
}

const TableType* Context::GetTable(Members&& members) {
    return GetOrMake(m_tables, members, [&] { return new TableType(Members(members)); });
}

const TupleType* Context::GetTuple(std::vector<const Type*>&& members) {
    return GetOrMake(m_tuples, members,
                     [&] { return new TupleType(std::vector<const Type*>(members)); });
}

const PackedStructOffsets* Context::MakeOffsets(const std::vector<const Type*>& members) {
    return Own(std::make_unique<const PackedStructOffsets>(members));
}

}  // namespace lum::core
