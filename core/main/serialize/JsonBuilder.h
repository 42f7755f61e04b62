#pragma once

#include "lum/core/utility/LumString.h"

namespace lum::core {

// What stands around the items of the array that is being written, for writers that append many
// items at once. A scalar of a one-line array has `isPadded` blanks (none or one) in front; so has
// the bracket that ends one. Between two items stands a comma, and a child array begins with one of
// the two texts, which bring that comma and the line along.
struct JsonItemLayout {
    TStringCore* text;  // Where the items go.
    bool isPadded;
    TStringCore beforeFirstChild;
    TStringCore beforeNextChild;
    bool hasItems = false;  // Whether the array has items already; its state knows.
};

// What the text of a JSON document looks like. A builder appends and checks nothing: which calls
// are due is known to the states of the serializer.
//
// Threads: one at a time. Ownership: owns the text; the texts that it is given are others.
// Errors: std::length_error beyond the limit of the text, std::bad_alloc.
class IJsonBuilder {
public:
    virtual ~IJsonBuilder() = default;
    virtual const TStringCore& GetText() const = 0;
    // Whether the innermost container stands on one line.
    virtual void SetInline(bool isInline) = 0;
    virtual void AppendKey(const TStringCore& key) = 0;
    virtual void AppendString(const TStringCore& text) = 0;
    virtual void AppendUnquotedString(const TStringCore& text) = 0;
    virtual void AppendSeparator() = 0;
    virtual void BeginArray() = 0;
    virtual void EndArray() = 0;
    virtual void BeginDictionary() = 0;
    virtual void EndDictionary() = 0;
    // For a caller that goes on to append at least one item to the array by itself, and a scalar
    // only where the array stands on one line. The layout is good until the next call.
    virtual JsonItemLayout BeginItems() = 0;
};

// Text without lines and blanks.
class CompactJsonBuilder : public IJsonBuilder {
public:
    const TStringCore& GetText() const override { return m_text; }
    void SetInline(bool isInline) override;
    void AppendKey(const TStringCore& key) override;
    void AppendString(const TStringCore& text) override;
    void AppendUnquotedString(const TStringCore& text) override;
    void AppendSeparator() override;
    void BeginArray() override;
    void EndArray() override;
    void BeginDictionary() override;
    void EndDictionary() override;
    JsonItemLayout BeginItems() override;

protected:
    TStringCore m_text;
};

// Text in lines that are indented by four blanks a level. Line feeds alone end lines, and none ends
// the document.
class ReadableJsonBuilder final : public CompactJsonBuilder {
public:
    void SetInline(bool isInline) override;
    void AppendKey(const TStringCore& key) override;
    void AppendString(const TStringCore& text) override;
    void AppendUnquotedString(const TStringCore& text) override;
    void AppendSeparator() override;
    void BeginArray() override;
    void EndArray() override;
    void BeginDictionary() override;
    void EndDictionary() override;
    JsonItemLayout BeginItems() override;

private:
    void Indent();
    void EnsureIndentation();
    void BeginScalar();
    void BreakLine();
    void BeginLevel();
    void EndLevel();

    int m_depth = 0;
    bool m_isIndented = false;  // Whether the current line has its indentation.
    bool m_isInline = false;
};

}  // namespace lum::core
