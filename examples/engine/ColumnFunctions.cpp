#include "ColumnFunctions.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "Columns.h"
#include "Statement.h"
#include "lum/core/functions/FunctionNames.h"
#include "lum/core/functions/IUnaryFunctor.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"

namespace lumengine {
namespace {

using namespace lum::core;

// The kinds of the elements of a result that is special where an input is; empty where none is.
std::vector<SpecialKind> CombineKinds(const std::vector<SV>& columns) {
    std::vector<SpecialKind> combined;
    for (const SV& column : columns) {
        Require(CountRows(column) == CountRows(columns[0]), LumError::VectorFunctionSize);
        std::vector<SpecialKind> kinds = KindsOf(column);
        if (combined.empty()) {
            combined = std::move(kinds);
            continue;
        }
        for (std::size_t row = 0; row < kinds.size(); ++row) {
            if (combined[row] == SpecialKind::Normal) {
                combined[row] = kinds[row];
            }
        }
    }
    return combined;
}

// The normal elements of a column.
SV SelectNormal(const SV& column, const std::vector<SpecialKind>& kinds) {
    Rows rows;
    for (unsigned row = 0; row < kinds.size(); ++row) {
        if (kinds[row] == SpecialKind::Normal) {
            rows.push_back(row);
        }
    }
    return SelectRows(column, std::move(rows));
}

bool IsOfType(const SV& constant, const VariableTypeRef& type) {
    if (type.IsAnyType()) {
        return true;
    }
    const CollectionType* const expected = type->TryAs<CollectionType>();
    const CollectionType* const actual = constant->GetType()->TryAs<CollectionType>();
    return type->Is(constant->GetStoreType()) &&
           (expected == nullptr || actual == nullptr ||
            expected->GetElementType()->Is(actual->GetElementType()->GetStoreType()));
}

// `constantTypes` are those that the function is made from.
template <typename RawFunctor>
std::unique_ptr<RawFunctor> MakeFunctor(const LumRawFunctions<RawFunctor>& functions,
                                        const TypeRefVec<VariableTypeRef>& constantTypes,
                                        bool isSpecialForm, const std::vector<SV>& constants) {
    if (!functions.IsCreator()) {
        Require(constants.empty(), LumError::NonCreatorCalledAsCreator,
                functions.GetFunctionName());
        return isSpecialForm ? functions.GetSpecialFactory()() : functions.GetRegularFactory()();
    }
    Require(constants.size() == constantTypes.size(), LumError::CreatorInputCount,
            functions.GetFunctionName());
    for (std::size_t i = 0; i < constants.size(); ++i) {
        Require(IsOfType(constants[i], constantTypes[i]), LumError::CreatorInputType,
                functions.GetFunctionName());
    }
    return isSpecialForm ? functions.GetSpecialCreatorFactory()(constants)
                         : functions.GetRegularCreatorFactory()(constants);
}

// How a function runs over columns, as a fold where there is an `initial` value.
template <typename RawFunctor>
struct Plan {
    Plan(const LumRawFunctions<RawFunctor>& functions, const FunctionInfo& info,
         const std::vector<SV>& columns, const std::vector<SV>& constants, const SV& initial)
        : type(functions.GetOutputType()), kinds(CombineKinds(columns)), inputs(columns) {
        const bool isFold = initial != nullptr;
        const bool hasSpecials = !kinds.empty() || (isFold && initial->IsSpecial());
        isSpecialForm = !functions.HasRegularForm() || (hasSpecials && functions.HasSpecialForm());
        functor = MakeFunctor(functions, info.GetCreatorInputTypes(), isSpecialForm, constants);
        const RInternString countAll(FunctionNames::COUNT_ALL);
        isSelective = !isSpecialForm && !kinds.empty() &&
                      !(isFold && functions.GetFunctionName() == countAll);
        for (SV& input : inputs) {
            input = isSelective ? SelectNormal(input, kinds) : input;
        }
    }

