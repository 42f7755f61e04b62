#pragma once

#include <json/value.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "lum/core/serialize/IJsonObject.h"

namespace lum::core {

// A parsed text. Nothing changes once the root was parsed.
struct JsonDocument {
    std::string text;        // UTF-8.
    std::size_t origin = 0;  // What the values' offsets are counted from.
    Json::Value root;
};

// A value of a document, by reference: copies of JsonCpp's values are deep.
class JsonValueAdapter final : public IJsonObject {
public:
    JsonValueAdapter(std::shared_ptr<const JsonDocument> document, const Json::Value& value)
        : m_document(std::move(document)), m_array(*this), m_dictionary(*this) {
        MoveTo(value);
    }
    JsonValueAdapter(const JsonValueAdapter&) = delete;
    JsonValueAdapter& operator=(const JsonValueAdapter&) = delete;

    // Makes this stand for another value of the document; for whoever has the object alone.
    void MoveTo(const Json::Value& value) {
        m_value = &value;
        m_type = value.type();
    }

    bool IsPrimitive() const override { return !IsArray() && !IsDictionary(); }
    bool IsArray() const override { return m_type == Json::arrayValue; }
    bool IsDictionary() const override { return m_type == Json::objectValue; }
    bool IsString() const override { return m_type == Json::stringValue; }
    bool AsBool() const override;
    TStringCore AsString() const override;
    int AsInt32() const override;
    int64 AsInt64() const override;
    float AsReal32() const override;
    double AsReal64() const override;
    const ArrayIterable& AsArray() const override { return m_array; }
    const DictionaryIterable& AsDictionary() const override { return m_dictionary; }

private:
    class ArrayIterableImpl final : public ArrayIterable {
    public:
        explicit ArrayIterableImpl(const JsonValueAdapter& owner) : m_owner(owner) {}
        JsonIterator<std::shared_ptr<IJsonObject>> begin() const override;
        JsonIterator<std::shared_ptr<IJsonObject>> end() const override;
        std::size_t GetCount() const override { return m_owner.m_value->size(); }

    private:
        const JsonValueAdapter& m_owner;
    };
    class DictionaryIterableImpl final : public DictionaryIterable {
    public:
        explicit DictionaryIterableImpl(const JsonValueAdapter& owner) : m_owner(owner) {}
        JsonIterator<Entry> begin() const override;
        JsonIterator<Entry> end() const override;

    private:
        const JsonValueAdapter& m_owner;
    };

    bool IsReal() const { return m_type == Json::realValue; }
    bool IsNegativeZero() const;
    double ReadReal() const;
    template <typename T>
    JsonIterator<T> MakeIterator(Json::Value::const_iterator position) const;

    const std::shared_ptr<const JsonDocument> m_document;
    const Json::Value* m_value;
    Json::ValueType m_type;  // Of the value, which answers only through calls.
    const ArrayIterableImpl m_array;
    const DictionaryIterableImpl m_dictionary;
};

// A place in a document's container. `T` is that of JsonValueAdapter's iterables.
template <typename T>
class JsonValueIteratorAdapter final : public IJsonIteratorAdapter<T> {
public:
    JsonValueIteratorAdapter(std::shared_ptr<const JsonDocument> document,
                             Json::Value::const_iterator position, Json::Value::const_iterator end)
        : m_document(std::move(document)),
          m_position(position),
          m_end(end),
          m_isAtEnd(position == end) {}

    bool IsEqual(const IJsonIteratorAdapter<T>& other) const override;
    T Get() override;
    void MoveNext() override;

private:
    const std::shared_ptr<const JsonDocument> m_document;
    Json::Value::const_iterator m_position;
    const Json::Value::const_iterator m_end;
    bool m_isAtEnd;
    // The item here, once it was asked for. One that nobody kept serves for the next item as well,
    // so that a loop over a million items makes one object and not a million.
    std::shared_ptr<JsonValueAdapter> m_item;
};

}  // namespace lum::core
