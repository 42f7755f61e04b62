#include "core/main/serialize/KeyPathParser.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "core/main/serialize/NestingLimit.h"
#include "core/main/serialize/VtlScanner.h"
#include "lum/core/Check.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StoreTypeSerializerUtils.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"

namespace lum::core {
namespace {

using Kind = VtlTokenKind;

bool IsName(const VtlToken& token) {
    return token.Is(Kind::Identifier) || token.Is(Kind::IntegerLiteral) ||
           token.Is(Kind::StringLiteral);
}

// Types -------------------------------------------------------------------------------------------

// Reads a type. The readers of its parts give null, or false, once m_error says why.
class TypeReader {
public:
    explicit TypeReader(VtlScanner& scanner) : m_scanner(scanner) {}

    const Type* Read();

    LumError GetError() const { return m_error; }

private:
    using Members = std::vector<NamedHeterogeneousType::Member>;

    bool Accept(Kind kind) { return m_scanner.Accept(kind); }
    bool Expect(Kind kind) { return Accept(kind) || Fail(LumError::UnexpectedToken); }
    bool Fail(LumError error) {
        m_error = error;
        return false;
    }

    bool ReadCode(StoreType& storeType);
    const Type* ReadBehindCode(StoreType storeType);
    bool ReadParameter(signed char& parameter);
    // Out of line, so that the stack of a level holds the variables of its own form alone.
    [[gnu::noinline]] const Type* ReadReal(StoreType storeType);
    [[gnu::noinline]] const Type* ReadString();
    [[gnu::noinline]] const Type* ReadExternal();
    [[gnu::noinline]] const Type* ReadCollection(StoreType storeType);
    [[gnu::noinline]] const Type* ReadKeySet();
    [[gnu::noinline]] const Type* ReadTuple();
    [[gnu::noinline]] const Type* ReadNamed(StoreType storeType);
    bool ReadMember(Members& members);

