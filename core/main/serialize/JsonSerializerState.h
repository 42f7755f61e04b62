#pragma once

#include "core/main/serialize/JsonBuilder.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

// What a serializer may be asked at the point where it stands: one state for the root and one for
// each open container. A state decides whether a call is legal and where a separator is due, and
// passes what is to be written on to the builder.
//
// Threads: one at a time. Ownership: the builder must outlive its states.
// Errors: a reported LumRuntimeException with the code of the call that is not legal; nothing was
// written then. Here stand the answers of states that know no such call.
class SerializerState {
public:
    explicit SerializerState(IJsonBuilder& builder) noexcept : m_builder(&builder) {}
    SerializerState(const SerializerState&) = delete;
    SerializerState& operator=(const SerializerState&) = delete;
    virtual ~SerializerState() = default;

    // This state is about to be pushed for a container, or was popped at its end.
    virtual void OnBeginArray();
    virtual void OnEndArray();
    virtual void OnBeginDictionary();
    virtual void OnEndDictionary();
    virtual void AppendKey(const TStringCore& key) = 0;
    virtual void AppendString(const TStringCore& text) = 0;
    virtual void AppendUnquotedString(const TStringCore& text) = 0;
    // A container is about to begin inside of this one.
    virtual void BeforeArray() = 0;
    virtual void BeforeDictionary() = 0;
    // It has ended.
    virtual void OnChildEnded() = 0;
    // A caller goes on to append at least one item by itself.
    virtual JsonItemLayout BeginItems();

protected:
    IJsonBuilder* const m_builder;
};

class RootSerializerState final : public SerializerState {
public:
    using SerializerState::SerializerState;
    void AppendKey(const TStringCore& key) override;
    void AppendString(const TStringCore& text) override;
    void AppendUnquotedString(const TStringCore& text) override;
    void BeforeArray() override { BeginItem(); }
    void BeforeDictionary() override { BeginItem(); }
    void OnChildEnded() override {}

private:
    void BeginItem();

    int m_items = 0;
};

class ArraySerializerState final : public SerializerState {
public:
    ArraySerializerState(IJsonBuilder& builder, bool isInline) noexcept
        : SerializerState(builder), m_isInline(isInline) {}
    void OnBeginArray() override;
    void OnEndArray() override;
    void AppendKey(const TStringCore& key) override;
    void AppendString(const TStringCore& text) override;
    void AppendUnquotedString(const TStringCore& text) override;
    void BeforeArray() override { BeginItem(); }
    void BeforeDictionary() override { BeginItem(); }
    void OnChildEnded() override;
    JsonItemLayout BeginItems() override;

private:
    void BeginItem();

    int m_items = 0;
    const bool m_isInline;
};

class DictionarySerializerState final : public SerializerState {
public:
    using SerializerState::SerializerState;
    void OnBeginDictionary() override;
    void OnEndDictionary() override;
    void AppendKey(const TStringCore& key) override;
    void AppendString(const TStringCore& text) override;
    void AppendUnquotedString(const TStringCore& text) override;
    void BeforeArray() override { BeginContainer(); }
    void BeforeDictionary() override { BeginContainer(); }
    void OnChildEnded() override;

private:
    enum State { NeedsKey = 0, NeedsValue = 1 };

    void BeginScalar();
    void BeginContainer();

    int m_items = 0;
    State m_state = NeedsKey;
};

}  // namespace lum::core