    const Type* type;  // Of what the function gives.
    std::vector<SpecialKind> kinds;
    std::vector<SV> inputs;  // What the function is given.
    bool isSpecialForm;
    bool isSelective;  // It is given the normal elements alone.
    std::unique_ptr<RawFunctor> functor;
};

void ApplyRegular(IRawUnaryFunctor& functor, std::vector<ColumnViews>& inputs,
                  const RawDataView& outputs) {
    functor.ApplyRaw(inputs[0].GetValues(), outputs);
}
void ApplyRegular(IRawBinaryFunctor& functor, std::vector<ColumnViews>& inputs,
                  const RawDataView& outputs) {
    functor.ApplyRaw(inputs[0].GetValues(), inputs[1].GetValues(), outputs);
}
void ApplySpecial(IRawUnaryFunctor& functor, std::vector<ColumnViews>& inputs,
                  const RawDataView& outputs, const RawDataView& outputKinds) {
    functor.ApplyRaw(inputs[0].GetValues(), inputs[0].GetKinds(), outputs, outputKinds);
}
void ApplySpecial(IRawBinaryFunctor& functor, std::vector<ColumnViews>& inputs,
                  const RawDataView& outputs, const RawDataView& outputKinds) {
    functor.ApplyRaw(inputs[0].GetValues(), inputs[0].GetKinds(), inputs[1].GetValues(),
                     inputs[1].GetKinds(), outputs, outputKinds);
}

// The storage of a column that is being computed.
template <StorageType T>
struct Output {
    Output(const Type* elementType, lumsize_t count, bool hasKinds)
        : type(elementType),
          values(std::make_shared<VectorRawData<T>>(count, T())),
          kinds(std::make_shared<VectorRawData<SpecialKind>>(hasKinds ? count : 0,
                                                             SpecialKind::Normal)) {}

    SV MakeColumn() const {
        const auto view = std::as_const(*kinds).GetView();
        const bool hasSpecials = std::any_of(
            view.begin(), view.end(), [](SpecialKind kind) { return kind != SpecialKind::Normal; });
        return factory::MakeArray<T>(type, values, hasSpecials ? kinds : nullptr,
                                     SortSpecOrder::UNKNOWN);
    }

    const Type* type;
    std::shared_ptr<VectorRawData<T>> values;
    std::shared_ptr<VectorRawData<SpecialKind>> kinds;
};

// Moves the results for the normal elements, which stand at the front, to the indices of these
// elements, from the last one down. `fill(index)` is the element at the index of a special one.
template <typename T, typename Fill>
void SpreadResults(ArrayView<T> values, const std::vector<SpecialKind>& kinds, const Fill& fill) {
    auto next = static_cast<lumsize_t>(std::count(kinds.begin(), kinds.end(), SpecialKind::Normal));
    for (auto index = static_cast<lumsize_t>(kinds.size()); index-- > 0;) {
        if (kinds[index] != SpecialKind::Normal) {
            values[index] = fill(index, next);
        } else if (--next != index) {
            values[index] = std::move(values[next]);
        }
    }
}

template <typename RawFunctor>
SV RunApply(const Plan<RawFunctor>& plan, lumsize_t count) {
    std::vector<ColumnViews> inputs(plan.inputs.begin(), plan.inputs.end());
    return DispatchStorage(plan.type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        Output<T> output(plan.type, count, plan.isSpecialForm || plan.isSelective);
        const RawDataView outputs(*output.values, 0, inputs[0].GetValues().GetSize());
        if (plan.isSpecialForm) {
            ApplySpecial(*plan.functor, inputs, outputs, RawDataView(*output.kinds));
        } else {
            ApplyRegular(*plan.functor, inputs, outputs);
        }
        if (plan.isSelective) {
            SpreadResults(output.values->GetView(), plan.kinds,
                          [](lumsize_t, lumsize_t) { return T(); });
            std::copy(plan.kinds.begin(), plan.kinds.end(), output.kinds->GetView().begin());
        }
        return output.MakeColumn();
    });
}

template <StorageType T>
SV RunFold(const Plan<IRawBinaryFunctor>& plan, const SV& initial, lumsize_t count,
           std::optional<FoldDirection> steps) {
    const FoldDirection direction = steps.value_or(FoldDirection::Forward);
    const T first = initial->IsSpecial() && plan.isSpecialForm ? T() : FetchStored<T>(initial);
    VectorRawData<T> value(1, first);
    VectorRawData<SpecialKind> kind(1, initial->GetSpecialKind());
    Output<T> output(plan.type, steps ? count : 0, plan.isSpecialForm);
    ColumnViews input(plan.inputs[0]);
    const RawDataView outputs(*output.values, 0, steps ? input.GetValues().GetSize() : 0);
    if (plan.isSpecialForm) {
        plan.functor->FoldRaw(RawDataView(value), RawDataView(kind), input.GetValues(),
                              input.GetKinds(), outputs, RawDataView(*output.kinds), direction);
    } else {
        plan.functor->FoldRaw(RawDataView(value), input.GetValues(), outputs, direction);
    }
    if (!steps) {
        const SpecialKind resultKind = kind.GetView()[0];
        return resultKind == SpecialKind::Normal
                   ? MakeStoreValueFromStorageType<T>(plan.type, value.GetView()[0])
                   : factory::MakeSpecial(plan.type, resultKind);
    }
    if (plan.isSelective) {
        // At a special element the accumulator is that of the element before it in the walk.
        const ArrayView<T> values = output.values->GetView();
        SpreadResults(values, plan.kinds, [&](lumsize_t index, lumsize_t normalsBelow) -> T {
            if (direction == FoldDirection::Forward) {
                return normalsBelow == 0 ? first : values[normalsBelow - 1];
            }
            return index + 1 == count ? first : values[index + 1];
        });
    }
    return output.MakeColumn();
}

}  // namespace

