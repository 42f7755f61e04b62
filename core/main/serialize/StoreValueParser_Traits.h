#pragma once

#include <bit>
#include <memory>

#include "core/main/utility/Parser.h"
#include "lum/core/Check.h"
#include "lum/core/serialize/IJsonObject.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/LumTuple.h"
#include "lum/core/utility/RIndirectString.h"

// The readers of single kinds of values, and of the elements of columns. Their items and types are
// never null. Errors: those of StoreValueParser.
namespace lum::core::StoreValueParser {

using JsonItem = std::shared_ptr<IJsonObject>;

// What a string stands for where a value may be special: the special of a kind, or a text.
struct TextOrSpecial {
    TStringCore text;  // Empty for a special.
    SpecialKind kind = SpecialKind::Normal;
};
TextOrSpecial ReadTextOrSpecial(const TStringCore& text);

SV MakeArray(const Type* type, const IJsonObject& object);
SV MakeSet(const Type* type, const IJsonObject& object);
SV MakeKeySet(const Type* type, const IJsonObject& object);
SV MakeKeyMap(const IJsonObject& object);
SV MakeTable(const IJsonObject& object);
LumTuple ReadTuple(const Type* type, const IJsonObject& object);
SV ReadExternal(const Type* type, const IJsonObject& object);

// The kind that an item names. Errors: CannotParseSpecialKind.
SpecialKind ReadSpecialKind(const IJsonObject& object);

// How an element of a store type is stored and read. Strings are taken as they stand: a column has
// another place for what is special.
template <StoreType kType>
struct ElementTraits;

template <>
struct ElementTraits<StoreType::Bool> {
    using Storage = unsigned char;
    static Storage Read(const Type*, const JsonItem& item) { return item->AsBool() ? 1 : 0; }
};
template <>
struct ElementTraits<StoreType::Int32> {
    using Storage = unsigned int;
    static Storage Read(const Type*, const JsonItem& item) {
        return std::bit_cast<Storage>(item->AsInt32());
    }
};
template <>
struct ElementTraits<StoreType::Int64> {
    using Storage = unsigned long long;
    static Storage Read(const Type*, const JsonItem& item) {
        return std::bit_cast<Storage>(item->AsInt64());
    }
};
template <>
struct ElementTraits<StoreType::Real32> {
    using Storage = unsigned int;
    static Storage Read(const Type*, const JsonItem& item) {
        return std::bit_cast<Storage>(item->AsReal32());
    }
};
template <>
struct ElementTraits<StoreType::Real64> {
    using Storage = unsigned long long;
    static Storage Read(const Type*, const JsonItem& item) {
        return std::bit_cast<Storage>(item->AsReal64());
    }
};
template <>
struct ElementTraits<StoreType::String> {
    using Storage = RIndirectString;
    static Storage Read(const Type*, const JsonItem& item) {
        return RIndirectString(item->AsString());
    }
};
template <>
struct ElementTraits<StoreType::DateTime> {
    using Storage = unsigned long long;
    static Storage Read(const Type*, const JsonItem& item) {
        return ReadDateTime(item->AsString()).GetValue();
    }
};
template <>
struct ElementTraits<StoreType::Color> {
    using Storage = unsigned int;
    static Storage Read(const Type*, const JsonItem& item) {
        return std::bit_cast<Storage>(ReadColor(item->AsString()).AsInt32());
    }
};
template <>
struct ElementTraits<StoreType::Tuple> {
    using Storage = LumTuple;
    static Storage Read(const Type* type, const JsonItem& item) { return ReadTuple(type, *item); }
};
template <>
struct ElementTraits<StoreType::External> {
    using Storage = SV;
    static Storage Read(const Type* type, const JsonItem& item) {
        return ReadExternal(type, *item);
    }
};
// Arrays, sets and key maps as elements.
template <>
struct ElementTraits<StoreType::Array> {
    using Storage = SV;
    static Storage Read(const Type* type, const JsonItem& item) {
        return MakeStoreValueFromJsonObject(type, item);
    }
};

template <StoreType kType>
struct ElementTag {};

// Calls `function` with the tag of the traits by which elements of a type are read, and gives what
// it gives. Errors: `unsupported` for a type that no collection of this text form has.
template <typename F>
auto DispatchElement(StoreType type, LumError unsupported, const F& function) {
    switch (type) {
        case StoreType::Bool:
            return function(ElementTag<StoreType::Bool>());
        case StoreType::Int32:
            return function(ElementTag<StoreType::Int32>());
        case StoreType::Int64:
            return function(ElementTag<StoreType::Int64>());
        case StoreType::Real32:
            return function(ElementTag<StoreType::Real32>());
        case StoreType::Real64:
            return function(ElementTag<StoreType::Real64>());
        case StoreType::String:
            return function(ElementTag<StoreType::String>());
        case StoreType::Date:
        case StoreType::DateTime:
            return function(ElementTag<StoreType::DateTime>());
        case StoreType::Color:
            return function(ElementTag<StoreType::Color>());
        case StoreType::Tuple:
            return function(ElementTag<StoreType::Tuple>());
        case StoreType::External:
            return function(ElementTag<StoreType::External>());
        case StoreType::Array:
        case StoreType::Set:
        case StoreType::KeyMap:
            return function(ElementTag<StoreType::Array>());
        case StoreType::KeySet:
        case StoreType::Table:
            break;
    }
    LUM_FAIL(unsupported);
}

}  // namespace lum::core::StoreValueParser
