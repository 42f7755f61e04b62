#include <lum/core/LumCore.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

using namespace lum::core;

double ToFahrenheit(const double& celsius) {
    return celsius * 1.8 + 32;
}

ElementWithKind<double> Reciprocal(const double& value, SpecialKind kind) {
    return OrNull(1 / value, kind == SpecialKind::Normal && value != 0);
}

class Clamp {
public:
    explicit Clamp(const std::vector<SV>& limits)
        : m_low(FetchStoreValue<double>(limits.at(0))),
          m_high(FetchStoreValue<double>(limits.at(1))) {}
    double operator()(const double& value) const {
        return std::min(std::max(value, m_low), m_high);
    }

private:
    double m_low;
    double m_high;
};

class Change {
public:
    double operator()(const double& value) {
        const double change = m_last ? value - *m_last : 0;
        m_last = value;
        return change;
    }

private:
    std::optional<double> m_last;
};

std::unique_ptr<FunctionRegistry> MakeRegistry() {
    std::unique_ptr<FunctionRegistry> registry = FunctionRegistry::Make();
    RegisterAllBuiltinFunctions(*registry);
    RegistryOfUnaryFunctions& functions = registry->GetUnaryFunctions();
    const Type* const real = RealType::Get64();
    RegisterFunction<ToFahrenheit>(functions, FunctionKey(L"toFahrenheit", real), real);
    RegisterFunction<Reciprocal>(functions, FunctionKey(L"reciprocal", real), real);
    RegisterFunction<Clamp>(functions, FunctionKey(L"clamp", real), real, {real, real});
    RegisterFunction<Change>(functions, FunctionKey(L"change", real), real);
    return registry;
}

void RunRegular(const IFunctionLookup& lookup, const wchar_t* name,
                const std::vector<SV>& constants, const std::vector<double>& inputs) {
    const LumRawUnaryFunctions functions =
        lookup.GetUnaryFunctions().GetRawFunctions(FunctionKey(name, RealType::Get64()));
    const std::unique_ptr<IRawUnaryFunctor> functor =
        functions.IsCreator() ? functions.GetRegularCreatorFactory()(constants)
                              : functions.GetRegularFactory()();
    std::vector<double> outputs(inputs.size());
    dynamic_cast<IUnaryFunctor<double, double>&>(*functor).ApplyVector(inputs, outputs);
    std::cout << TStringCore(name);
    for (const double output : outputs) {
        std::cout << ' ' << output;
    }
    std::cout << '\n';
}

void RunSpecial(const IFunctionLookup& lookup, const wchar_t* name,
                const std::vector<double>& inputs, const std::vector<SpecialKind>& kinds) {
    const LumRawUnaryFunctions functions =
        lookup.GetUnaryFunctions().GetRawFunctions(FunctionKey(name, RealType::Get64()));
    const std::unique_ptr<IRawUnaryFunctor> functor = functions.GetSpecialFactory()();
    std::vector<double> outputs(inputs.size());
    std::vector<SpecialKind> outputKinds(inputs.size());
    dynamic_cast<IUnarySpecialFunctor<double, double>&>(*functor).ApplyVector(inputs, kinds,
                                                                              outputs, outputKinds);
    std::cout << TStringCore(name);
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        if (outputKinds[i] == SpecialKind::Normal) {
            std::cout << ' ' << outputs[i];
        } else {
            std::cout << ' ' << SpecialKindToString(outputKinds[i]);
        }
    }
    std::cout << '\n';
}

int main() {
    RegisterDefaultCollatorPool();
    const std::unique_ptr<FunctionRegistry> registry = MakeRegistry();
    const std::vector<double> celsius = {12.5, -40, 0, 8};
    RunRegular(*registry, L"toFahrenheit", {}, celsius);
    RunSpecial(
        *registry, L"reciprocal", celsius,
        {SpecialKind::Normal, SpecialKind::Missing, SpecialKind::Normal, SpecialKind::Normal});
    RunRegular(*registry, L"clamp", {factory::MakeReal64(0), factory::MakeReal64(10)}, celsius);
    RunRegular(*registry, L"change", {}, celsius);
}
