#include "tests/support/RandomStores.h"

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/KeyMapFactory.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/TableFactory.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/TupleType.h"
#include "tests/support/ColumnForms.h"
#include "tests/support/ColumnText.h"
#include "tests/support/KeySets.h"
#include "tests/support/RandomColumns.h"

namespace lum::test {
namespace {

using namespace core;

class BytesValue final : public ValueExternal {
public:
    explicit BytesValue(std::vector<unsigned char> bytes)
        : ValueExternal(TStringCore(L"bytes")), m_bytes(std::move(bytes)) {}

    std::unique_ptr<StoreValue> Clone() const override {
        return std::make_unique<BytesValue>(*this);
    }
    uint64 GetHashValue() const override { return m_bytes.empty() ? 0 : m_bytes.front(); }
    bool IsEqual(const StoreValue& other) const override {
        return dynamic_cast<const BytesValue&>(other).m_bytes == m_bytes;
    }
    const std::vector<unsigned char>& GetBytes() const { return m_bytes; }

private:
    std::vector<unsigned char> m_bytes;
};

const Type* OneType(Random& random) {
    static const std::vector<const Type*> s_types = GetElementTypes();
    return s_types[random.Below(s_types.size())];
}

lumsize_t SmallCount(Random& random) {
    return static_cast<lumsize_t>(random.Below(6));
}

SV MakeColumn(Random& random, lumsize_t count) {
    const SV column = MakeRandomColumn(random, OneType(random), count);
    const std::vector<ColumnForm>& forms = GetColumnForms();
    SV formed = forms[random.Below(forms.size())].make(column);
    if (formed == nullptr && random.Below(2) == 0 && count != 0) {
        // Few columns repeat one cell, so constant ones are made of any.
        const SV cell = column->AsArray().GetElement(0);
        formed = cell->IsSpecial() ? nullptr : column->AsArray().GetRange(0, 1, 1);
        formed = formed == nullptr ? nullptr : forms.back().make(formed);
    }
    return formed == nullptr ? column : formed;
}

SV MakeScalar(Random& random) {
    const Type* const type = OneType(random);
    if (random.Below(5) == 0) {
        return factory::MakeSpecial(
            type, static_cast<SpecialKind>(1 + random.Below(kSpecialKindCount - 1)));
    }
    return MakeRandomColumn(random, type, 1)->AsArray().GetElement(0);
}

SV MakeRow(Random& random) {
    const Type* const external = ExternalType::Get(kBytesKindId);
    const TupleType* const type = TupleType::Get({TypeOf("i"), TypeOf("s"), external});
    LumTuple row(type);
    row.SetNthInt32(0, static_cast<int>(random.Bits()));
    row.SetNthSpecial(1, static_cast<SpecialKind>(random.Below(3)));
    row.SetNthExternal(2, MakeBytesValue({1, 2, 3}));
    return factory::MakeTuple(std::move(row));
}

SV MakeTable(Random& random) {
    std::unordered_map<RInternString, SV> columns;
    std::vector<std::pair<RInternString, SortSpecOrder>> sortColumns;
    const lumsize_t rows = SmallCount(random);
    for (const wchar_t* const name : {L"x", L"y", L"Stra\u00dfe"}) {
        const SV column = MakeColumn(random, rows);
        if (random.Below(2) == 0 && column->GetCount() == rows) {
            columns.emplace(RInternString(name), column);
            sortColumns.emplace_back(RInternString(name),
                                     static_cast<SortSpecOrder>(random.Below(4)));
        }
    }
    return factory::MakeTable(std::move(columns), std::move(sortColumns));
}

SV MakeSet(Random& random) {
    const char* const types[] = {"b", "i", "l", "f", "r", "s", "d", "t", "c"};
    return MakeRandomColumn(random, TypeOf(random.OneOf(types)), SmallCount(random))
        ->AsArray()
        .ToSet(/*includeSpecials=*/true);
}

// Rows that differ only below their special members are two keys in memory and one on the wire.
bool HasSpecialMember(const StoreValue& value) {
    if (value.IsSpecial() || !value.GetType()->Is(StoreType::Tuple)) {
        return false;
    }
    const LumTuple& row = value.AsTuple();
    for (lumsize_t i = 0; i < row.GetCount(); ++i) {
        if (row.IsNthSpecial(i)) {
            return true;
        }
    }
    return false;
}

SV MakeKeySet(Random& random) {
    // All widths; the lowest Int64 has no text as a key.
    const char* const keyTypes[] = {"b", "i", "d", "s", "t", "c", "P{i,s}"};
    const SV keys = MakeRandomColumn(random, TypeOf(random.OneOf(keyTypes)), SmallCount(random));
    const SV elements = MakeRandomColumn(random, OneType(random), keys->GetCount());
    // A key set has no room for other entries.
    std::vector<unsigned> fitting;
    for (unsigned i = 0; i < keys->GetCount(); ++i) {
        if (!elements->AsArray().GetElement(i)->IsSpecial() &&
            !HasSpecialMember(*keys->AsArray().GetElement(i))) {
            fitting.push_back(i);
        }
    }
    const auto cut = [&](const SV& column) {
        return column->AsArray().WithIndices(std::vector<unsigned>(fitting), SortSpecOrder::UNORD);
    };
    return KeySetOf(cut(keys), cut(elements));
}

SV MakeHandles(Random& random, int depth) {
    std::vector<SV> cells;
    const bool isOfMaps = random.Below(2) == 0;
    for (lumsize_t i = SmallCount(random); i > 0; --i) {
        cells.push_back(isOfMaps ? MakeRandomStore(random, depth) : MakeBytesValue({7}));
    }
    if (isOfMaps) {
        return factory::MakeArray(KeyMapType::Get({}), std::move(cells), SortSpecOrder::DESC);
    }
    const Type* const type = ExternalType::Get(kBytesKindId);
    if (random.Below(2) == 0) {
        return factory::MakeConstantArray<SV>(type, MakeBytesValue({8, 9}), 5);
    }
    auto kinds = std::make_unique<std::vector<SpecialKind>>(cells.size(), SpecialKind::Null);
    return factory::MakeArray<SV>(type, std::make_unique<std::vector<SV>>(std::move(cells)),
                                  nullptr, std::move(kinds), SortSpecOrder::ASC);
}

SV MakeValue(Random& random, int depth) {
    switch (random.Below(depth == 0 ? 9 : 12)) {
        case 0:
        case 1:
            return MakeScalar(random);
        case 2:
        case 3:
            return MakeColumn(random, SmallCount(random));
        case 4:
            return MakeSet(random);
        case 5:
            return MakeKeySet(random);
        case 6:
            return MakeTable(random);
        case 7:
            return MakeRow(random);
        case 8:
            return MakeBytesValue(std::vector<unsigned char>(random.Below(4), 0xA5));
        case 9:
            return MakeHandles(random, depth - 1);
        default:
            return MakeRandomStore(random, depth - 1);
    }
}

}  // namespace

void RegisterBytesKind() {
    RegisterExternalType(
        kBytesKindId, L"bytes",
        [](const ValueExternal& value) {
            return dynamic_cast<const BytesValue&>(value).GetBytes();
        },
        [](const ArrayView<const unsigned char>& bytes) -> std::shared_ptr<ValueExternal> {
            if (!bytes.IsEmpty() && bytes[0] == 0xFF) {
                return nullptr;
            }
            return std::make_shared<BytesValue>(
                std::vector<unsigned char>(bytes.begin(), bytes.end()));
        });
}

SV MakeBytesValue(std::vector<unsigned char> bytes) {
    return std::make_shared<BytesValue>(std::move(bytes));
}

SV MakeRandomStore(Random& random, int depth) {
    const wchar_t* const names[] = {L"a", L"b", L"a longer name", L"\u20ac", L"0"};
    std::unordered_map<RInternString, SV> members;
    for (std::size_t i = random.Below(5); i > 0; --i) {
        members.emplace(RInternString(random.OneOf(names)), MakeValue(random, depth));
    }
    return factory::MakeKeyMap(std::move(members));
}

}  // namespace lum::test
