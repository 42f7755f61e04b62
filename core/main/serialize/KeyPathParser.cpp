#include "core/main/serialize/KeyPathParser.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
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

// Names -------------------------------------------------------------------------------------------

bool IsName(const VtlToken& token) {
    return token.Is(Kind::Identifier) || token.Is(Kind::IntegerLiteral) ||
           token.Is(Kind::StringLiteral);
}

TStringCore NameOf(const VtlToken& token) {
    return token.Is(Kind::IntegerLiteral) ? TStringCore::number(token.GetInteger())
                                          : token.GetText();
}

// Types -------------------------------------------------------------------------------------------

// Reads a type by looking ahead, so that a text which turns out to be none has cost no tokens. The
// readers of its parts give null, or false, once m_error says why.
class TypeReader {
public:
    explicit TypeReader(VtlScanner& scanner) : m_scanner(scanner) {}

    const Type* Read();

    LumError GetError() const { return m_error; }
    // Takes the tokens of the type from the scanner.
    void TakeTokens() {
        for (; m_count > 0; --m_count) {
            m_scanner.Next();
        }
    }

private:
    using Members = std::vector<NamedHeterogeneousType::Member>;

    // Good until the next look ahead.
    const VtlToken& Ahead() { return m_scanner.Peek(m_count + 1); }
    bool Accept(Kind kind) {
        const bool isThere = Ahead().Is(kind);
        m_count += isThere ? 1 : 0;
        return isThere;
    }
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
    std::size_t m_count = 0;  // Tokens of the type so far.
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
    const VtlToken& token = Ahead();
    if (!token.Is(Kind::Identifier)) {
        return Fail(LumError::UnexpectedToken);
    }
    if (token.GetText().length() != 1) {
        return Fail(LumError::InvalidStoreType);
    }
    const char16_t* const code =
        std::find(std::begin(s_types), std::end(s_types), token.GetText()[0]);
    if (code == std::end(s_types)) {
        return Fail(LumError::UnknownTypeName);
    }
    storeType = static_cast<StoreType>(code - s_types);
    ++m_count;
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
    const VtlToken& token = Ahead();
    if (!token.Is(Kind::IntegerLiteral)) {
        return Fail(LumError::UnexpectedToken);
    }
    parameter = static_cast<signed char>(token.GetInteger());
    ++m_count;
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
    const TStringCore locale = Ahead().GetText();
    if (!Expect(Kind::Identifier) || !Expect(Kind::Greater)) {
        return nullptr;
    }
    return StringType::Get(Collation(locale));
}

const Type* TypeReader::ReadExternal() {
    if (!Expect(Kind::Less)) {
        return nullptr;
    }
    const TStringCore name = Ahead().GetText();
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
    const VtlToken& token = Ahead();
    if (!IsName(token)) {
        return Fail(LumError::UnexpectedToken);
    }
    const TStringCore name = NameOf(token);
    ++m_count;
    if (!Expect(Kind::Colon)) {
        return false;
    }
    const Type* const type = Read();
    if (type == nullptr) {
        return false;
    }
    members.emplace_back(name, type);
    return true;
}

}  // namespace

const Type* TryReadType(VtlScanner& scanner, LumError& error) {
    TypeReader reader(scanner);
    const Type* const type = reader.Read();
    if (type == nullptr) {
        error = reader.GetError();
    } else {
        reader.TakeTokens();
    }
    return type;
}

// Paths -------------------------------------------------------------------------------------------

KeySegment ReadKeySegment(VtlScanner& scanner, TypeColon typeColon) {
    const VtlToken& token = scanner.Next();
    if (!IsName(token)) {
        LUM_FAIL(LumError::UnexpectedToken, scanner.GetText());
    }
    const TStringCore name = NameOf(token);
    const unsigned int nameEnd = token.GetEnd();
    const VtlToken& colon = scanner.Peek(1);
    const Type* type = nullptr;
    if (colon.Is(Kind::Colon) &&
        (typeColon == TypeColon::AnywhereBehindName || colon.GetStart() == nameEnd)) {
        scanner.Next();
        LumError error = LumError::Unspecified;
        type = TryReadType(scanner, error);
        if (type == nullptr) {
            LUM_FAIL(error, scanner.GetText());
        }
    }
    return KeySegment(name, type);
}

KeyPath ReadKeyPath(VtlScanner& scanner, TypeColon typeColon) {
    std::vector<KeySegment> segments;
    do {
        segments.push_back(ReadKeySegment(scanner, typeColon));
    } while (scanner.Accept(Kind::Slash));
    return KeyPath(std::move(segments));
}

std::vector<KeyPath> ReadKeyPaths(VtlScanner& scanner) {
    std::vector<KeyPath> paths;
    while (IsName(scanner.Peek(1))) {
        paths.push_back(ReadKeyPath(scanner, TypeColon::AnywhereBehindName));
    }
    return paths;
}

KeyPath KeyPath::ParseString(const TStringCore& text) {
    VtlScanner scanner(text);
    KeyPath path = ReadKeyPath(scanner, TypeColon::AnywhereBehindName);
    if (!scanner.PeekIs(Kind::End)) {
        LUM_FAIL(LumError::UnexpectedToken, text);
    }
    return path;
}

}  // namespace lum::core
