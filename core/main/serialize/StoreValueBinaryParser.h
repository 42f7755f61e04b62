#pragma once

#include <memory>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "core/main/store/ValueArray.h"
#include "core/main/utility/PackagedArrayView.h"
#include "core/main/utility/SharedBatch.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/store/MemberMap.h"
#include "lum/core/store/SortSpecOrder.h"
#include "lum/core/store/StorageTypes.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/LumTuple.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

class CollectionType;
class ExternalType;
class KeySetType;
class TupleType;

// Reads values from the payload that a reader stands in; see StoreValueParser::MakeDataStore. A
// function reads what a value takes, from the byte in front of its list on.
//
// Errors: those of StoreValueParser::MakeDataStore. Reader and this are good for nothing then.
class BinaryValueReader {
public:
    explicit BinaryValueReader(BinaryProtocolReader& reader)
        : m_reader(reader),
          m_buffer(reader.GetSharedBufferReference()),
          m_hasOwnReads(typeid(reader) != typeid(BinaryProtocolReader)),
          m_room(m_hasOwnReads ? kRoomOfOthers : reader.GetRemainingBytes()) {}

    SV ReadKeyMap();
    // A value of a type, or with true a special value of it.
    SV MakeStoreValue(const std::pair<const Type*, bool>& typeAndIsSpecial);

private:
    using SortColumns = std::vector<std::pair<RInternString, SortSpecOrder>>;

    // How many of `count` items may be made room for before any was read. Each item takes a byte of
    // the payload at least, so that all counts of a true payload together fit its length; one that
    // does not is worth no memory, and ends where its items end.
    lumsize_t PlanRoom(lumsize_t count);

    SV ReadNormalValue(const Type* type);
    SV ReadCollectionOrScalar(const Type* type);
    [[gnu::noinline]] SV ReadScalar(const Type* type);
    SpecialKind ReadKind();
    MemberMap ReadMembers(lumsize_t count);
    SV ReadTable();
    std::unique_ptr<SortColumns> ReadSortColumns();
    SV ReadExternal(const ExternalType& type);
    LumTuple ReadRow(const TupleType* type);
    void ReadRowMember(LumTuple& row, lumsize_t index, const Type* type);

    // An item of a segment, as it is stored.
    template <StorageType T>
    T ReadElement(const Type* type);

    SV ReadArray(const CollectionType* type);
    template <StorageType T>
    SV ReadArrayOf(const CollectionType* type);
    template <typename T>
    PackagedArrayView<T> ShareBlock(ArrayView<const T> items);
    template <StorageType T>
    SV MakeArrayOverPayload(const CollectionType* type, PackagedArrayView<T>&& values,
                            PackagedArrayView<SpecialKind>&& specials, BinaryListType binListType);
    template <StorageType T>
    SV ReadPlainArray(const CollectionType* type, BinaryListType binListType);
    template <StorageType T>
    SV ReadConstantArray(const CollectionType* type, BinaryListType binListType);
    template <StorageType T>
    SV ReadCompositeArray(const CollectionType* type, BinaryListType binListType);
    // A segment of elements. Numbers and kinds stay in the payload.
    template <typename T>
    PackagedArrayView<T> ReadSegment(const Type* elementType);
    template <StorageType T>
    std::vector<T> ReadElements(const Type* elementType, lumsize_t count);
    SV ReadSet(const CollectionType* type);
    template <StorageType T>
    SV ReadSetOf(const Type* elementType);

    SV ReadKeySet(const KeySetType& type);
    template <StorageType K>
    K ReadKey(const Type* type);
    template <StorageType K, StorageType V>
    SV ReadKeySetOf(const KeySetType& type);

    // What a subclass reads from need not be the payload.
    static constexpr uint64 kRoomOfOthers = 65536;

    // The heads of the columns that are views into the payload, and the blocks that they view.
    // They keep the payload alive, and nothing else.
    template <typename... T>
    using Batches = std::tuple<SharedBatch<T>...>;
    Batches<ValueArray<unsigned char>, ValueArray<unsigned int>, ValueArray<unsigned long long>>
        m_arrays;
    Batches<UnmanagedRawData<unsigned char>, UnmanagedRawData<unsigned int>,
            UnmanagedRawData<unsigned long long>, UnmanagedRawData<SpecialKind>>
        m_blocks;

    BinaryProtocolReader& m_reader;
    const std::shared_ptr<ISharedDataBuffer> m_buffer;  // That of the payload.
    const bool m_hasOwnReads;                           // A subclass, which is to see each read.
    uint64 m_room;             // Of the payload's bytes, those that no count was granted.
    unsigned int m_level = 0;  // How many values the next one stands in, the root aside.
};

template <StorageType T>
T BinaryValueReader::ReadElement([[maybe_unused]] const Type* type) {
    if constexpr (std::is_same_v<T, unsigned char>) {
        return m_reader.ReadStorage8Bit();
    } else if constexpr (std::is_same_v<T, unsigned int>) {
        return m_reader.ReadStorage32Bit();
    } else if constexpr (std::is_same_v<T, unsigned long long>) {
        return m_reader.ReadStorage64Bit();
    } else if constexpr (std::is_same_v<T, RIndirectString>) {
        return m_reader.ReadString();
    } else if constexpr (std::is_same_v<T, LumTuple>) {
        return ReadRow(&type->As<TupleType>());
    } else {
        return MakeStoreValue({type, /*isSpecial=*/false});
    }
}

}  // namespace lum::core
