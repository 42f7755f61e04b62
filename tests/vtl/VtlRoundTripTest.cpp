#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lum/core/serialize/OperatorTypeSerializeUtils.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/serialize/VtlSerializer.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "lum/core/types/TypeUtil.h"
#include "tests/support/Random.h"
#include "tests/vtl/Programs.h"

namespace lum::core {
namespace {

// Random programs, of all that reads back. Not among it: empty names and names such as "012", texts
// with a zero unit, the lowest Int64, reals with a precision but no scale, comments with an
// apostrophe or a backslash below other statements, and comments of other statements than NoOp.
class ProgramMaker {
public:
    std::vector<TransformSpec> Make(std::size_t level = 0) {
        std::vector<TransformSpec> program;
        for (std::size_t left = 1 + Below(5); left > 0; --left) {
            program.push_back(MakeStatement(level));
        }
        return program;
    }
    std::string Trace() const { return m_random.Trace(); }

private:
    std::size_t Below(std::size_t limit) { return m_random.Below(limit); }
    bool OneIn(std::size_t count) { return Below(count) == 0; }
    int Number(int lowest, int highest) {
        return lowest + static_cast<int>(Below(static_cast<std::size_t>(highest - lowest + 1)));
    }

    TStringCore Text() {
        static const char16_t* const s_pieces[] = {
            u"a", u"Z9", u"-",  u">",    u"it's", u"\\", u"\n",     u" ",      u"\t",   u"//",
            u"/", u":",  u"12", u"true", u"Null", u",",  u"\u00e9", u"\xD83D", u"'x'",  u"(",
            u")", u"\r", u"e5", u".",    u"=",    u"#",  u"~",      u"1.5",    u"+inf", u"\f"};
        TStringCore text;
        for (std::size_t left = Below(5); left > 0; --left) {
            text += TStringCore(std::u16string_view(m_random.OneOf(s_pieces)));
        }
        return text;
    }
    TStringCore Name() {
        TStringCore name = OneIn(3) ? Text() : TStringCore();
        if (name.isEmpty() || name[0] == u'0') {
            name = TStringCore(1 + Below(15), static_cast<char16_t>(u'a' + Below(26)));
        }
        return name;
    }

    const Type* PrimitiveType() {
        const Type* const types[] = {
            BoolType::Get(),   IntType::Get32(),      IntType::Get64(),      RealType::Get32(),
            RealType::Get64(), RealType::Get64(9, 2), RealType::Get32(3, 0), StringType::Get(),
            DateType::Get(),   DateTimeType::Get(),   ColorType::Get(),
        };
        return m_random.OneOf(types);
    }
    const Type* AnyTypeOf(std::size_t level) {
        switch (level < 3 ? Below(10) : 9) {
            case 0:
                return ArrayType::Get(PrimitiveType());
            case 1:
                return SetType::Get(PrimitiveType());
            case 2:
                return KeySetType::Get(StringType::Get(), PrimitiveType());
            case 3:
                return TupleType::Get({PrimitiveType(), PrimitiveType()});
            case 4:
                return KeyMapType::Get({{Name(), AnyTypeOf(level + 1)}});
            case 5:
                return TableType::Get({{Name(), ArrayType::Get(PrimitiveType())}});
            default:
                return PrimitiveType();
        }
    }

    KeyPath Path() {
        std::vector<KeySegment> segments;
        for (std::size_t left = 1 + Below(3); left > 0; --left) {
            segments.emplace_back(Name(), OneIn(4) ? AnyTypeOf(0) : nullptr);
        }
        return KeyPath(std::move(segments));
    }
    std::vector<KeyPath> Paths() {
        std::vector<KeyPath> paths;
        for (std::size_t left = Below(4); left > 0; --left) {
            paths.push_back(Path());
        }
        return paths;
    }

