#include "core/main/serialize/JsonSerializerState.h"

#include <algorithm>

#include "lum/core/Check.h"

namespace lum::core {

void SerializerState::OnBeginArray() {
    LUM_FAIL(LumError::ArrayNotSupported);
}

void SerializerState::OnEndArray() {
    LUM_FAIL(LumError::ArrayNotSupported);
}

void SerializerState::OnBeginDictionary() {
    LUM_FAIL(LumError::DictionaryNotSupported);
}

void SerializerState::OnEndDictionary() {
    LUM_FAIL(LumError::DictionaryNotSupported);
}

JsonItemLayout SerializerState::BeginItems() {
    LUM_FAIL(LumError::ArrayNotSupported);
}

// Root ------------------------------------------------------------------------------------------

void RootSerializerState::AppendKey(const TStringCore& /*key*/) {
    LUM_FAIL(LumError::KeyNotSupported);
}

void RootSerializerState::AppendString(const TStringCore& text) {
    BeginItem();
    m_builder->AppendString(text);
}

void RootSerializerState::AppendUnquotedString(const TStringCore& text) {
    BeginItem();
    m_builder->AppendUnquotedString(text);
}

void RootSerializerState::BeginItem() {
    LUM_CHECK(m_items == 0, LumError::SecondRootItem);
    m_items = 1;
}

// Array -----------------------------------------------------------------------------------------

void ArraySerializerState::OnBeginArray() {
    m_builder->SetInline(m_isInline);
    m_builder->BeginArray();
}

void ArraySerializerState::OnEndArray() {
    m_builder->EndArray();
}

void ArraySerializerState::AppendKey(const TStringCore& /*key*/) {
    LUM_FAIL(LumError::KeyInJsonArray);
}

void ArraySerializerState::AppendString(const TStringCore& text) {
    BeginItem();
    m_builder->AppendString(text);
}

void ArraySerializerState::AppendUnquotedString(const TStringCore& text) {
    BeginItem();
    m_builder->AppendUnquotedString(text);
}

void ArraySerializerState::OnChildEnded() {
    m_builder->SetInline(m_isInline);
}

JsonItemLayout ArraySerializerState::BeginItems() {
    JsonItemLayout layout = m_builder->BeginItems();
    layout.hasItems = m_items > 0;
    m_items = std::max(m_items, 1);  // What counts is whether there are any.
    return layout;
}

void ArraySerializerState::BeginItem() {
    if (m_items++ > 0) {
        m_builder->AppendSeparator();
    }
}

// Dictionary ------------------------------------------------------------------------------------

void DictionarySerializerState::OnBeginDictionary() {
    m_builder->SetInline(false);
    m_builder->BeginDictionary();
}

void DictionarySerializerState::OnEndDictionary() {
    m_builder->EndDictionary();
}

void DictionarySerializerState::AppendKey(const TStringCore& key) {
    LUM_CHECK(m_state == NeedsKey, LumError::UnexpectedDictionaryKey);
    m_state = NeedsValue;
    if (m_items++ > 0) {
        m_builder->AppendSeparator();
    }
    m_builder->AppendKey(key);
}

void DictionarySerializerState::AppendString(const TStringCore& text) {
    BeginScalar();
    m_builder->AppendString(text);
}

void DictionarySerializerState::AppendUnquotedString(const TStringCore& text) {
    BeginScalar();
    m_builder->AppendUnquotedString(text);
}

void DictionarySerializerState::OnChildEnded() {
    m_builder->SetInline(false);
}

void DictionarySerializerState::BeginScalar() {
    LUM_CHECK(m_state == NeedsValue, LumError::UnexpectedDictionaryValue);
    m_state = NeedsKey;
}

void DictionarySerializerState::BeginContainer() {
    LUM_CHECK(m_state == NeedsValue, LumError::DictionaryKeyExpected);
    m_state = NeedsKey;
}

}  // namespace lum::core
