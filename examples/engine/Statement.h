#pragma once

#include <memory>
#include <vector>

#include "lum/core/functions/IFunctionLookup.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/vtl/TransformSpec.h"

namespace lumengine {

/// What a statement may have beside its keys.
enum class Parts { None, Literal, Function, LiteralAndFunction };

/// A statement beside the store that it reads, with the tests of its parts. It stands for no longer
/// than the two.
///
/// Threads: any number may read.
/// Errors: LumRuntimeException with the code that the operation names; KeyNotFound with the key for
///   one that leads nowhere.
struct Statement {
    const lum::core::TransformSpec& spec;
    const lum::core::IDataStore& store;
    const lum::core::IFunctionLookup& lookup;

    /// The values of the inputs, in order.
    std::vector<lum::core::SV> ReadInputs() const;
    /// The same. Errors: `otherwise` where one is no array.
    std::vector<lum::core::SV> ReadArrays(lum::core::LumError otherwise) const;
    /// Errors: OneInputNeeded.
    lum::core::SV ReadOneInput() const;

    /// Errors: FunctionNeeded; EmptyFunctionName.
    const lum::core::RInternString& GetFunctionName() const;
    /// The function's arguments, keys replaced by their values. Errors: FunctionNeeded.
    std::vector<lum::core::SV> ReadArguments() const;

    /// The literal. Errors: `missing` where there is none, and where it is special or no Bool.
    bool GetFlag(lum::core::LumError missing) const;

    /// Errors: FunctionNotUsed, UnexpectedOperatorArgument where there is a part beyond these.
    void ExpectNoneBut(Parts parts) const;
};

/// Throws LumRuntimeException where the condition does not hold.
void Require(bool condition, lum::core::LumError error);
void Require(bool condition, lum::core::LumError error, const lum::core::TStringCore& details);

std::unique_ptr<lum::core::IDataStore> MakeEmptyStore();

/// The value of a key. Errors: KeyNotFound with the key.
lum::core::SV ReadValue(const lum::core::IDataStore& store, const lum::core::KeyPath& key);

/// A value as another key may hold it: a key map is copied, since it is the one collection that
/// changes; all else is shared.
lum::core::SV ShareValue(const lum::core::SV& value);

/// Whether the type is Bool to Color.
bool IsPrimitive(const lum::core::Type* type);

/// Whether there is a value, of that type and not special.
bool IsNormal(const lum::core::SV& value, lum::core::StoreType type);

}  // namespace lumengine
