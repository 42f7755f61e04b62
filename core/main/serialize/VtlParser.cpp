#include "lum/core/serialize/VtlParser.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "core/main/serialize/KeyPathParser.h"
#include "core/main/serialize/NestingLimit.h"
#include "core/main/serialize/UnitRuns.h"
#include "core/main/serialize/VtlLines.h"
#include "core/main/serialize/VtlLiteralParser.h"
#include "core/main/serialize/VtlScanner.h"
#include "core/main/serialize/VtlStatements.h"
#include "core/main/vtl/OperatorText.h"
#include "lum/core/Check.h"
#include "lum/core/types/Type.h"
#include "lum/core/types/TypeUtil.h"

namespace lum::core {
namespace {

using Kind = VtlTokenKind;

// Literals ----------------------------------------------------------------------------------------

bool IsLiteralPart(const VtlToken& token) {
    switch (token.GetKind()) {
        case Kind::Plus:
        case Kind::Minus:
        case Kind::BoolLiteral:
        case Kind::IntegerLiteral:
        case Kind::RealLiteral:
        case Kind::Identifier:
        case Kind::StringLiteral:
        case Kind::SpecialLiteral:
            return true;
        default:
            return false;
    }
}

bool IsSign(const VtlToken& token) {
    return token.Is(Kind::Plus) || token.Is(Kind::Minus);
}

// A literal stands before the type that says how to read it. So its tokens are skipped and kept,
// the type is read, and then they come again, in front of what stands behind the type. Most
// literals are one token, which nothing need be put back for.
class TypedLiteral {
public:
    // The scanner stands behind the colon of the literal.
    explicit TypedLiteral(VtlScanner& scanner) : m_scanner(scanner), m_first(scanner.PeekNext()) {
        if (IsLiteralPart(m_first)) {
            scanner.Next();
            while (IsLiteralPart(scanner.PeekNext())) {
                m_further.push_back(scanner.Next());
            }
        }
        if (scanner.PeekIs(Kind::Invalid)) {
            LUM_FAIL(LumError::UnexpectedToken, scanner.GetText());
        }
        if (scanner.Accept(Kind::Colon)) {
            LumError error = LumError::Unspecified;
            m_type = TryReadType(scanner, error);
            if (m_type == nullptr) {
                LUM_FAIL(error, scanner.GetText());
            }
        }
    }

    // The type behind the literal; null where there is none.
    const Type* GetType() const { return m_type; }

    // The value, which may be read but once.
    SV Read(const Type* type) {
        if (!IsLiteralPart(m_first)) {
            return ReadVtlLiteral(m_scanner, type);
        }
        if (m_further.empty() && !IsSign(m_first)) {
            return m_scanner.ReadAgain(m_first, [&] { return ReadVtlLiteral(m_scanner, type); });
        }
        for (; !m_further.empty(); m_further.pop_back()) {
            m_scanner.PushBack(m_further.back());
        }
        m_scanner.PushBack(m_first);
        return ReadVtlLiteral(m_scanner, type);
    }

private:
    VtlScanner& m_scanner;
    const VtlToken m_first;
    std::vector<VtlToken> m_further;
    const Type* m_type = nullptr;
};

// Statements --------------------------------------------------------------------------------------

// Reads statements, one after the other, each from a scanner of its own.
class StatementReader {
public:
    explicit StatementReader(KnownKeyPaths* known = nullptr) : m_keys(known) {}

    TransformSpec Read(VtlScanner& scanner);

private:
    SV ReadOperatorValue(VtlScanner& scanner, OperatorType operatorType);
    std::shared_ptr<FunctionSpec> ReadFunction(VtlScanner& scanner);