    double Real() {
        const double value = std::bit_cast<double>(m_random.Bits());
        return OneIn(3)            ? static_cast<double>(Below(10'000)) / -8
               : std::isnan(value) ? -0.0
                                   : value;
    }
    SV Literal(const Type* type) {
        if (OneIn(8)) {
            return factory::MakeSpecial(type, static_cast<SpecialKind>(1 + Below(9)));
        }
        switch (type->GetStoreType()) {
            case StoreType::Bool:
                return factory::MakeBool(OneIn(2));
            case StoreType::Int32:
                return factory::MakeInt32(static_cast<int>(m_random.Bits()));
            case StoreType::Int64:
                return factory::MakeInt64(static_cast<long long>(m_random.Bits() | 1));
            case StoreType::Real32:
                return factory::MakeReal32(static_cast<float>(Real()));
            case StoreType::Real64:
                return OneIn(2) ? factory::MakeReal64(Real()) : factory::MakeReal64(Real(), 9, 2);
            case StoreType::Date:
                return factory::MakeDate(LumDateTime(2024, 3, Number(1, 31), 0, 0, 0, 0));
            case StoreType::DateTime:
                return factory::MakeDateTime(
                    LumDateTime(Number(1600, 2400), Number(1, 12), Number(1, 28), Number(0, 23),
                                Number(0, 59), Number(0, 59), Number(0, 9999)));
            case StoreType::Color:
                return factory::MakeColor(static_cast<int>(m_random.Bits()));
            default:
                return factory::MakeString(OneIn(2) ? Name() : Text());
        }
    }

    std::shared_ptr<FunctionSpec> Function() {
        std::vector<ValueSpec> arguments;
        for (std::size_t left = Below(4); left > 0; --left) {
            arguments.push_back(OneIn(2) ? ValueSpec(Path()) : ValueSpec(Literal(PrimitiveType())));
        }
        return FunctionSpec::Make(OneIn(2) ? Name() : Text(), std::move(arguments));
    }

    TransformSpec MakeStatement(std::size_t level) {
        const auto type = static_cast<OperatorType>(
            Below(static_cast<std::size_t>(OperatorType::InternalCreateKeyMap) + 1));
        if (type == OperatorType::NoOp || OneIn(8)) {
            return TransformSpec(level == 0 ? L" it's a \\" : L" a comment, -> 'quoted'");
        }
        SV value;
        if (OperatorHasTypedArgument(type) && !OneIn(4)) {
            value = Literal(PrimitiveType());
        } else if (OperatorHasFixedArgumentType(type) && !OneIn(4)) {
            value = Literal(MakePrimitiveType(OperatorFixedArgumentType(type)));
        }
        std::vector<TransformSpec> children;
        if (CanOperatorHaveChildTransforms(type) && level < 4) {
            children = Make(level + 1);
        }
        return TransformSpec(type, Paths(), Paths(), OneIn(2) ? Function() : nullptr,
                             std::move(children), std::move(value));
    }

    test::Random m_random;
};

TEST(VtlRoundTripTest, WhatIsWrittenReadsBack) {
    ProgramMaker maker;
    SCOPED_TRACE(maker.Trace());
    for (int round = 0; round < 2000; ++round) {
        const std::vector<TransformSpec> program = maker.Make();
        const TStringCore text = TransformsToString(program, /*includeComments=*/true);
        ASSERT_EQ(TransformsToString(ParseVtlList(text, /*keepComments=*/true), true), text);
        ASSERT_EQ(TransformsToString(ParseVtlList(text, /*keepComments=*/false), true),
                  TransformsToString(ParseVtlList(TransformsToPayloadString(program), false), true))
            << text;
        for (const TransformSpec& transform : program) {
            if (transform.GetChildTransforms().empty()) {
                const TStringCore line = TransformToString(transform);
                ASSERT_EQ(TransformToString(ParseVtlLine(line)), line);
            }
        }
    }
}

}  // namespace
}  // namespace lum::core
