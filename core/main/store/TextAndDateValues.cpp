// Strings, dates and colours as values.
#include "core/main/store/ScalarValue.h"
#include "lum/core/Check.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

namespace lum::core {
namespace {

template <typename T>
int CompareOrdered(const T& a, const T& b) {
    return a < b ? -1 : a > b ? 1 : 0;
}

class ValueString final : public ScalarValue<ValueString> {
public:
    ValueString(const StringType* type, const RIndirectString& value)
        : m_type(type), m_value(value) {}

    const Type* GetType() const override { return m_type; }
    uint64 GetHashValue() const override { return GetCollator().Hash(m_value); }
    const RIndirectString& AsString() const override { return m_value; }
    std::unique_ptr<StoreValue> Cast(const Type* type) const override {
        if (type->Is(StoreType::String)) {
            return Clone();
        }
        LUM_FAIL(LumError::IllegalCast);
    }

protected:
    int CompareImpl(const StoreValue& other) const override {
        const int order = GetCollator().Compare(m_value, other.AsString());
        return order < 0 ? -1 : order > 0 ? 1 : 0;
    }

private:
    const ICollator& GetCollator() const { return m_type->GetCollation().GetCollator(); }

    const StringType* m_type;
    RIndirectString m_value;
};

class ValueDate final : public ScalarValue<ValueDate> {
public:
    explicit ValueDate(LumDateTime value) : m_value(value) {}

    const Type* GetType() const override { return DateType::Get(); }
    uint64 GetHashValue() const override { return m_value.GetHashValue(); }
    LumDateTime AsDate() const override { return m_value; }
    std::unique_ptr<StoreValue> Cast(const Type* type) const override {
        switch (type->GetStoreType()) {
            case StoreType::Date:
                return Clone();
            case StoreType::DateTime:
                return factory::MakeDateTimeUniquePtr(m_value);
            default:
                LUM_FAIL(LumError::IllegalCast);
        }
    }

protected:
    int CompareImpl(const StoreValue& other) const override {
        return CompareOrdered(m_value, other.AsDate());
    }

private:
    LumDateTime m_value;
};

class ValueDateTime final : public ScalarValue<ValueDateTime> {
public:
    explicit ValueDateTime(LumDateTime value) : m_value(value) {}

    const Type* GetType() const override { return DateTimeType::Get(); }
    uint64 GetHashValue() const override { return m_value.GetHashValue(); }
    LumDateTime AsDateTime() const override { return m_value; }
    std::unique_ptr<StoreValue> Cast(const Type* type) const override {
        switch (type->GetStoreType()) {
            case StoreType::Date:
                return factory::MakeDateUniquePtr(m_value);  // The time of day stays.
            case StoreType::DateTime:
                return Clone();
            default:
                LUM_FAIL(LumError::IllegalCast);
        }
    }

protected:
    int CompareImpl(const StoreValue& other) const override {
        return CompareOrdered(m_value, other.AsDateTime());
    }

private:
    LumDateTime m_value;
};

class ValueColor final : public ScalarValue<ValueColor> {
public:
    explicit ValueColor(LumColor value) : m_value(value) {}

    const Type* GetType() const override { return ColorType::Get(); }
    uint64 GetHashValue() const override { return m_value.GetHashValue(); }
    LumColor AsColor() const override { return m_value; }

protected:
    int CompareImpl(const StoreValue& other) const override {
        return CompareOrdered(m_value, other.AsColor());
    }

private:
    LumColor m_value;
};

}  // namespace

namespace factory {

SV MakeString(const RIndirectString& value) {
    return std::make_shared<ValueString>(StringType::Get(), value);
}
SV MakeString(const RIndirectString& value, const Collation& collation) {
    return std::make_shared<ValueString>(StringType::Get(collation), value);
}
SV MakeString(const TStringCore& value) {
    return MakeString(RIndirectString(value));
}
SV MakeString(const wchar_t* value) {
    return MakeString(RIndirectString(value));
}
SV MakeString(const TStringCore& value, const Collation& collation) {
    return MakeString(RIndirectString(value), collation);
}
SV MakeString(const wchar_t* value, const Collation& collation) {
    return MakeString(RIndirectString(value), collation);
}

SV MakeDate(LumDateTime value) {
    return std::make_shared<ValueDate>(value);
}
SV MakeDateTime(LumDateTime value) {
    return std::make_shared<ValueDateTime>(value);
}
std::unique_ptr<StoreValue> MakeDateUniquePtr(LumDateTime value) {
    return std::make_unique<ValueDate>(value);
}
std::unique_ptr<StoreValue> MakeDateTimeUniquePtr(LumDateTime value) {
    return std::make_unique<ValueDateTime>(value);
}

SV MakeColor(LumColor value) {
    return std::make_shared<ValueColor>(value);
}
SV MakeColor(int value) {
    return MakeColor(LumColor::FromInt32(value));
}
SV MakeColor(int red, int green, int blue, int alpha) {
    return MakeColor(LumColor(red, green, blue, alpha));
}

}  // namespace factory
}  // namespace lum::core
