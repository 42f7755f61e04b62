#include <vector>

#include "core/main/serialize/StoreValueParser_Traits.h"
#include "core/main/serialize/VtlScanner.h"
#include "core/main/utility/StandardErrors.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/SpecialKindText.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ExternalType.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"
#include "lum/core/types/TypeUtil.h"

namespace lum::core::StoreValueParser {
namespace {

void CheckIsString(const IJsonObject& object) {
    LUM_CHECK_TEXT("(o->IsString())", object.IsString(), LumError::JsonStringExpected);
}

// The member of a row that is not special; `text` is what its item stands for if that is a string.
void ReadMember(LumTuple& row, lumsize_t index, const Type* type, const JsonItem& item,
                const TStringCore& text) {
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return row.SetNthBoolUnsafe(index, item->AsBool());
        case StoreType::Int32:
            return row.SetNthInt32Unsafe(index, item->AsInt32());
        case StoreType::Int64:
            return row.SetNthInt64Unsafe(index, item->AsInt64());
        case StoreType::Real32:
            return row.SetNthReal32Unsafe(index, item->AsReal32());
        case StoreType::Real64:
            return row.SetNthReal64Unsafe(index, item->AsReal64());
        case StoreType::String:
            CheckIsString(*item);
            return row.SetNthStringUnsafe(index, RIndirectString(text));
        case StoreType::Date:
            return row.SetNthDateUnsafe(index, ReadDateTime(item->AsString()));
        case StoreType::DateTime:
            return row.SetNthDateTimeUnsafe(index, ReadDateTime(item->AsString()));
        case StoreType::Color:
            return row.SetNthColorUnsafe(index, ReadColor(item->AsString()));
        case StoreType::External:
            return row.SetNthExternalUnsafe(index, ReadExternal(type, *item));
        default:
            PrimitiveErrorFunction(type->GetStoreType());
    }
}

}  // namespace

TextOrSpecial ReadTextOrSpecial(const TStringCore& text) {
    VtlCursor cursor(text.view());
    const VtlToken token = cursor.Scan();
    switch (token.GetKind()) {
        case VtlTokenKind::SpecialLiteral:
            if (cursor.Scan().Is(VtlTokenKind::End)) {
                return {TStringCore(), token.GetSpecialKind()};
            }
            break;
        case VtlTokenKind::Identifier:
        case VtlTokenKind::StringLiteral:
            if (cursor.Scan().Is(VtlTokenKind::End)) {
                return {token.GetText()};
            }
            break;
        default:
            break;
    }
    return {text};
}

SpecialKind ReadSpecialKind(const IJsonObject& object) {
    return SpecialKindFromString(object.AsString());
}

SV ReadExternal(const Type* type, const IJsonObject& object) {
    const std::vector<unsigned char> bytes = ReadHexBytes(object.AsString());
    SV value = DeserializeExternalType(type->As<ExternalType>().GetExternalTypeId(),
                                       ArrayView<const unsigned char>(bytes.data(), bytes.size()));
    LUM_CHECK_NOT_NULL(value, LumError::NullArgument);  // The host's function gave none.
    return value;
}

LumTuple ReadTuple(const Type* type, const IJsonObject& object) {
    LUM_CHECK_TEXT("(o->IsArray())", object.IsArray(), LumError::TupleNeedsArray);
    const auto& tupleType = type->As<TupleType>();
    const std::vector<const Type*>& types = tupleType.GetMembers();
    LumTuple row(&tupleType);
    lumsize_t i = 0;
    for (const JsonItem& item : object.AsArray()) {
        const Type* const memberType = VectorAt(types, i);
        const TextOrSpecial text =
            item->IsString() ? ReadTextOrSpecial(item->AsString()) : TextOrSpecial();
        if (text.kind == SpecialKind::Normal) {
            ReadMember(row, i, memberType, item, text.text);
        } else {
            row.SetNthSpecialUnsafe(i, text.kind);
        }
        ++i;
    }
    LUM_CHECK(i == LumSizeCastSafe(types.size()), LumError::TupleSizeMismatch);
    return row;
}

SV MakeStoreValueFromJsonObject(const Type* type, const std::shared_ptr<IJsonObject>& object) {
    LUM_CHECK_NOT_NULL(type, LumError::NullArgument);
    LUM_CHECK_NOT_NULL(object, LumError::NullArgument);
    TextOrSpecial text;
    if (object->IsString()) {
        text = ReadTextOrSpecial(object->AsString());
        if (text.kind != SpecialKind::Normal) {
            return factory::MakeSpecial(type, text.kind);
        }
    }
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return factory::MakeBool(object->AsBool());
        case StoreType::Int32:
            return factory::MakeInt32(object->AsInt32());
        case StoreType::Int64:
            return factory::MakeInt64(object->AsInt64());
        case StoreType::Real32: {
            const auto& real = type->As<RealType>();
            return factory::MakeReal32(object->AsReal32(), real.GetPrecision(), real.GetScale());
        }
        case StoreType::Real64: {
            const auto& real = type->As<RealType>();
            return factory::MakeReal64(object->AsReal64(), real.GetPrecision(), real.GetScale());
        }
        case StoreType::String:
            CheckIsString(*object);
            return factory::MakeString(text.text, type->As<StringType>().GetCollation());
        case StoreType::Date:
            return factory::MakeDate(ReadDateTime(object->AsString()));
        case StoreType::DateTime:
            return factory::MakeDateTime(ReadDateTime(object->AsString()));
        case StoreType::Color:
            return factory::MakeColor(ReadColor(object->AsString()));
        case StoreType::Tuple:
            return factory::MakeTuple(ReadTuple(type, *object));
        case StoreType::External:
            return ReadExternal(type, *object);
        case StoreType::Array:
            return MakeArray(type, *object);
        case StoreType::Set:
            return MakeSet(type, *object);
        case StoreType::KeySet:
            return MakeKeySet(type, *object);
        case StoreType::KeyMap:
            return MakeKeyMap(*object);
        case StoreType::Table:
            return MakeTable(*object);
    }
    LUM_FAIL(LumError::InvalidStoreType);
}

}  // namespace lum::core::StoreValueParser
