#include <optional>

#include "core/main/functions/BuiltinFamilies.h"
#include "core/main/functions/BuiltinTypes.h"
#include "core/main/functions/CreatorInput.h"
#include "lum/core/functions/FunctionNames.h"
#include "lum/core/functions/RegisterFunction.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/types/CollectionTypes.h"

namespace lum::core {
namespace {

template <FunctionElement T>
ElementWithKind<bool> IsNeitherNullNorMissing(const T& /*element*/, SpecialKind kind) {
    return {kind != SpecialKind::Null && kind != SpecialKind::Missing, SpecialKind::Normal};
}

template <FunctionElement T>
ElementWithKind<bool> IsNormal(const T& /*element*/, SpecialKind kind) {
    return {kind == SpecialKind::Normal, SpecialKind::Normal};
}

template <FunctionElement T>
class KeepOnly {
public:
    explicit KeepOnly(const std::vector<SV>& values) : m_set(values) {}
    bool operator()(const T& element) const { return m_set.Contains(element); }
    void ApplyColumn(const CellT<T>* cells, unsigned char* out, uint64 count) const {
        m_set.ContainsEach(cells, out, count);
    }

private:
    CreatorSet<T> m_set;
};

bool IsTrue(bool element) {
    return element;
}
bool IsFalse(bool element) {
    return !element;
}

// Drops repetitions: true for what differs from the element before it.
template <FunctionElement T>
class KeepOnlyFirstFunctor {
public:
    // A creator, so that every use has a state of its own.
    explicit KeepOnlyFirstFunctor(const std::vector<SV>& /*values*/) {}

    bool operator()(const T& element) {
        if (m_last.has_value() && AreEqual(*m_last, element)) {
            return false;
        }
        m_last = element;
        return true;
    }

private:
    static bool AreEqual(const T& a, const T& b) {
        if constexpr (std::is_same_v<T, SV>) {
            return a == nullptr || b == nullptr ? a == b : a->IsEqual(*b);
        } else {
            return a == b;
        }
    }

    std::optional<T> m_last;
};

}  // namespace

void RegisterFilterFunctions(RegistryOfUnaryFunctions& registry) {
    const Type* const output = BoolType::Get();

    ForEachType<int, long long, float, double, LumDateTime>([&]<typename T>() {
        RegisterFunction<IsNeitherNullNorMissing<T>>(
            registry, KeyOf<T>(FunctionNames::FILTER_NULL_AND_MISSING), output);
        RegisterFunction<IsNormal<T>>(registry, KeyOf<T>(FunctionNames::KEEP_ONLY_NORMAL), output);
    });
    RegisterFunction<IsNeitherNullNorMissing<LumDateTime>>(
        registry, FunctionKey(FunctionNames::FILTER_NULL_AND_MISSING, DateType::Get()), output);
    RegisterFunction<IsNormal<LumDateTime>>(
        registry, FunctionKey(FunctionNames::KEEP_ONLY_NORMAL, DateType::Get()), output);

    ForEachType<bool, int, long long, float, double, RIndirectString>([&]<typename T>() {
        RegisterFunction<KeepOnly<T>>(registry, KeyOf<T>(FunctionNames::KEEP_ONLY), output,
                                      {SetType::Get(TypeOf<T>())});
    });

    RegisterFunction<IsTrue>(registry, KeyOf<bool>(FunctionNames::KEEP_ONLY_TRUE), output);
    RegisterFunction<IsFalse>(registry, KeyOf<bool>(FunctionNames::KEEP_ONLY_FALSE), output);

    ForEachType<RIndirectString, int, long long, SV>([&]<typename T>() {
        RegisterFunction<KeepOnlyFirstFunctor<T>>(registry,
                                                  KeyOf<T>(FunctionNames::KEEP_ONLY_FIRST), output);
    });
}

}  // namespace lum::core
