#include <limits>
#include <utility>
#include <vector>

#include "ColumnFunctions.h"
#include "Columns.h"
#include "Operators.h"
#include "StoredValue.h"
#include "lum/core/functions/FunctionFactories.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"

namespace lumengine {
namespace {

using namespace lum::core;

// The column that a fold or a function walks: an array, or the members of a set in any order.
SV AsColumn(const SV& value, LumError error) {
    if (value->GetStoreType() == StoreType::Set) {
        return value->AsSet().ToArray(/*includeSpecials=*/true);
    }
    Require(IsArray(value), error);
    return value;
}

// The checks that reduce and the scans share. `mismatch` is the code for an initial value that
// there is no function for, though there is one for the column.
SV CheckFold(const Statement& statement, const SV& column, LumError mismatch) {
    const SV& initial = statement.GetSpec().GetValue();
    Require(initial != nullptr, LumError::InitialValueNeeded);
    const RInternString& name = statement.GetFunctionName();
    Require(statement.ReadArguments().empty(), LumError::NonCreatorCalledAsCreator, name);
    const FunctionKey query(name, initial->GetType(), column->AsArray().GetElementType(),
                            FunctionKey::ArgContainer::Separate);
    if (!statement.GetLookup().HasFunction(query)) {
        FindAccumulatorType(statement.GetLookup(), name, column);  // Throws where there is none.
        throw LumRuntimeException(mismatch);
    }
    return initial;
}

SV Scan(const Statement& statement, FoldDirection direction, LumError inputError,
        LumError mismatch) {
    const SV column = statement.ReadOneInput();
    Require(IsArray(column), inputError);
    const SV initial = CheckFold(statement, column, mismatch);
    return ScanColumn(statement.GetLookup(), statement.GetFunctionName(), column, initial,
                      direction);
}

void RequireScalars(const Statement& statement, const std::vector<SV>& values) {
    for (const SV& value : values) {
        Require(IsPrimitive(value->GetType()), LumError::SetValueTypeMismatch,
                statement.GetFunctionName());
    }
}

template <MultinaryOutput T>
bool IsUndefinedQuotient(const std::vector<SV>& values) {
    const T divisor = FetchStoreValue<T>(values[1]);
    return divisor == T(-1) && FetchStoreValue<T>(values[0]) == std::numeric_limits<T>::lowest();
}

// Integers are divided by the processor, which stops the process where there is no quotient.
void CheckDivision(const std::vector<SV>& values, StoreType type) {
    if (values.size() != 2 || values[1]->IsSpecial() || values[0]->IsSpecial()) {
        return;
    }
    const bool isWide = type == StoreType::Int64;
    if (!isWide && type != StoreType::Int32) {
        return;
    }
    Require(isWide ? values[1]->AsInt64() != 0 : values[1]->AsInt32() != 0, LumError::DivideByZero);
    Require(!(isWide ? IsUndefinedQuotient<long long>(values) : IsUndefinedQuotient<int>(values)),
            LumError::OutOfBounds);
}

template <MultinaryOutput T>
SV Call(const RegisteredFunctions& functions, const std::vector<SV>& values) {
    const MultinaryFunction<T> function = GetMultinaryFunction<T>(functions);
    return MakeStoreValue<T>(functions.GetOutputType(), function(values));
}

}  // namespace

SV RunConstant(const Statement& statement) {
    statement.ExpectNoFunction();
    Require(statement.GetSpec().GetInputs().empty(), LumError::EmptyInputNeeded);
    const SV& value = statement.GetSpec().GetValue();
    Require(value != nullptr, LumError::NullValue);
    Require(IsPrimitive(value->GetType()), LumError::ConstantTypeUnsupported);
    return value;
}

SV RunCopy(const Statement& statement) {
    statement.ExpectKeysAlone();
    const SV value = statement.ReadOneInput();
    Require(!statement.GetSpec().GetInputs()[0].IsPrefixOf(statement.GetSpec().GetOutputs()[0]),
            LumError::CopyIntoSelf);
    return ShareValue(value);
}

SV RunMap(const Statement& statement) {
    statement.ExpectNoLiteral();
    const SV input = statement.ReadOneInput();
    const SV column = AsColumn(input, LumError::MapInputType);
    const SV result = ApplyFunction(statement.GetLookup(), statement.GetFunctionName(), {column},
                                    statement.ReadArguments());
    return input->GetStoreType() == StoreType::Set
               ? result->AsArray().ToSet(/*includeSpecials=*/true)
               : result;
}

SV RunZipWith(const Statement& statement) {
    statement.ExpectNoLiteral();
    const std::vector<SV> columns = statement.ReadArrays(LumError::ZipWithInputType);
    Require(columns.size() == 2, LumError::TwoInputsNeeded);
    return ApplyFunction(statement.GetLookup(), statement.GetFunctionName(), columns,
                         statement.ReadArguments());
}

SV RunReduce(const Statement& statement) {
    const SV column = AsColumn(statement.ReadOneInput(), LumError::ReduceInputType);
    const SV initial = CheckFold(statement, column, LumError::ReduceInitialType);
    return FoldColumn(statement.GetLookup(), statement.GetFunctionName(), column, initial);
}

SV RunScan(const Statement& statement) {
    return Scan(statement, FoldDirection::Forward, LumError::ScanInputType,
                LumError::ScanInitialType);
}

SV RunScanRight(const Statement& statement) {
    return Scan(statement, FoldDirection::Backward, LumError::ScanRightInputType,
                LumError::ScanRightInitialType);
}

SV RunSetValue(const Statement& statement) {
    statement.ExpectNoLiteral();
    std::vector<SV> values = statement.ReadInputs();
    Require(!values.empty(), LumError::InputsNeeded);
    RequireScalars(statement, values);
    for (SV& value : values) {
        value = ColumnOf({value});
    }
    return ApplyFunction(statement.GetLookup(), statement.GetFunctionName(), values,
                         statement.ReadArguments())
        ->AsArray()
        .GetElement(0);
}

SV RunSetValueMulti(const Statement& statement) {
    statement.ExpectNoLiteral();
    return CallListFunction(statement);
}

SV CallListFunction(const Statement& statement) {
    std::vector<SV> values = statement.ReadInputs();
    const RInternString& name = statement.GetFunctionName();
    for (SV& argument : statement.ReadArguments()) {
        values.push_back(std::move(argument));
    }
    RequireScalars(statement, values);
    TypeRefVec<VariableTypeRef> types;
    for (const SV& value : values) {
        types.emplace_back(value->GetType());
    }
    const RegisteredFunctions& functions =
        statement.GetLookup().GetMultinaryFunctions().GetFunctions(
            FunctionKey(name, std::move(types), FunctionKey::ArgContainer::Vector));
    const StoreType type = functions.GetOutputType()->GetStoreType();
    if (name == RInternString(L"/")) {
        CheckDivision(values, type);
    }
    switch (type) {
        case StoreType::Bool:
            return Call<bool>(functions, values);
        case StoreType::Int32:
            return Call<int>(functions, values);
        case StoreType::Int64:
            return Call<long long>(functions, values);
        case StoreType::Real32:
            return Call<float>(functions, values);
        case StoreType::Real64:
            return Call<double>(functions, values);
        default:
            throw LumRuntimeException(LumError::FunctionOutputMismatch, name);
    }
}

}  // namespace lumengine