FunctionKey MakeQuery(const RInternString& name, const std::vector<SV>& columns) {
    TypeRefVec<VariableTypeRef> types;
    for (const SV& column : columns) {
        types.emplace_back(ElementTypeOf(column));
    }
    return FunctionKey(name, std::move(types), FunctionKey::ArgContainer::Separate);
}

FunctionKey MakeFoldQuery(const RInternString& name, const Type* accumulatorType,
                          const SV& column) {
    return FunctionKey(name, accumulatorType, ElementTypeOf(column),
                       FunctionKey::ArgContainer::Separate);
}

SV ApplyFunction(const IFunctionLookup& lookup, const RInternString& name,
                 const std::vector<SV>& columns, const std::vector<SV>& constants) {
    Require(columns.size() == 1 || columns.size() == 2, LumError::InvalidInputCount);
    const FunctionKey query = MakeQuery(name, columns);
    const FunctionInfo& info = lookup.GetFunction(query);
    const auto apply = [&](const auto& functions) {
        return RunApply(Plan(functions, info, columns, constants, /*initial=*/nullptr),
                        CountRows(columns[0]));
    };
    return columns.size() == 1 ? apply(lookup.GetUnaryFunctions().GetRawFunctions(query))
                               : apply(lookup.GetBinaryFunctions().GetRawFunctions(query));
}

SV FoldColumn(const IFunctionLookup& lookup, const RInternString& name, const SV& column,
              const SV& initial, std::optional<FoldDirection> steps) {
    const FunctionKey query = MakeFoldQuery(name, initial->GetType(), column);
    const LumRawBinaryFunctions functions = lookup.GetBinaryFunctions().GetRawFunctions(query);
    Require(functions.GetOutputType()->Is(initial->GetType()->GetStoreType()),
            LumError::FunctionOutputMismatch, name);
    const Plan plan(functions, lookup.GetFunction(query), {column}, {}, initial);
    return DispatchStorage(plan.type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        return RunFold<T>(plan, initial, CountRows(column), steps);
    });
}

const Type* FindAccumulatorType(const IFunctionLookup& lookup, const RInternString& name,
                                const SV& column) {
    const Type* const elementType = ElementTypeOf(column);
    if (lookup.HasFunction(MakeFoldQuery(name, elementType, column))) {
        return elementType;
    }
    const Type* found = nullptr;
    lookup.GetBinaryFunctions().VisitFunctions(
        [&](const FunctionKey& key, const RegisteredFunctions&) {
            const Type* const type = key.GetInputTypes()[0];
            if (found == nullptr && type != nullptr && key.GetName() == name &&
                lookup.HasFunction(MakeFoldQuery(name, type, column))) {
                found = type;
            }
        });
    if (found == nullptr) {
        lookup.GetFunction(MakeFoldQuery(name, elementType, column));  // Says what is missing.
    }
    return found;
}

}  // namespace lumengine
