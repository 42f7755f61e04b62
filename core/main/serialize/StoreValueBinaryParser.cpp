#include "core/main/serialize/StoreValueBinaryParser.h"

#include <algorithm>

#include "core/main/serialize/NestingLimit.h"
#include "lum/core/Check.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/store/ArrayAdapter.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"

namespace lum::core {

lumsize_t BinaryValueReader::PlanRoom(lumsize_t count) {
    const auto room = static_cast<lumsize_t>(std::min<uint64>(count, m_room));
    m_room -= room;
    return room;
}

SpecialKind BinaryValueReader::ReadKind() {
    const SpecialKind kind = m_reader.ReadSpecial();
    LUM_CHECK(static_cast<unsigned int>(kind) < kSpecialKindCount, LumError::IllegalSpecialKind);
    return kind;
}

SV BinaryValueReader::MakeStoreValue(const std::pair<const Type*, bool>& typeAndIsSpecial) {
    const auto [type, isSpecial] = typeAndIsSpecial;
    LUM_CHECK_NOT_NULL(type, LumError::InvalidStoreType);
    if (isSpecial) {
        return factory::MakeSpecial(type, ReadKind());
    }
    return ReadNormalValue(type);
}

SV BinaryValueReader::ReadNormalValue(const Type* type) {
    LUM_CHECK(m_level < kMaxNestingLevels, LumError::InvalidBinaryData);
    ++m_level;
    SV value = ReadCollectionOrScalar(type);
    --m_level;
    return value;
}

// Collections nest, so what their readers take of the stack counts; single values are read
// elsewhere.
SV BinaryValueReader::ReadCollectionOrScalar(const Type* type) {
    switch (type->GetStoreType()) {
        case StoreType::Array:
            return ReadArray(&type->As<ArrayType>());
        case StoreType::Set:
            return ReadSet(&type->As<SetType>());
        case StoreType::KeySet:
            return ReadKeySet(type->As<KeySetType>());
        case StoreType::KeyMap:
            return ReadKeyMap();
        case StoreType::Table:
            return ReadTable();
        default:
            return ReadScalar(type);
    }
}

SV BinaryValueReader::ReadScalar(const Type* type) {
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return factory::MakeBool(m_reader.ReadBool());
        case StoreType::Int32:
            return factory::MakeInt32(m_reader.ReadInt32());
        case StoreType::Int64:
            return factory::MakeInt64(m_reader.ReadInt64());
        case StoreType::Real32: {
            const auto& real = type->As<RealType>();
            return factory::MakeReal32(m_reader.ReadReal32(), real.GetPrecision(), real.GetScale());
        }
        case StoreType::Real64: {
            const auto& real = type->As<RealType>();
            return factory::MakeReal64(m_reader.ReadReal64(), real.GetPrecision(), real.GetScale());
        }
        case StoreType::String:
            return factory::MakeString(m_reader.ReadString(),
                                       type->As<StringType>().GetCollation());
        case StoreType::Date:
            return factory::MakeDate(m_reader.ReadDateTime());
        case StoreType::DateTime:
            return factory::MakeDateTime(m_reader.ReadDateTime());
        case StoreType::Color:
            return factory::MakeColor(m_reader.ReadColor());
        case StoreType::Tuple:
            return factory::MakeTuple(ReadRow(&type->As<TupleType>()));
        case StoreType::External:
            return ReadExternal(type->As<ExternalType>());
        default:
            LUM_FAIL(LumError::InvalidStoreType);
    }
}

// Key maps and tables -----------------------------------------------------------------------------

MemberMap BinaryValueReader::ReadMembers(lumsize_t count) {
    // Room for a member is large. More than this comes as members do.
    constexpr lumsize_t kMembersAtOnce = 1024;
    MemberMap members;
    members.Reserve(std::min(PlanRoom(count), kMembersAtOnce));
    for (lumsize_t i = 0; i < count; ++i) {
        const TStringCore& name = m_reader.ReadStringKey();
        SV value = MakeStoreValue(m_reader.ReadKeyType());
        // Names are remembered for good, so not before their values have turned out to be some.
        members.Insert(name, std::move(value));
    }
    return members;
}

SV BinaryValueReader::ReadKeyMap() {
    MemberMap members = ReadMembers(m_reader.BeginDictionaryType());
    m_reader.EndDictionaryType();
    return factory::MakeKeyMap(std::move(members));
}

SV BinaryValueReader::ReadTable() {
    const lumsize_t count = m_reader.BeginTableType();
    std::unique_ptr<SortColumns> sortColumns = ReadSortColumns();
    MemberMap columns = ReadMembers(count);
    m_reader.EndTableType();
    return factory::MakeTable(std::move(columns), std::move(sortColumns));
}

