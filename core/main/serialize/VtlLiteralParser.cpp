#include "core/main/serialize/VtlLiteralParser.h"

#include "core/main/serialize/VtlScanner.h"
#include "core/main/utility/Parser.h"
#include "lum/core/Check.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

namespace lum::core {
namespace {

// Nearly all reals have no precision; their type need not be looked up again.
SV MakeReal(float value, const RealType& type) {
    return &type == RealType::Get32()
               ? factory::MakeReal32(value)
               : factory::MakeReal32(value, type.GetPrecision(), type.GetScale());
}

SV MakeReal(double value, const RealType& type) {
    return &type == RealType::Get64()
               ? factory::MakeReal64(value)
               : factory::MakeReal64(value, type.GetPrecision(), type.GetScale());
}

SV ReadStringLiteral(VtlScanner& scanner, const Type* type) {
    VtlToken token;
    if (!scanner.AcceptKeyText(token)) {
        LUM_FAIL(LumError::CannotParseString);
    }
    if (type == StringType::Get()) {
        return factory::MakeString(token.GetText());
    }
    return factory::MakeString(token.GetText(), type->As<StringType>().GetCollation());
}

}  // namespace

SV ReadVtlLiteral(VtlScanner& scanner, const Type* type) {
    if (scanner.Accept(VtlTokenKind::SpecialLiteral)) {
        return factory::MakeSpecial(type, scanner.GetCurrent().GetSpecialKind());
    }
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return factory::MakeBool(ReadBool(scanner));
        case StoreType::Int32:
            return factory::MakeInt32(ReadInt32(scanner));
        case StoreType::Int64:
            return factory::MakeInt64(ReadInt64(scanner));
        case StoreType::Real32:
            return MakeReal(ReadReal32(scanner), type->As<RealType>());
        case StoreType::Real64:
            return MakeReal(ReadReal64(scanner), type->As<RealType>());
        case StoreType::String:
            return ReadStringLiteral(scanner, type);
        case StoreType::Date:
            return factory::MakeDate(ReadDateTime(scanner));
        case StoreType::DateTime:
            return factory::MakeDateTime(ReadDateTime(scanner));
        case StoreType::Color:
            return factory::MakeColor(ReadColor(scanner));
        default:
            LUM_FAIL(LumError::CannotMakeValueForKey);
    }
}

}  // namespace lum::core
