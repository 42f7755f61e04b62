// Bools, integers and reals as values.
#include <bit>

#include "core/main/store/ScalarValue.h"
#include "core/main/utility/NumberCast.h"
#include "lum/core/Check.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/utility/FloatUtil.h"
#include "lum/core/utility/Fnv.h"

namespace lum::core {
namespace {

constexpr unsigned int kFuzzyUlps = 16;

template <typename T>
int CompareNumbers(T a, T b) {
    // In this order, so that a NaN compares as equal.
    return b > a ? -1 : a > b ? 1 : 0;
}

class ValueBool final : public ScalarValue<ValueBool> {
public:
    explicit ValueBool(bool value) : m_value(value) {}

    const Type* GetType() const override { return BoolType::Get(); }
    uint64 GetHashValue() const override { return m_value ? 1 : 0; }
    bool AsBool() const override { return m_value; }
    std::unique_ptr<StoreValue> Cast(const Type* type) const override {
        if (type->Is(StoreType::Bool)) {
            return Clone();
        }
        LUM_FAIL(LumError::IllegalCast);
    }

protected:
    int CompareImpl(const StoreValue& other) const override {
        return CompareNumbers<int>(m_value, other.AsBool());
    }

private:
    bool m_value;
};

class ValueInt32 final : public ScalarValue<ValueInt32> {
public:
    explicit ValueInt32(int value) : m_value(value) {}

    const Type* GetType() const override { return IntType::Get32(); }
    uint64 GetHashValue() const override { return FnvHash(static_cast<unsigned int>(m_value)); }
    int AsInt32() const override { return m_value; }
    std::unique_ptr<StoreValue> Cast(const Type* type) const override {
        switch (type->GetStoreType()) {
            case StoreType::Int32:
                return Clone();
            case StoreType::Int64:
                return factory::MakeInt64UniquePtr(m_value);
            case StoreType::Real32:
                return factory::MakeReal32UniquePtr(static_cast<float>(m_value));
            case StoreType::Real64:
                return factory::MakeReal64UniquePtr(m_value);
            default:
                LUM_FAIL(LumError::IllegalCast);
        }
    }

protected:
    int CompareImpl(const StoreValue& other) const override {
        return CompareNumbers(m_value, other.AsInt32());
    }

private:
    int m_value;
};

class ValueInt64 final : public ScalarValue<ValueInt64> {
public:
    explicit ValueInt64(int64 value) : m_value(value) {}

    const Type* GetType() const override { return IntType::Get64(); }
    uint64 GetHashValue() const override { return FnvHash(static_cast<uint64>(m_value)); }
    int64 AsInt64() const override { return m_value; }
    std::unique_ptr<StoreValue> Cast(const Type* type) const override {
        switch (type->GetStoreType()) {
            case StoreType::Int32:
                return factory::MakeInt32UniquePtr(static_cast<int>(m_value));
            case StoreType::Int64:
                return Clone();
            case StoreType::Real32:
                return factory::MakeReal32UniquePtr(static_cast<float>(m_value));
            case StoreType::Real64:
                return factory::MakeReal64UniquePtr(static_cast<double>(m_value));
            default:
                LUM_FAIL(LumError::IllegalCast);
        }
    }

protected:
    int CompareImpl(const StoreValue& other) const override {
        return CompareNumbers(m_value, other.AsInt64());
    }

private:
    int64 m_value;
};

class ValueReal32 final : public ScalarValue<ValueReal32> {
public:
    ValueReal32(const RealType* type, float value) : m_type(type), m_value(value) {}

