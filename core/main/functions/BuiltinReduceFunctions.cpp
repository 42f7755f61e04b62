#include "core/main/functions/BuiltinFamilies.h"
#include "core/main/functions/BuiltinTypes.h"
#include "core/main/functions/FoldKernels.h"
#include "lum/core/functions/FunctionNames.h"
#include "lum/core/functions/RegisterFunction.h"

namespace lum::core {
namespace {

bool And(bool accumulator, bool element) {
    return static_cast<bool>(static_cast<int>(accumulator) & static_cast<int>(element));
}

bool Or(bool accumulator, bool element) {
    return static_cast<bool>(static_cast<int>(accumulator) | static_cast<int>(element));
}

bool Xor(bool accumulator, bool element) {
    return accumulator != element;
}

template <BestOf kOrder>
void RegisterBest(RegistryOfBinaryFunctions& registry, const wchar_t* name) {
    ForEachType<int, long long, float, double>([&]<typename T>() {
        RegisterFunction<BestElement<T, kOrder>>(registry, KeyOf<T, T>(name), TypeOf<T>());
        RegisterFunction<BestOfNormal<T, kOrder>>(registry, KeyOf<T, T>(name), TypeOf<T>());
    });
    for (const Type* const type :
         {TypeOf<LumDateTime>(), static_cast<const Type*>(DateType::Get())}) {
        RegisterFunction<BestOfNormal<LumDateTime, kOrder>>(
            registry, FunctionKey(name, type, type, FunctionKey::ArgContainer::Separate), type);
    }
}

}  // namespace

void RegisterReduceFunctions(RegistryOfBinaryFunctions& registry) {
    RegisterBest<BestOf::Least>(registry, FunctionNames::MIN);
    RegisterBest<BestOf::Greatest>(registry, FunctionNames::MAX);
    ForEachType<int, long long, float, double>([&]<typename T>() {
        RegisterFunction<Sum<T>>(registry, KeyOf<T, T>(FunctionNames::SUM), TypeOf<T>());
        RegisterFunction<SumOfNormal<T>>(registry, KeyOf<T, T>(FunctionNames::SUM), TypeOf<T>());
    });

    RegisterFunction<And>(registry, KeyOf<bool, bool>(FunctionNames::AND), TypeOf<bool>());
    RegisterFunction<Or>(registry, KeyOf<bool, bool>(FunctionNames::OR), TypeOf<bool>());
    RegisterFunction<Xor>(registry, KeyOf<bool, bool>(FunctionNames::XOR), TypeOf<bool>());
}

}  // namespace lum::core