    KeyPathReader m_keys;
    std::vector<ValueSpec> m_arguments;  // Of the function that is being read.
};

TransformSpec StatementReader::Read(VtlScanner& scanner) {
    if (scanner.PeekIs(Kind::Comment)) {
        return TransformSpec(scanner.PeekNext().GetText());
    }
    std::vector<KeyPath> inputs = m_keys.ReadAll(scanner);
    scanner.Expect(Kind::Arrow);
    const OperatorType operatorType =
        OperatorTypeFromString(scanner.Expect(Kind::Identifier, TStringCore()).GetUnits());
    SV value;
    if (scanner.Accept(Kind::Colon)) {
        value = ReadOperatorValue(scanner, operatorType);
    }
    std::shared_ptr<FunctionSpec> function;
    if (scanner.Accept(Kind::LeftParen)) {
        function = ReadFunction(scanner);
    }
    scanner.Expect(Kind::Arrow);
    std::vector<KeyPath> outputs = m_keys.ReadAll(scanner);
    return TransformSpec(operatorType, std::move(inputs), std::move(outputs), std::move(function),
                         std::vector<TransformSpec>(), std::move(value), TStringCore());
}

SV StatementReader::ReadOperatorValue(VtlScanner& scanner, OperatorType operatorType) {
    TypedLiteral literal(scanner);
    const Type* type = literal.GetType();
    if (OperatorHasFixedArgumentType(operatorType)) {
        const StoreType expected = OperatorFixedArgumentType(operatorType);
        if (type == nullptr) {
            type = MakePrimitiveType(expected);
        } else if (!type->Is(expected)) {
            LUM_FAIL(LumError::OperatorTypeSpecMismatch, OperatorTypeToString(operatorType));
        }
    } else if (!OperatorHasTypedArgument(operatorType)) {
        LUM_FAIL(LumError::UnexpectedOperatorArgument);
    } else if (type == nullptr) {
        LUM_FAIL(LumError::OperatorTypeSpecMissing);
    }
    return literal.Read(type);
}

// The scanner stands behind the opening parenthesis. The closing one may be missing at the end of
// the text, where the arrow that has to follow is missing, too.
std::shared_ptr<FunctionSpec> StatementReader::ReadFunction(VtlScanner& scanner) {
    const VtlToken name = scanner.Next();
    switch (name.GetKind()) {
        case Kind::Plus:
        case Kind::Minus:
        case Kind::Star:
        case Kind::Less:
        case Kind::Greater:
        case Kind::Identifier:
        case Kind::StringLiteral:
            break;
        default:
            LUM_FAIL(LumError::UnexpectedToken, scanner.GetText());
    }
    m_arguments.clear();
    while (!scanner.Accept(Kind::RightParen) && !scanner.PeekIs(Kind::End)) {
        if (scanner.Accept(Kind::Colon)) {
            TypedLiteral literal(scanner);
            const Type* const type = literal.GetType();
            LUM_CHECK_NOT_NULL(type, LumError::KeyTypeNeeded);
            m_arguments.emplace_back(literal.Read(type));
        } else {
            m_arguments.emplace_back(m_keys.Read(scanner, TypeColon::TouchesName));
        }
    }
    std::vector<ValueSpec> arguments(std::make_move_iterator(m_arguments.begin()),
                                     std::make_move_iterator(m_arguments.end()));
    return FunctionSpec::Make(NameOf(name), std::move(arguments));
}

// Programs ----------------------------------------------------------------------------------------

// The statements read so far. Those below a statement are added to it where it stands: only the
// last statement of each list gets any, and it moves no more then.
class Program {
public:
    Program() : m_lists{&m_root} {}
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // How many statements the next one stands below.
    std::size_t GetCurrentDepth() const { return m_lists.size() - 1; }
    void Add(TransformSpec&& transform) { m_lists.back()->push_back(std::move(transform)); }
    // Makes the last statement the parent of the next one.
    void Push();
    void Pop() { m_lists.pop_back(); }
    std::vector<TransformSpec> Take() { return std::move(m_root); }

private:
    std::vector<TransformSpec> m_root;
    std::vector<std::vector<TransformSpec>*> m_lists;
};

void Program::Push() {
    if (m_lists.back()->empty() || GetCurrentDepth() == kMaxStatementLevels) {
        LUM_FAIL(LumError::InvalidNesting);
    }
    TransformSpec& parent = m_lists.back()->back();
    LUM_CHECK_TEXT("(CanOperatorHaveChildTransforms(m_spec.GetOperatorType()))",
                   CanOperatorHaveChildTransforms(parent.GetOperatorType()),
                   LumError::UnexpectedChildTransform);
    m_lists.push_back(&parent.GetChildTransforms());
}

bool IsWhiteSpace(std::u16string_view units) {
    return units.find_first_not_of(u" \t\n\v\f\r") == std::u16string_view::npos;
}

}  // namespace

TransformSpec ParseVtlLine(const TStringCore& text) {
    VtlScanner scanner(text);
    return StatementReader().Read(scanner);
}

std::vector<TransformSpec> ParseVtlList(const TStringCore& text, bool keepComments) {
    KnownKeyPaths known;
    return ReadVtlStatements(text.view(), text.end(), keepComments, known);
}

std::vector<TransformSpec> ReadVtlStatements(std::u16string_view text, const char16_t* readableEnd,
                                             bool keepComments, KnownKeyPaths& known) {
    StatementReader statements(&known);
    Program parser;
    VtlLines lines(text);
    std::u16string_view line;
    while (lines.Next(line)) {
        const char16_t* const lineEnd = line.data() + line.size();
        const char16_t* const start = SkipRun<IsBlank>(line.data(), {lineEnd, readableEnd});
        if (IsWhiteSpace({start, static_cast<std::size_t>(lineEnd - start)})) {
            continue;
        }
        VtlScanner scanner(line, readableEnd);
        TransformSpec transform = statements.Read(scanner);
        if (!keepComments && transform.GetOperatorType() == OperatorType::NoOp) {
            continue;
        }
        const auto currentLevel = static_cast<std::size_t>(start - line.data()) / 2;
        while (currentLevel < parser.GetCurrentDepth()) {
            parser.Pop();
        }
        if (currentLevel > parser.GetCurrentDepth()) {
            LUM_CHECK(parser.GetCurrentDepth() + 1 == currentLevel, LumError::Unspecified);
            parser.Push();
        }
        parser.Add(std::move(transform));
    }
    return parser.Take();
}

}  // namespace lum::core