    const Type* GetType() const override { return m_type; }
    uint64 GetHashValue() const override {
        // Zeros are equal whatever their sign.
        return FnvHash(std::bit_cast<unsigned int>(m_value == 0.0f ? 0.0f : m_value));
    }
    float AsReal32() const override { return m_value; }
    std::unique_ptr<StoreValue> Cast(const Type* type) const override {
        switch (type->GetStoreType()) {
            case StoreType::Int32:
                return factory::MakeInt32UniquePtr(TruncateReal<int>(m_value));
            case StoreType::Int64:
                return factory::MakeInt64UniquePtr(TruncateReal<int64>(m_value));
            case StoreType::Real32:
                return Clone();
            case StoreType::Real64:
                return factory::MakeReal64UniquePtr(static_cast<double>(m_value),
                                                    m_type->GetPrecision(), m_type->GetScale());
            default:
                LUM_FAIL(LumError::IllegalCast);
        }
    }

protected:
    int CompareImpl(const StoreValue& other) const override {
        return CompareNumbers(m_value, other.AsReal32());
    }
    int FuzzyCompareImpl(const StoreValue& other) const override {
        return FloatUtil::Compare(m_value, other.AsReal32(), kFuzzyUlps);
    }

private:
    const RealType* m_type;
    float m_value;
};

class ValueReal64 final : public ScalarValue<ValueReal64> {
public:
    ValueReal64(const RealType* type, double value) : m_type(type), m_value(value) {}

    const Type* GetType() const override { return m_type; }
    uint64 GetHashValue() const override {
        return FnvHash(std::bit_cast<uint64>(m_value == 0.0 ? 0.0 : m_value));
    }
    double AsReal64() const override { return m_value; }
    std::unique_ptr<StoreValue> Cast(const Type* type) const override {
        switch (type->GetStoreType()) {
            case StoreType::Int32:
                return factory::MakeInt32UniquePtr(TruncateReal<int>(m_value));
            case StoreType::Int64:
                return factory::MakeInt64UniquePtr(TruncateReal<int64>(m_value));
            case StoreType::Real32:
                return factory::MakeReal32UniquePtr(static_cast<float>(m_value));
            case StoreType::Real64:
                return Clone();
            default:
                LUM_FAIL(LumError::IllegalCast);
        }
    }

protected:
    int CompareImpl(const StoreValue& other) const override {
        return CompareNumbers(m_value, other.AsReal64());
    }
    int FuzzyCompareImpl(const StoreValue& other) const override {
        return FloatUtil::Compare(m_value, other.AsReal64(), kFuzzyUlps);
    }

private:
    const RealType* m_type;
    double m_value;
};

}  // namespace

namespace factory {

SV MakeBool(bool value) {
    return std::make_shared<ValueBool>(value);
}
SV MakeInt32(int value) {
    return std::make_shared<ValueInt32>(value);
}
SV MakeInt64(int64 value) {
    return std::make_shared<ValueInt64>(value);
}
SV MakeReal32(float value) {
    return std::make_shared<ValueReal32>(RealType::Get32(), value);
}
SV MakeReal32(float value, signed char precision, signed char scale) {
    return std::make_shared<ValueReal32>(RealType::Get32(precision, scale), value);
}
SV MakeReal64(double value) {
    return std::make_shared<ValueReal64>(RealType::Get64(), value);
}
SV MakeReal64(double value, signed char precision, signed char scale) {
    return std::make_shared<ValueReal64>(RealType::Get64(precision, scale), value);
}

std::unique_ptr<StoreValue> MakeBoolUniquePtr(bool value) {
    return std::make_unique<ValueBool>(value);
}
std::unique_ptr<StoreValue> MakeInt32UniquePtr(int value) {
    return std::make_unique<ValueInt32>(value);
}
std::unique_ptr<StoreValue> MakeInt64UniquePtr(int64 value) {
    return std::make_unique<ValueInt64>(value);
}
std::unique_ptr<StoreValue> MakeReal32UniquePtr(float value) {
    return std::make_unique<ValueReal32>(RealType::Get32(), value);
}
std::unique_ptr<StoreValue> MakeReal32UniquePtr(float value, signed char precision,
                                                signed char scale) {
    return std::make_unique<ValueReal32>(RealType::Get32(precision, scale), value);
}
std::unique_ptr<StoreValue> MakeReal64UniquePtr(double value) {
    return std::make_unique<ValueReal64>(RealType::Get64(), value);
}
std::unique_ptr<StoreValue> MakeReal64UniquePtr(double value, signed char precision,
                                                signed char scale) {
    return std::make_unique<ValueReal64>(RealType::Get64(precision, scale), value);
}

}  // namespace factory
}  // namespace lum::core
