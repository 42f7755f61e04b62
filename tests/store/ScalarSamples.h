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
    const Type* const types[] = {BoolType::Get(),       IntType::Get32(),      IntType::Get64(),
                                 RealType::Get32(),     RealType::Get32(3, 2), RealType::Get64(),
                                 RealType::Get64(3, 2), StringType::Get(),     DateType::Get(),
                                 DateTimeType::Get(),   ColorType::Get()};
    return types[kScalarLetters.find(letter)];
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

#define LUM_ACCESSOR(error, type, name)                   \
    {                                                     \
        core::LumError::error, core::StoreType::type,     \
            [](core::StoreValue& value) { value.name(); } \
    }
inline const Accessor kAccessors[] = {
    LUM_ACCESSOR(ExpectedBool, Bool, AsBool),
    LUM_ACCESSOR(ExpectedInt32, Int32, AsInt32),
    LUM_ACCESSOR(ExpectedInt64, Int64, AsInt64),
    LUM_ACCESSOR(ExpectedReal32, Real32, AsReal32),
    LUM_ACCESSOR(ExpectedReal64, Real64, AsReal64),
    LUM_ACCESSOR(ExpectedString, String, AsString),
    LUM_ACCESSOR(ExpectedDate, Date, AsDate),
    LUM_ACCESSOR(ExpectedDateTime, DateTime, AsDateTime),
    LUM_ACCESSOR(ExpectedColor, Color, AsColor),
    LUM_ACCESSOR(ExpectedTuple, Tuple, AsTuple),
    LUM_ACCESSOR(ExternalTypeExpected, External, AsExternal),
    LUM_ACCESSOR(ExpectedCollection, Array, AsCollection),
    LUM_ACCESSOR(ExpectedUniformCollection, Array, AsUniformCollection),
    LUM_ACCESSOR(ExpectedArray, Array, AsArray),
    LUM_ACCESSOR(ExpectedSet, Set, AsSet),
    LUM_ACCESSOR(ExpectedKeyMap, KeyMap, AsKeyMap),
    LUM_ACCESSOR(ExpectedTable, Table, AsTable),
};
#undef LUM_ACCESSOR

}  // namespace lum::test
