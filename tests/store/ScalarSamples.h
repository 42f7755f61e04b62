#pragma once

#include <string>

#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

namespace lum::test {

/// Scalars of all kinds by the letter of their type; F and R are reals with a precision and a
/// scale.
inline const std::string kScalarLetters = "bilfFrRsdtc";

/// The type of a letter.
inline const core::Type* TypeOfLetter(char letter) {
    using namespace core;
    switch (letter) {
        case 'b':
            return BoolType::Get();
        case 'i':
            return IntType::Get32();
        case 'l':
            return IntType::Get64();
        case 'f':
            return RealType::Get32();
        case 'F':
            return RealType::Get32(3, 2);
        case 'r':
            return RealType::Get64();
        case 'R':
            return RealType::Get64(3, 2);
        case 's':
            return StringType::Get();
        case 'd':
            return DateType::Get();
        case 't':
            return DateTimeType::Get();
        default:
            return ColorType::Get();
    }
}

/// A value of the letter's type: the small number, or what stands for it.
inline core::SV MakeSample(char letter, int number = 5) {
    using namespace core::factory;
    const core::LumDateTime date = core::LumDateTime::FromValue(core::LumDateTime().GetValue() +
                                                                static_cast<unsigned>(number));
    switch (letter) {
        case 'b':
            return MakeBool(number != 0);
        case 'i':
            return MakeInt32(number);
        case 'l':
            return MakeInt64(number);
        case 'f':
            return MakeReal32(static_cast<float>(number));
        case 'F':
            return MakeReal32(static_cast<float>(number), 3, 2);
        case 'r':
            return MakeReal64(number);
        case 'R':
            return MakeReal64(number, 3, 2);
        case 's':
            return MakeString(core::TStringCore::number(number));
        case 'd':
            return MakeDate(date);
        case 't':
            return MakeDateTime(date);
        default:
            return MakeColor(number);
    }
}

/// An accessor, the failure of values that do not answer it, and the store type that does.
struct Accessor {
    core::LumError error;
    core::StoreType answering;
    void (*read)(core::StoreValue&);
};

inline const Accessor kAccessors[] = {
    {core::LumError::ExpectedBool, core::StoreType::Bool, [](core::StoreValue& v) { v.AsBool(); }},
    {core::LumError::ExpectedInt32, core::StoreType::Int32,
     [](core::StoreValue& v) { v.AsInt32(); }},
    {core::LumError::ExpectedInt64, core::StoreType::Int64,
     [](core::StoreValue& v) { v.AsInt64(); }},
    {core::LumError::ExpectedReal32, core::StoreType::Real32,
     [](core::StoreValue& v) { v.AsReal32(); }},
    {core::LumError::ExpectedReal64, core::StoreType::Real64,
     [](core::StoreValue& v) { v.AsReal64(); }},
    {core::LumError::ExpectedString, core::StoreType::String,
     [](core::StoreValue& v) { v.AsString(); }},
    {core::LumError::ExpectedDate, core::StoreType::Date, [](core::StoreValue& v) { v.AsDate(); }},
    {core::LumError::ExpectedDateTime, core::StoreType::DateTime,
     [](core::StoreValue& v) { v.AsDateTime(); }},
    {core::LumError::ExpectedColor, core::StoreType::Color,
     [](core::StoreValue& v) { v.AsColor(); }},
    {core::LumError::ExpectedTuple, core::StoreType::Tuple,
     [](core::StoreValue& v) { v.AsTuple(); }},
    {core::LumError::ExternalTypeExpected, core::StoreType::External,
     [](core::StoreValue& v) { v.AsExternal(); }},
    {core::LumError::ExpectedCollection, core::StoreType::Array,
     [](core::StoreValue& v) { v.AsCollection(); }},
    {core::LumError::ExpectedUniformCollection, core::StoreType::Array,
     [](core::StoreValue& v) { v.AsUniformCollection(); }},
    {core::LumError::ExpectedArray, core::StoreType::Array,
     [](core::StoreValue& v) { v.AsArray(); }},
    {core::LumError::ExpectedSet, core::StoreType::Set, [](core::StoreValue& v) { v.AsSet(); }},
    {core::LumError::ExpectedKeyMap, core::StoreType::KeyMap,
     [](core::StoreValue& v) { v.AsKeyMap(); }},
    {core::LumError::ExpectedTable, core::StoreType::Table,
     [](core::StoreValue& v) { v.AsTable(); }},
};

}  // namespace lum::test
