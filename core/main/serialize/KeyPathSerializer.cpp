#include "core/main/serialize/KeyPathSerializer.h"

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
#include "lum/core/utility/Fnv.h"

namespace lum::core {
namespace {

// Names -------------------------------------------------------------------------------------------

// Whether the scanner reads the whole text as one word or one integer.
bool NeedsNoQuotes(const TStringCore& name) {
    VtlToken token;
    VtlCursor(name, /*skipValue=*/true).Scan(token);
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

std::size_t KeyPathSerializerCache::KeyHash::operator()(const Key& key) const {
    const unsigned int flags = (key.includeType ? 1u : 0u) | (key.fullForm ? 2u : 0u);
    const uint64 type = reinterpret_cast<std::uintptr_t>(key.type);
    return HashCombine(HashCombine(key.name.GetStringId(), type), flags);
}

const TStringCore* KeyPathSerializerCache::TryGet(const Key& key) const {
    const auto found = m_texts.find(key);
    return found == m_texts.end() ? nullptr : &found->second;
}

const TStringCore& KeyPathSerializerCache::Add(const Key& key, TStringCore&& text) {
    return m_texts.try_emplace(key, std::move(text)).first->second;
}

}  // namespace lum::core
