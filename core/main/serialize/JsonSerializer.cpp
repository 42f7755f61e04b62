#include "lum/core/serialize/JsonSerializer.h"

#include <utility>

#include "core/main/serialize/JsonSerializerImplementation.h"
#include "lum/core/Check.h"

namespace lum::core {
namespace {

std::unique_ptr<IJsonBuilder> MakeBuilder(JsonSerializerType type) {
    switch (type) {
        case JsonSerializerType::Readable:
            return std::make_unique<ReadableJsonBuilder>();
        case JsonSerializerType::Compact:
            return std::make_unique<CompactJsonBuilder>();
    }
    LUM_FAIL(LumError::UnsupportedSerializerType);
}

// What a backslash in front of `unit` stands for.
char16_t UnescapeUnit(char16_t unit) {
    switch (unit) {
        case u'b':
            return u'\b';
        case u'f':
            return u'\f';
        case u'n':
            return u'\n';
        case u'r':
            return u'\r';
        case u't':
            return u'\t';
        default:
            return unit;
    }
}

}  // namespace

// Implementation --------------------------------------------------------------------------------

JsonSerializer::Implementation::Implementation(JsonSerializerType type)
    : m_builder(MakeBuilder(type)) {
    m_states.push_back(std::make_unique<RootSerializerState>(*m_builder));
}

SerializerState& JsonSerializer::Implementation::GetTop() {
    LUM_CHECK_NOT(m_states.empty(), LumError::IllegalOperation);
    return *m_states.back();
}

void JsonSerializer::Implementation::BeginArray(bool multiline) {
    GetTop().BeforeArray();
    auto state = std::make_unique<ArraySerializerState>(*m_builder, /*isInline=*/!multiline);
    state->OnBeginArray();
    m_states.push_back(std::move(state));
}

void JsonSerializer::Implementation::EndArray() {
    Pop()->OnEndArray();
    GetTop().OnChildEnded();
}

void JsonSerializer::Implementation::BeginDictionary() {
    GetTop().BeforeDictionary();
    auto state = std::make_unique<DictionarySerializerState>(*m_builder);
    state->OnBeginDictionary();
    m_states.push_back(std::move(state));
}

void JsonSerializer::Implementation::EndDictionary() {
    Pop()->OnEndDictionary();
    GetTop().OnChildEnded();
}

std::unique_ptr<SerializerState> JsonSerializer::Implementation::Pop() {
    GetTop();
    std::unique_ptr<SerializerState> state = std::move(m_states.back());
    m_states.pop_back();
    return state;
}

// Serializer ------------------------------------------------------------------------------------

JsonSerializer::JsonSerializer() : JsonSerializer(JsonSerializerType::Compact) {}

JsonSerializer::JsonSerializer(JsonSerializerType type)
    : m_implementation(std::make_unique<Implementation>(type)) {}

JsonSerializer::JsonSerializer(JsonSerializer&& other) noexcept = default;
JsonSerializer& JsonSerializer::operator=(JsonSerializer&& other) noexcept = default;
JsonSerializer::~JsonSerializer() = default;

// The texts that are appended may be the writer's own, which changes before they are written; so
// they are copied, which costs no more than a count.

void JsonSerializer::AppendKey(const TStringCore& key) {
    m_implementation->GetTop().AppendKey(TStringCore(key));
}

void JsonSerializer::AppendString(const TStringCore& text) {
    m_implementation->GetTop().AppendString(TStringCore(text));
}

void JsonSerializer::AppendUnquotedString(const TStringCore& text) {
    m_implementation->GetTop().AppendUnquotedString(TStringCore(text));
}

void JsonSerializer::BeginArray(bool multiline) {
    m_implementation->BeginArray(multiline);
}

void JsonSerializer::EndArray() {
    m_implementation->EndArray();
}

void JsonSerializer::BeginDictionary() {
    m_implementation->BeginDictionary();
}

void JsonSerializer::EndDictionary() {
    m_implementation->EndDictionary();
}

const TStringCore& JsonSerializer::Build() const {
    return m_implementation->GetText();
}

TStringCore JsonSerializer::UnescapeFromJson(const TStringCore& text) {
    TStringCore unescaped;
    unescaped.reserve(text.length());
    bool isEscaping = false;
    for (char16_t unit : text) {
        if (unit == u'\\') {
            if (isEscaping) {
                unescaped += unit;
            }
            isEscaping = !isEscaping;
            continue;
        }
        if (isEscaping) {
            isEscaping = false;
            unit = UnescapeUnit(unit);
        }
        unescaped += unit;
    }
    LUM_CHECK_NOT(isEscaping, LumError::JsonParseFailure);
    return unescaped;
}

}  // namespace lum::core