    VtlScanner& m_scanner;
    unsigned int m_level = 0;
    LumError m_error = LumError::Unspecified;
};

const Type* TypeReader::Read() {
    StoreType storeType = {};
    if (m_level == kMaxNestingLevels) {
        Fail(LumError::UnexpectedToken);
        return nullptr;
    }
    if (!ReadCode(storeType)) {
        return nullptr;
    }
    ++m_level;
    const Type* const type = ReadBehindCode(storeType);
    --m_level;
    return type;
}

bool TypeReader::ReadCode(StoreType& storeType) {
    if (!Expect(Kind::Identifier)) {
        return false;
    }
    const std::u16string_view text = m_scanner.GetCurrent().GetUnits();
    if (text.size() != 1) {
        return Fail(LumError::InvalidStoreType);
    }
    const char16_t* const code = std::find(std::begin(s_types), std::end(s_types), text[0]);
    if (code == std::end(s_types)) {
        return Fail(LumError::UnknownTypeName);
    }
    storeType = static_cast<StoreType>(code - s_types);
    return true;
}

const Type* TypeReader::ReadBehindCode(StoreType storeType) {
    switch (storeType) {
        case StoreType::Bool:
            return BoolType::Get();
        case StoreType::Int32:
            return IntType::Get32();
        case StoreType::Int64:
            return IntType::Get64();
        case StoreType::Date:
            return DateType::Get();
        case StoreType::DateTime:
            return DateTimeType::Get();
        case StoreType::Color:
            return ColorType::Get();
        case StoreType::Real32:
        case StoreType::Real64:
            return ReadReal(storeType);
        case StoreType::String:
            return ReadString();
        case StoreType::External:
            return ReadExternal();
        case StoreType::Array:
        case StoreType::Set:
            return ReadCollection(storeType);
        case StoreType::KeySet:
            return ReadKeySet();
        case StoreType::Tuple:
            return ReadTuple();
        case StoreType::KeyMap:
        case StoreType::Table:
            return ReadNamed(storeType);
    }
    return nullptr;
}

// A number that does not fit is narrowed without a test.
bool TypeReader::ReadParameter(signed char& parameter) {
    if (!Expect(Kind::IntegerLiteral)) {
        return false;
    }
    parameter = static_cast<signed char>(m_scanner.GetCurrent().GetInteger());
    return true;
}

const Type* TypeReader::ReadReal(StoreType storeType) {
    const bool is32 = storeType == StoreType::Real32;
    if (!Accept(Kind::Less)) {
        return is32 ? RealType::Get32() : RealType::Get64();
    }
    signed char precision = 0;
    signed char scale = 0;
    if (!ReadParameter(precision) || !Expect(Kind::Comma) || !ReadParameter(scale) ||
        !Expect(Kind::Greater)) {
        return nullptr;
    }
    return is32 ? RealType::Get32(precision, scale) : RealType::Get64(precision, scale);
}

const Type* TypeReader::ReadString() {
    if (!Accept(Kind::Less)) {
        return StringType::Get();
    }
    const TStringCore locale = m_scanner.PeekNext().GetText();
    if (!Expect(Kind::Identifier) || !Expect(Kind::Greater)) {
        return nullptr;
    }
    return StringType::Get(Collation(locale));
}

const Type* TypeReader::ReadExternal() {
    if (!Expect(Kind::Less)) {
        return nullptr;
    }
    const TStringCore name = m_scanner.PeekNext().GetText();
    if ((!Accept(Kind::StringLiteral) && !Expect(Kind::Identifier)) || !Expect(Kind::Greater)) {
        return nullptr;
    }
    return ExternalType::Get(GetExternalTypeId(name));
}

const Type* TypeReader::ReadCollection(StoreType storeType) {
    if (!Expect(Kind::Less)) {
        return nullptr;
    }
    const Type* const elementType = Read();
    if (elementType == nullptr || !Expect(Kind::Greater)) {
        return nullptr;
    }
    return CollectionType::Get(storeType, elementType);
}

const Type* TypeReader::ReadKeySet() {
    if (!Expect(Kind::Less)) {
        return nullptr;
    }
    const Type* const keyType = Read();
    if (keyType == nullptr || !Expect(Kind::Comma)) {
        return nullptr;
    }
    const Type* const elementType = Read();
    if (elementType == nullptr || !Expect(Kind::Greater)) {
        return nullptr;
    }
    return KeySetType::Get(keyType, elementType);
}

const Type* TypeReader::ReadTuple() {
    std::vector<const Type*> members;
    if (Accept(Kind::LeftBrace) && !Accept(Kind::RightBrace)) {
        do {
            const Type* const member = Read();
            if (member == nullptr) {
                return nullptr;
            }
            members.push_back(member);
        } while (Accept(Kind::Comma));
        if (!Expect(Kind::RightBrace)) {
            return nullptr;
        }
    }
    return TupleType::Get(std::move(members));
}

const Type* TypeReader::ReadNamed(StoreType storeType) {
    Members members;
    if (Accept(Kind::LeftBrace) && !Accept(Kind::RightBrace)) {
        do {
            if (!ReadMember(members)) {
                return nullptr;
            }
        } while (Accept(Kind::Comma));
        if (!Expect(Kind::RightBrace)) {
            return nullptr;
        }
    }
    if (storeType == StoreType::KeyMap) {
        return KeyMapType::Get(std::move(members));
    }
    return TableType::Get(std::move(members));
}

bool TypeReader::ReadMember(Members& members) {
    const VtlToken token = m_scanner.Next();
    if (!IsName(token) || !Accept(Kind::Colon)) {
        return Fail(LumError::UnexpectedToken);
    }
    const Type* const type = Read();
    if (type == nullptr) {
        return false;
    }
    members.emplace_back(NameOf(token), type);
    return true;
}

}  // namespace

const Type* TryReadType(VtlScanner& scanner, LumError& error) {
    VtlScanner::State before = scanner.GetState();
    TypeReader reader(scanner);
    const Type* const type = reader.Read();
    if (type == nullptr) {
        error = reader.GetError();
        scanner.SetState(std::move(before));
    }
    return type;
}

// Names -------------------------------------------------------------------------------------------

RInternString NameOf(const VtlToken& token) {
    if (token.Is(Kind::IntegerLiteral)) {
        return TStringCore::number(token.GetInteger());
    }
    if (token.Is(Kind::StringLiteral)) {
        return token.GetText();
    }
    return RInternString(token.GetUnits());
}

// Paths -------------------------------------------------------------------------------------------

KeySegment ReadKeySegment(VtlScanner& scanner, TypeColon typeColon) {
    const VtlToken token = scanner.Next();
    if (!IsName(token)) {
        LUM_FAIL(LumError::UnexpectedToken, scanner.GetText());
    }
    const VtlToken& colon = scanner.PeekNext();
    const Type* type = nullptr;
    if (colon.Is(Kind::Colon) &&
        (typeColon == TypeColon::AnywhereBehindName || colon.GetStart() == token.GetEnd())) {
        scanner.Next();
        LumError error = LumError::Unspecified;
        type = TryReadType(scanner, error);
        if (type == nullptr) {
            LUM_FAIL(error, scanner.GetText());
        }
    }
    return KeySegment(NameOf(token), type);
}

namespace {

// Whether a path, or the type of its last name, goes on with a token behind blanks.
bool GoesOn(const VtlToken& next, TypeColon typeColon) {
    switch (next.GetKind()) {
        case Kind::Slash:
        case Kind::Less:
        case Kind::LeftBrace:
            return true;
        case Kind::Colon:
            return typeColon == TypeColon::AnywhereBehindName;
        default:
            return false;
    }
}

}  // namespace

// The place of the first of the two entries. Any mixing will do, so it looks at the ends and at the
// middle alone, which overlap in short texts.
std::size_t KnownKeyPaths::PlaceOf(std::u16string_view text, std::size_t count) noexcept {
    std::uint64_t first = 0;
    std::uint64_t middle = 0;
    std::uint64_t last = 0;
    const std::size_t length = std::min(text.size(), sizeof(first) / sizeof(char16_t));
    const auto load = [&](std::uint64_t& word, std::size_t from) {
        if (length == sizeof(word) / sizeof(char16_t)) [[likely]] {
            std::memcpy(&word, text.data() + from, sizeof(word));
        } else {
            std::memcpy(&word, text.data() + from, length * sizeof(char16_t));
        }
    };
    load(first, 0);
    load(middle, (text.size() - length) / 2);
    load(last, text.size() - length);
    const std::uint64_t mixed = (first ^ text.size()) * 0x9E3779B97F4A7C15 ^
                                middle * 0xC2B2AE3D27D4EB4F ^ last * 0x165667B19E3779F9;
    return (mixed >> 32 ^ mixed >> 47) & (count - 2);
}

const KeyPath* KnownKeyPaths::TryGet(std::u16string_view text) const noexcept {
    if (m_entries.empty()) {
        return nullptr;
    }
    const Entry* entry = &m_entries[PlaceOf(text, m_entries.size())];
    for (const Entry* const end = entry + 2; entry != end; ++entry) {
        if (entry->length == text.size() &&
            std::memcmp(entry->text.data(), text.data(), text.size() * sizeof(char16_t)) == 0) {
            return &entry->path;
        }
    }
    // The next Add will drop the path that stands in one of them, which nobody may have looked at
    // for long. Until then the new one is read, so there is time to fetch it.
    __builtin_prefetch(&entry[-1 - static_cast<std::ptrdiff_t>(m_addCount % 2)].path.GetSegments());
    return nullptr;
}

void KnownKeyPaths::Add(std::u16string_view text, const KeyPath& path) {
    constexpr std::size_t kLargestCount = 4096;
    if (text.size() > std::tuple_size_v<decltype(Entry::text)>) {
        return;
    }
    if (m_addCount >= m_entries.size() && m_entries.size() < kLargestCount) {
        Grow();
    }
    Entry& entry = Choose(text);
    entry.path = path;
    entry.length = text.size();
    std::copy(text.begin(), text.end(), entry.text.begin());
}

// The places of a text are filled by turns.
KnownKeyPaths::Entry& KnownKeyPaths::Choose(std::u16string_view text) noexcept {
    return m_entries[PlaceOf(text, m_entries.size()) + 1 - m_addCount++ % 2];
}

void KnownKeyPaths::Grow() {
    constexpr std::size_t kFirstCount = 32;
    std::vector<Entry> former(std::max(2 * m_entries.size(), kFirstCount));
    former.swap(m_entries);
    m_addCount = 0;
    for (const Entry& entry : former) {
        if (entry.length != 0) {
            Choose({entry.text.data(), entry.length}) = entry;
        }
    }
}

// What is known is looked for by all the units that may belong to the path, up to a blank or the
// like. Where the path ends with them it reads the same wherever they stand, but for what may
// follow behind blanks.
const KeyPath& KeyPathReader::Read(VtlScanner& scanner, TypeColon typeColon) {
    if (m_known == nullptr || !scanner.PeekIs(Kind::Identifier)) {
        return ReadAnew(scanner, typeColon);
    }
    const std::u16string_view rest = scanner.PeekUnits();
    if (rest.empty()) {
        return ReadAnew(scanner, typeColon);
    }
    const UnitRange range{rest.data() + rest.size(), scanner.GetReadableEnd()};
    const std::size_t start = scanner.PeekNext().GetStart();
    const char16_t* const firstEnd = rest.data() + (scanner.PeekNext().GetEnd() - start);
    const char16_t* const textEnd = SkipRun<IsPathPart>(firstEnd, range);
    const std::u16string_view text(rest.data(), static_cast<std::size_t>(textEnd - rest.data()));
    if (const KeyPath* const known = m_known->TryGet(text)) {
        scanner.Skip(text.size());
        if (!GoesOn(scanner.PeekNext(), typeColon)) [[likely]] {
            return *known;
        }
        scanner.Unskip(start);
        return ReadAnew(scanner, typeColon);
    }
    const KeyPath& path = ReadAnew(scanner, typeColon);
    if (scanner.GetCurrent().GetEnd() == start + text.size()) {
        m_known->Add(text, path);
    }
    return path;
}

const KeyPath& KeyPathReader::ReadAnew(VtlScanner& scanner, TypeColon typeColon) {
    m_segments.clear();
    do {
        if (m_segments.size() == kMaxKeyPathSegments) {
            LUM_FAIL(LumError::UnexpectedToken, scanner.GetText());
        }
        m_segments.push_back(ReadKeySegment(scanner, typeColon));
    } while (scanner.Accept(Kind::Slash));
    return m_path = KeyPath(std::vector<KeySegment>(m_segments.begin(), m_segments.end()));
}

std::vector<KeyPath> KeyPathReader::ReadAll(VtlScanner& scanner) {
    std::vector<KeyPath> paths;
    if (!IsName(scanner.PeekNext())) {
        return paths;
    }
    const KeyPath& first = Read(scanner, TypeColon::AnywhereBehindName);
    if (!IsName(scanner.PeekNext())) {
        paths.reserve(1);
        paths.push_back(first);
        return paths;
    }
    m_paths.assign(1, first);
    do {
        m_paths.push_back(Read(scanner, TypeColon::AnywhereBehindName));
    } while (IsName(scanner.PeekNext()));
    paths.assign(m_paths.begin(), m_paths.end());
    return paths;
}

KeyPath KeyPath::ParseString(const TStringCore& text) {
    VtlScanner scanner(text);
    KeyPath path = KeyPathReader().Read(scanner, TypeColon::AnywhereBehindName);
    if (!scanner.PeekIs(Kind::End)) {
        LUM_FAIL(LumError::UnexpectedToken, text);
    }
    return path;
}

}  // namespace lum::core