// The two lists may come in any form of an array, so a few bytes may state any number of columns.
std::unique_ptr<BinaryValueReader::SortColumns> BinaryValueReader::ReadSortColumns() {
    const auto checkIsTrue = [](bool condition) {
        if (!condition) {
            LUM_FAIL(LumError::InvalidBinaryData, L"corrupt table sort metadata");
        }
    };
    const ArrayAdapter<RIndirectString> names(ReadArray(ArrayType::Get(StringType::Get())));
    const ArrayAdapter<int> orders(ReadArray(ArrayType::Get(IntType::Get32())));
    const lumsize_t count = names.GetCount();
    checkIsTrue(count == orders.GetCount() && PlanRoom(count) == count);
    auto sortColumns = std::make_unique<SortColumns>();
    sortColumns->reserve(count);
    auto order = orders.GetAdapterWithSpecials();
    for (auto name = names.GetAdapterWithSpecials(); !name.IsAtEnd(); ++name, ++order) {
        checkIsTrue(!name.IsSpecial() && !order.IsSpecial());
        checkIsTrue(*order >= static_cast<int>(SortSpecOrder::UNKNOWN) &&
                    *order <= static_cast<int>(SortSpecOrder::UNORD));
        sortColumns->emplace_back(*name, static_cast<SortSpecOrder>(*order));
    }
    return sortColumns;
}

// Values of the host, and rows --------------------------------------------------------------------

SV BinaryValueReader::ReadExternal(const ExternalType& type) {
    const BinaryListType listType = m_reader.BeginListType();
    LUM_CHECK_TEXT("(p.BeginListType().GetContainerType() == BinaryContainerType::ByteBlob)",
                   listType.GetContainerType() == BinaryContainerType::ByteBlob,
                   LumError::InvalidListType);
    const ArrayView<const unsigned char> bytes =
        m_reader.ReadStorage8BitArray(m_reader.BeginListData());
    SV value = DeserializeExternalType(type.GetExternalTypeId(), bytes);
    LUM_CHECK_NOT_NULL(value, LumError::InvalidBinaryData);  // The host's function gave none.
    m_reader.EndListData();
    m_reader.EndListType();
    return value;
}

LumTuple BinaryValueReader::ReadRow(const TupleType* type) {
    const BinaryListType listType = m_reader.BeginListType();
    LUM_CHECK(listType.GetContainerType() == BinaryContainerType::Tuple, LumError::ExpectedTuple);
    const lumsize_t valueCount = m_reader.BeginListData();
    LUM_CHECK(valueCount == type->GetMembers().size(), LumError::Unspecified);
    ArrayView<const SpecialKind> kinds;
    if (listType.HasSpecials()) {
        kinds = m_reader.ReadSpecialArray(valueCount);
        m_reader.EndListData();
        m_reader.BeginListData();
    }
    LumTuple row(type);
    for (lumsize_t i = 0; i < valueCount; ++i) {
        const SpecialKind kind = kinds.IsEmpty() ? SpecialKind::Normal : kinds[i];
        LUM_CHECK(static_cast<unsigned int>(kind) < kSpecialKindCount,
                  LumError::IllegalSpecialKind);
        if (kind != SpecialKind::Normal) {
            row.SetNthSpecialUnsafe(i, kind);
        } else {
            ReadRowMember(row, i, type->GetMembers()[i]);
        }
    }
    m_reader.EndListData();
    m_reader.EndListType();
    return row;
}

void BinaryValueReader::ReadRowMember(LumTuple& row, lumsize_t index, const Type* type) {
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return row.SetNthBoolUnsafe(index, m_reader.ReadBool());
        case StoreType::Int32:
            return row.SetNthInt32Unsafe(index, m_reader.ReadInt32());
        case StoreType::Int64:
            return row.SetNthInt64Unsafe(index, m_reader.ReadInt64());
        case StoreType::Real32:
            return row.SetNthReal32Unsafe(index, m_reader.ReadReal32());
        case StoreType::Real64:
            return row.SetNthReal64Unsafe(index, m_reader.ReadReal64());
        case StoreType::String:
            return row.SetNthStringUnsafe(index, m_reader.ReadString());
        case StoreType::Date:
            return row.SetNthDateUnsafe(index, m_reader.ReadDateTime());
        case StoreType::DateTime:
            return row.SetNthDateTimeUnsafe(index, m_reader.ReadDateTime());
        case StoreType::Color:
            return row.SetNthColorUnsafe(index, m_reader.ReadColor());
        case StoreType::External:
            return row.SetNthExternalUnsafe(index, ReadExternal(type->As<ExternalType>()));
        default:
            LUM_FAIL(LumError::InvalidStoreType);  // The type's maker takes no other members.
    }
}

namespace StoreValueParser {

std::shared_ptr<IDataStore> MakeDataStore(BinaryProtocolReader& reader) {
    return factory::MakeDataStore(BinaryValueReader(reader).ReadKeyMap());
}

}  // namespace StoreValueParser

}  // namespace lum::core
