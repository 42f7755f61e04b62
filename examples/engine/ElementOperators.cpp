#include <concepts>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "ColumnFunctions.h"
#include "Columns.h"
#include "Operators.h"
#include "lum/core/functions/FunctionFactories.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/utility/LumException.h"

namespace lumengine {
namespace {

using namespace lum::core;

// What reduce and the scans share. `mismatch` is the code for an initial value that there is no
// function for, though there is one for the column.
SV Fold(const Statement& statement, const SV& column, LumError mismatch,
        std::optional<FoldDirection> steps) {
    const SV& initial = statement.spec.GetValue();
    Require(initial != nullptr, LumError::InitialValueNeeded);
    const RInternString& name = statement.GetFunctionName();
    Require(statement.ReadArguments().empty(), LumError::NonCreatorCalledAsCreator, name);
    if (!statement.lookup.HasFunction(MakeFoldQuery(name, initial->GetType(), column))) {
        FindAccumulatorType(statement.lookup, name, column);  // Throws where there is none.
        throw LumRuntimeException(mismatch);
    }
    return FoldColumn(statement.lookup, name, column, initial, steps);
}

SV Apply(const Statement& statement, const std::vector<SV>& columns) {
    return ApplyFunction(statement.lookup, statement.GetFunctionName(), columns,
                         statement.ReadArguments());
}

void RequireScalars(const Statement& statement, const std::vector<SV>& values) {
    for (const SV& value : values) {
        Require(IsPrimitive(value->GetType()), LumError::SetValueTypeMismatch,
                statement.GetFunctionName());
    }
}

// Integers are divided by the processor, which stops the process where there is no quotient.
template <std::integral T>
void RequireQuotient(const SV& dividend, const SV& divisor) {
    if (!dividend->IsSpecial() && !divisor->IsSpecial()) {
        Require(FetchStoreValue<T>(divisor) != 0, LumError::DivideByZero);
        Require(FetchStoreValue<T>(divisor) != -1 ||
                    FetchStoreValue<T>(dividend) != std::numeric_limits<T>::lowest(),
                LumError::OutOfBounds);
    }
}

// Null where the function gives no T.
template <MultinaryOutput T>
SV TryCall(const RegisteredFunctions& functions, const std::vector<SV>& values) {
    const MultinaryFunction<T> function = GetMultinaryFunction<T>(functions);
    if (function == nullptr) {
        return nullptr;
    }
    if constexpr (std::same_as<T, int> || std::same_as<T, long long>) {
        if (functions.GetFunctionName() == RInternString(L"/") && values.size() == 2) {
            RequireQuotient<T>(values[0], values[1]);
        }
    }
    return MakeStoreValue<T>(functions.GetOutputType(), function(values));
}

SV RunConstant(const Statement& statement) {
    Require(statement.spec.GetInputs().empty(), LumError::EmptyInputNeeded);
    const SV& value = statement.spec.GetValue();
    Require(value != nullptr, LumError::NullValue);
    Require(IsPrimitive(value->GetType()), LumError::ConstantTypeUnsupported);
    return value;
}

SV RunCopy(const Statement& statement) {
    const SV value = statement.ReadOneInput();
    Require(!statement.spec.GetInputs()[0].IsPrefixOf(statement.spec.GetOutputs()[0]),
            LumError::CopyIntoSelf);
    return ShareValue(value);
}

SV RunMap(const Statement& statement) {
    const SV input = statement.ReadOneInput();
    return ToFormOf(input, Apply(statement, {ToColumn(input, LumError::MapInputType)}));
}

SV RunZipWith(const Statement& statement) {
    const std::vector<SV> columns = statement.ReadArrays(LumError::ZipWithInputType);
    Require(columns.size() == 2, LumError::TwoInputsNeeded);
    return Apply(statement, columns);
}

SV RunReduce(const Statement& statement) {
    const SV column = ToColumn(statement.ReadOneInput(), LumError::ReduceInputType);
    return Fold(statement, column, LumError::ReduceInitialType, std::nullopt);
}

template <FoldDirection kDirection, LumError kInputError, LumError kMismatch>
SV RunScan(const Statement& statement) {
    const SV column = statement.ReadOneInput();
    Require(IsArray(column), kInputError);
    return Fold(statement, column, kMismatch, kDirection);
}

SV RunSetValue(const Statement& statement) {
    std::vector<SV> values = statement.ReadInputs();
    Require(!values.empty(), LumError::InputsNeeded);
    RequireScalars(statement, values);
    for (SV& value : values) {
        value = ColumnOf({value});
    }
    return Apply(statement, values)->AsArray().GetElement(0);
}

constexpr Operator kOperators[] = {
    {OperatorType::Constant, Parts::Literal, RunConstant},
    {OperatorType::Copy, Parts::None, RunCopy},
    {OperatorType::Map, Parts::Function, RunMap},
    {OperatorType::Reduce, Parts::LiteralAndFunction, RunReduce},
    {OperatorType::Scan, Parts::LiteralAndFunction,
     RunScan<FoldDirection::Forward, LumError::ScanInputType, LumError::ScanInitialType>},
    {OperatorType::ScanRight, Parts::LiteralAndFunction,
     RunScan<FoldDirection::Backward, LumError::ScanRightInputType,
             LumError::ScanRightInitialType>},
    {OperatorType::SetValue, Parts::Function, RunSetValue},
    {OperatorType::SetValueMulti, Parts::Function, CallListFunction},
    {OperatorType::ZipWith, Parts::Function, RunZipWith},
};

}  // namespace

const std::span<const Operator> kElementOperators = kOperators;

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
    const RegisteredFunctions& functions = statement.lookup.GetMultinaryFunctions().GetFunctions(
        FunctionKey(name, std::move(types), FunctionKey::ArgContainer::Vector));
    for (const auto tryCall :
         {TryCall<bool>, TryCall<int>, TryCall<long long>, TryCall<float>, TryCall<double>}) {
        if (SV result = tryCall(functions, values)) {
            return result;
        }
    }
    throw LumRuntimeException(LumError::FunctionOutputMismatch, name);
}

}  // namespace lumengine
