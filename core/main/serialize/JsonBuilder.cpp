#include "core/main/serialize/JsonBuilder.h"

#include "core/main/serialize/JsonEscape.h"
#include "core/main/serialize/TextRoom.h"

namespace lum::core {
namespace {

TStringCore MakeIndentation(int depth) {
    constexpr std::size_t kUnitsPerLevel = 4;
    return TStringCore(static_cast<std::size_t>(depth) * kUnitsPerLevel, u' ');
}

}  // namespace

// Compact ---------------------------------------------------------------------------------------

void CompactJsonBuilder::SetInline(bool /*isInline*/) {}

void CompactJsonBuilder::AppendKey(const TStringCore& key) {
    AppendString(key);
    m_text += u':';
}

void CompactJsonBuilder::AppendString(const TStringCore& text) {
    TextRoom room(m_text);
    char16_t* out = room.Ensure(nullptr, text.length() + 2);
    *out++ = u'"';
    out = WriteEscaped(room, text.data(), text.length(), out);
    out = room.Ensure(out, 1);
    *out++ = u'"';
    room.Commit(out);
}

void CompactJsonBuilder::AppendUnquotedString(const TStringCore& text) {
    m_text += text;
}

void CompactJsonBuilder::AppendSeparator() {
    m_text += u',';
}

void CompactJsonBuilder::BeginArray() {
    m_text += u'[';
}

void CompactJsonBuilder::EndArray() {
    m_text += u']';
}

void CompactJsonBuilder::BeginDictionary() {
    m_text += u'{';
}

void CompactJsonBuilder::EndDictionary() {
    m_text += u'}';
}

JsonItemLayout CompactJsonBuilder::BeginItems() {
    return {&m_text, false, {}, L","};
}

// Readable --------------------------------------------------------------------------------------

void ReadableJsonBuilder::SetInline(bool isInline) {
    m_isInline = isInline;
}

void ReadableJsonBuilder::AppendKey(const TStringCore& key) {
    EnsureIndentation();
    CompactJsonBuilder::AppendKey(key);
    m_text += u' ';
}

void ReadableJsonBuilder::AppendString(const TStringCore& text) {
    BeginScalar();
    CompactJsonBuilder::AppendString(text);
}

void ReadableJsonBuilder::AppendUnquotedString(const TStringCore& text) {
    BeginScalar();
    CompactJsonBuilder::AppendUnquotedString(text);
}

void ReadableJsonBuilder::AppendSeparator() {
    CompactJsonBuilder::AppendSeparator();
    if (!m_isInline) {
        BreakLine();
    }
}

void ReadableJsonBuilder::BeginArray() {
    EnsureIndentation();
    CompactJsonBuilder::BeginArray();
    if (!m_isInline) {
        BeginLevel();
    }
}

void ReadableJsonBuilder::EndArray() {
    if (m_isInline) {
        m_text += u' ';
    } else {
        EndLevel();
    }
    CompactJsonBuilder::EndArray();
}

void ReadableJsonBuilder::BeginDictionary() {
    EnsureIndentation();
    CompactJsonBuilder::BeginDictionary();
    BeginLevel();
}

void ReadableJsonBuilder::EndDictionary() {
    EndLevel();
    CompactJsonBuilder::EndDictionary();
}

JsonItemLayout ReadableJsonBuilder::BeginItems() {
    if (m_isInline) {
        return {&m_text, true, {}, L","};
    }
    m_isIndented = true;  // As the first item will leave it.
    const TStringCore indentation = MakeIndentation(m_depth);
    return {&m_text, true, indentation, L",\n" + indentation};
}

void ReadableJsonBuilder::Indent() {
    m_text += MakeIndentation(m_depth);
    m_isIndented = true;
}

void ReadableJsonBuilder::EnsureIndentation() {
    if (!m_isIndented) {
        Indent();
    }
}

void ReadableJsonBuilder::BeginScalar() {
    if (m_isInline) {
        m_text += u' ';
    } else {
        EnsureIndentation();
    }
}

void ReadableJsonBuilder::BreakLine() {
    m_text += u'\n';
    m_isIndented = false;
}

void ReadableJsonBuilder::BeginLevel() {
    BreakLine();
    ++m_depth;
}

void ReadableJsonBuilder::EndLevel() {
    BreakLine();
    --m_depth;
    Indent();
}

}  // namespace lum::core
