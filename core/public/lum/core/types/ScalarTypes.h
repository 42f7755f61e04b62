#pragma once

#include "lum/core/types/Type.h"

namespace lum::core {

/// The scalar types without parameters: one instance each, their own base type, with their code as
/// text. See Type for threads, ownership and errors.
class LUM_CORE_API BoolType final : public Type {
public:
    static const BoolType* Get();
    const Type* GetBaseType() const override { return this; }

private:
    friend class Context;
    BoolType() : Type(StoreType::Bool) {}
};

class LUM_CORE_API DateType final : public Type {
public:
    static const DateType* Get();
    const Type* GetBaseType() const override { return this; }

private:
    friend class Context;
    DateType() : Type(StoreType::Date) {}
};

class LUM_CORE_API DateTimeType final : public Type {
public:
    static const DateTimeType* Get();
    const Type* GetBaseType() const override { return this; }

private:
    friend class Context;
    DateTimeType() : Type(StoreType::DateTime) {}
};

class LUM_CORE_API ColorType final : public Type {
public:
    static const ColorType* Get();
    const Type* GetBaseType() const override { return this; }

private:
    friend class Context;
    ColorType() : Type(StoreType::Color) {}
};

/// The types Int32 and Int64.
class LUM_CORE_API IntType final : public Type {
public:
    static const IntType* Get32();
    static const IntType* Get64();
    const Type* GetBaseType() const override { return this; }

private:
    friend class Context;
    explicit IntType(StoreType storeType) : Type(storeType) {}
};

/// The types Real32 and Real64, each with a precision and a scale, which are -1 in the default one.
///
/// Precisions that agree in their low four bits share one instance for each scale: the first that
/// was asked for.
class LUM_CORE_API RealType final : public Type {
public:
    static const RealType* Get32();
    static const RealType* Get64();
    static const RealType* Get32(signed char precision, signed char scale);
    static const RealType* Get64(signed char precision, signed char scale);

    signed char GetPrecision() const noexcept { return m_precision; }
    signed char GetScale() const noexcept { return m_scale; }
    /// The default type of the same width.
    const Type* GetBaseType() const override;
    /// For instance "r<-1,-1>".
    TStringCore ToString() const override;

private:
    friend class Context;
    RealType(StoreType storeType, signed char precision, signed char scale)
        : Type(storeType), m_precision(precision), m_scale(scale) {}

    const signed char m_precision;
    const signed char m_scale;
};

}  // namespace lum::core
