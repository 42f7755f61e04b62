#include "core/main/functions/BuiltinFamilies.h"
#include "core/main/functions/BuiltinTypes.h"
#include "core/main/utility/NumberCast.h"
#include "lum/core/functions/FunctionNames.h"
#include "lum/core/functions/RegisterFunction.h"
#include "lum/core/functions/SpecialRules.h"

namespace lum::core {
namespace {

// Integers keep their low bits, reals round to nearest.
template <typename In, typename Out>
Out Convert(const In& element) {
    if constexpr (std::is_floating_point_v<In> && std::is_integral_v<Out>) {
        return TruncateReal<Out>(element);
    } else {
        return static_cast<Out>(element);
    }
}

// A special element is converted like any other, and is Null.
template <typename In, typename Out>
ElementWithKind<Out> ConvertSpecial(const In& element, SpecialKind kind) {
    return {Convert<In, Out>(element), static_cast<SpecialKind>(kind != SpecialKind::Normal)};
}

double DateTimeToReal(const LumDateTime& element) {
    return element.ToDouble();
}

ElementWithKind<double> DateTimeToRealSpecial(const LumDateTime& element, SpecialKind kind) {
    return OrNull(element.ToDouble(), kind == SpecialKind::Normal);
}

template <typename In>
LumColor ToColor(const In& element) {
    return LumColor::FromInt32(static_cast<int>(element));
}

LumDateTime ToDateTime(const double& element) {
    return LumDateTime::FromDouble(element);
}

int GetMonth(const LumDateTime& element) {
    return element.GetLumDateTimeParts().GetMonth();
}
int GetYear(const LumDateTime& element) {
    return element.GetLumDateTimeParts().GetYear();
}
int GetISOWeek(const LumDateTime& element) {
    return element.GetLumISO8601DateTimeParts().GetISOWeek();
}
int GetISOYear(const LumDateTime& element) {
    return element.GetLumISO8601DateTimeParts().GetISOYear();
}

// The regular forms of the conversions from each of `In`.
template <typename Out, typename... In>
void RegisterConversions(RegistryOfUnaryFunctions& registry, const wchar_t* name) {
    ForEachType<In...>([&]<typename T>() {
        RegisterFunction<Convert<T, Out>>(registry, KeyOf<T>(name), TypeOf<Out>());
    });
}

template <typename Out, typename... In>
void RegisterSpecialConversions(RegistryOfUnaryFunctions& registry, const wchar_t* name) {
    ForEachType<In...>([&]<typename T>() {
        RegisterFunction<ConvertSpecial<T, Out>>(registry, KeyOf<T>(name), TypeOf<Out>());
    });
}

}  // namespace

void RegisterConversionFunctions(RegistryOfUnaryFunctions& registry) {
    RegisterConversions<int, long long, float, double>(registry, FunctionNames::TO_INT32);
    RegisterConversions<long long, int, float, double>(registry, FunctionNames::TO_INT64);
    RegisterConversions<float, int, long long, double>(registry, FunctionNames::TO_REAL32);
    RegisterSpecialConversions<float, double>(registry, FunctionNames::TO_REAL32);
    RegisterConversions<double, int, long long, float, double>(registry, FunctionNames::TO_REAL64);
    RegisterSpecialConversions<double, bool, long long, double>(registry, FunctionNames::TO_REAL64);

    RegisterFunction<DateTimeToReal>(registry, KeyOf<LumDateTime>(FunctionNames::TO_REAL64),
                                     TypeOf<double>());
    RegisterFunction<DateTimeToRealSpecial>(registry, KeyOf<LumDateTime>(FunctionNames::TO_REAL64),
                                            TypeOf<double>());
    ForEachType<int, long long>([&]<typename T>() {
        RegisterFunction<ToColor<T>>(registry, KeyOf<T>(FunctionNames::TO_COLOR),
                                     TypeOf<LumColor>());
    });
    RegisterFunction<ToDateTime>(registry, KeyOf<double>(FunctionNames::TO_DATETIME),
                                 TypeOf<LumDateTime>());

    RegisterFunction<GetMonth>(registry, KeyOf<LumDateTime>(FunctionNames::GET_MONTH),
                               TypeOf<int>());
    RegisterFunction<GetYear>(registry, KeyOf<LumDateTime>(FunctionNames::GET_YEAR), TypeOf<int>());
    RegisterFunction<GetISOWeek>(registry, KeyOf<LumDateTime>(FunctionNames::GET_ISO_WEEK),
                                 TypeOf<int>());
    RegisterFunction<GetISOYear>(registry, KeyOf<LumDateTime>(FunctionNames::GET_ISO_YEAR),
                                 TypeOf<int>());
}

}  // namespace lum::core
