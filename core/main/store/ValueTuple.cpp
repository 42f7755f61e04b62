#include <optional>
#include <utility>

#include "core/main/utility/Parser.h"
#include "lum/core/Check.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/TupleFactory.h"
#include "lum/core/store/ValueUtil.h"

namespace lum::core {
namespace {

/// A packed row as a value.
class ValueTuple final : public StoreValue, public IStoreCollection {
public:
    explicit ValueTuple(LumTuple&& tuple) : m_tuple(std::move(tuple)) {
        // Rows make their blocks when they are first read, which must not happen on two threads.
        m_tuple.GetTupleData().EnsureBlock();
    }

    const Type* GetType() const override { return m_tuple.GetType(); }
    lumsize_t GetCount() const override { return m_tuple.GetCount(); }
    uint64 GetHashValue() const override { return m_tuple.GetHashValue(); }
    const IStoreCollection& AsCollection() const override { return *this; }
    const LumTuple& AsTuple() const override { return m_tuple; }
    std::unique_ptr<StoreValue> Clone() const override {
        return std::make_unique<ValueTuple>(LumTuple(m_tuple));
    }
    bool IsEqual(const StoreValue& other) const override {
        if (GetType()->GetBaseType() != other.GetType()->GetBaseType()) {
            return false;
        }
        const auto* const tuple = dynamic_cast<const ValueTuple*>(&other);
        return tuple != nullptr && m_tuple.Compare(tuple->m_tuple) == 0;
    }

    SV GetValue(const RInternString& key) const override {
        SV value = TryGetValue(key);
        if (value == nullptr) {
            LUM_FAIL(LumError::KeyNotFound, key.GetValue());
        }
        return value;
    }
    SV TryGetValue(const RInternString& key) const override {
        const std::optional<lumsize_t> index = FindMember(key);
        return index.has_value() ? FetchStoreValueFromTuple(m_tuple, *index) : nullptr;
    }
    bool HasKey(const RInternString& key) const override { return FindMember(key).has_value(); }

protected:
    int CompareImpl(const StoreValue& other) const override {
        const auto* const tuple = dynamic_cast<const ValueTuple*>(&other);
        if (tuple == nullptr) {
            LUM_FAIL(LumError::ExpectedTuple);
        }
        return m_tuple.Compare(tuple->m_tuple);
    }

private:
    std::optional<lumsize_t> FindMember(const RInternString& key) const {
        const std::optional<int> number = TryReadInt32(key.GetValue());
        if (!number.has_value() || static_cast<lumsize_t>(*number) >= GetCount()) {
            return std::nullopt;
        }
        return static_cast<lumsize_t>(*number);
    }

    LumTuple m_tuple;
};

}  // namespace

SV factory::MakeTuple(LumTuple&& tuple) {
    return std::make_shared<ValueTuple>(std::move(tuple));
}

}  // namespace lum::core
