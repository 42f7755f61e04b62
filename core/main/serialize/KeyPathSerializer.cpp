#include "core/main/serialize/KeyPathSerializer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "core/main/serialize/QuotedText.h"
#include "core/main/serialize/VtlScanner.h"
#include "lum/core/Check.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"

namespace lum::core {
namespace {

// Names -------------------------------------------------------------------------------------------

// Whether the scanner reads the whole text as one word or one integer.
bool NeedsNoQuotes(const TStringCore& name) {
    const VtlToken token = VtlCursor(name.view()).Scan();
    return (token.Is(VtlTokenKind::Identifier) || token.Is(VtlTokenKind::IntegerLiteral)) &&
           token.GetStart() == 0 && token.GetEnd() == name.length();
}

void AppendName(TStringCore& out, const TStringCore& name) {
    if (name.isEmpty() || NeedsNoQuotes(name)) {
        out += name;
    } else {
        AppendQuoted(out, name);
    }
}

// Types -------------------------------------------------------------------------------------------

template <typename T>
const T& AsClass(const Type& source) {
    const T* const type = source.TryAs<T>();
    LUM_INVARIANT_NOT_NULL(type, LumError::Unspecified);
    return *type;
}

void AppendType(TStringCore& out, const Type& type, bool fullForm);

void AppendParameters(TStringCore& out, const RealType& type) {
    if (type.GetPrecision() == -1 && type.GetScale() == -1) {
        return;
    }
    out += u'<';
    out += TStringCore::number(int{type.GetPrecision()});
    out += u',';
    out += TStringCore::number(int{type.GetScale()});
    out += u'>';
}

void AppendParameters(TStringCore& out, const StringType& type) {
    // The default collation has one type; asking for equality would take a collator pool.
    if (&type == StringType::Get()) {
        return;
    }
    out += u'<';
    out += type.GetCollation().GetLocale().GetValue();
    out += u'>';
}

void AppendParameters(TStringCore& out, const ExternalType& type) {
    out += u'<';
    out += type.GetExternalTypeName();
    out += u'>';
}

// Nothing where there are no members.
template <typename Member, typename AppendMember>
void AppendInBraces(TStringCore& out, const std::vector<Member>& members,
                    const AppendMember& appendMember) {
    if (members.empty()) {
        return;
    }
    const char16_t* before = u"{ ";
    for (const Member& member : members) {
        out.append(before, 2);
        appendMember(member);
        before = u", ";
    }
    out.append(u" }", 2);
}

void AppendParameters(TStringCore& out, const TupleType& type) {
    AppendInBraces(out, type.GetMembers(),
                   [&](const Type* member) { AppendType(out, *member, /*fullForm=*/true); });
}

void AppendParameters(TStringCore& out, const CollectionType& type) {
    out += u'<';
    if (type.Is(StoreType::KeySet)) {
        AppendType(out, *AsClass<KeySetType>(type).GetKeyType(), /*fullForm=*/true);
        out += u',';
    }
    AppendType(out, *type.GetElementType(), /*fullForm=*/true);
    out += u'>';
}

void AppendParameters(TStringCore& out, const NamedHeterogeneousType& type) {
    AppendInBraces(out, type.GetMembers(), [&](const NamedHeterogeneousType::Member& member) {
        AppendName(out, member.GetName());
        out += u':';
        AppendType(out, *member.GetType(), /*fullForm=*/true);
    });
}

void AppendType(TStringCore& out, const Type& type, bool fullForm) {
    out += type.Type::ToString();  // The code alone.
    switch (type.GetStoreType()) {
        case StoreType::Bool:
        case StoreType::Int32:
        case StoreType::Int64:
        case StoreType::Date:
        case StoreType::DateTime:
        case StoreType::Color:
            return;
        case StoreType::Real32:
        case StoreType::Real64:
            return AppendParameters(out, AsClass<RealType>(type));
        case StoreType::String:
            return AppendParameters(out, AsClass<StringType>(type));
        case StoreType::Tuple:
            return AppendParameters(out, AsClass<TupleType>(type));
        case StoreType::External:
            return AppendParameters(out, AsClass<ExternalType>(type));
        case StoreType::Array:
        case StoreType::Set:
        case StoreType::KeySet:
            return AppendParameters(out, AsClass<CollectionType>(type));
        case StoreType::KeyMap:
        case StoreType::Table:
            if (fullForm) {
                AppendParameters(out, AsClass<NamedHeterogeneousType>(type));
            }
            return;
    }
}

// Segments ----------------------------------------------------------------------------------------

void AppendUncached(TStringCore& out, const KeySegment& segment, bool includeType, bool fullForm) {
    const TStringCore& name = segment.GetSegment();
    AppendName(out, name);
    if (includeType && segment.HasType() && !name.isEmpty()) {
        out += u':';
        AppendType(out, *segment.GetType(), fullForm);
    }
}

}  // namespace

void AppendKeySegment(TStringCore& out, const KeySegment& segment, bool includeType, bool fullForm,
                      KeyPathSerializerCache* cache) {
    if (cache == nullptr) {
        AppendUncached(out, segment, includeType, fullForm);
        return;
    }
    const KeyPathSerializerCache::Key key{segment.GetSegment(), segment.GetType(), includeType,
                                          fullForm};
    const TStringCore* known = cache->TryGet(key);
    if (known == nullptr) {
        TStringCore text;
        AppendUncached(text, segment, includeType, fullForm);
        known = &cache->Add(key, std::move(text));
    }
    out += *known;
}

void AppendKeyPath(TStringCore& out, const KeyPath& path, bool includeTypes,
                   KeyPathSerializerCache* cache) {
    const std::size_t start = out.length();
    for (const KeySegment& segment : path.GetSegments()) {
        if (out.length() != start) {
            out += u'/';
        }
        AppendKeySegment(out, segment, includeTypes, /*fullForm=*/includeTypes, cache);
    }
}

TStringCore KeySegment::ToString() const {
    TStringCore text;
    AppendKeySegment(text, *this, /*includeType=*/true, /*fullForm=*/true, nullptr);
    return text;
}

TStringCore KeyPath::ToString() const {
    TStringCore text;
    AppendKeyPath(text, *this, /*includeTypes=*/false, nullptr);
    return text;
}

// KeyPathSerializerCache --------------------------------------------------------------------------

KeyPathSerializerCache::KeyPathSerializerCache() = default;
KeyPathSerializerCache::~KeyPathSerializerCache() = default;

unsigned int KeyPathSerializerCache::HashOf(const Key& key) noexcept {
    const unsigned int flags = (key.includeType ? 1u : 0u) | (key.fullForm ? 2u : 0u);
    // Types are objects of many bytes, whose addresses leave room for the flags.
    const uint64 type = uint64{reinterpret_cast<std::uintptr_t>(key.type)} ^ flags;
    const uint64 mixed = key.name.GetStringId() * 0x9E3779B97F4A7C15 ^ type * 0xC2B2AE3D27D4EB4F;
    return static_cast<unsigned int>(mixed >> 32 ^ mixed >> 17);
}

std::size_t KeyPathSerializerCache::FindPlace(const Key& key, unsigned int hash) const noexcept {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t place = hash & mask;
    while (m_slots[place].entry != nullptr &&
           (m_slots[place].hash != hash || !(m_slots[place].entry->key == key))) {
        place = (place + 1) & mask;
    }
    return place;
}

const TStringCore* KeyPathSerializerCache::TryGet(const Key& key) const {
    if (m_slots.empty()) {
        return nullptr;
    }
    const Entry* const entry = m_slots[FindPlace(key, HashOf(key))].entry;
    return entry == nullptr ? nullptr : &entry->text;
}

const TStringCore& KeyPathSerializerCache::Add(const Key& key, TStringCore&& text) {
    if (2 * m_entries.size() >= m_slots.size()) {
        GrowIndex();
    }
    const unsigned int hash = HashOf(key);
    Slot& slot = m_slots[FindPlace(key, hash)];
    if (slot.entry == nullptr) {
        m_entries.push_back({key, std::move(text)});
        slot = {&m_entries.back(), hash};
    }
    return slot.entry->text;
}

void KeyPathSerializerCache::GrowIndex() {
    constexpr std::size_t kFirstCount = 64;
    std::vector<Slot> former(std::max(2 * m_slots.size(), kFirstCount));
    former.swap(m_slots);
    for (const Slot& slot : former) {
        if (slot.entry != nullptr) {
            m_slots[FindPlace(slot.entry->key, slot.hash)] = slot;
        }
    }
}

}  // namespace lum::core
