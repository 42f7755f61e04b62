#include "core/main/serialize/JsonValueAdapter.h"

#include <json/reader.h>

#include <atomic>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>
#include <string_view>
#include <type_traits>
#include <typeinfo>

#include "core/main/utility/Parser.h"
#include "lum/core/Check.h"

namespace lum::core {
namespace {

// A number that the standard conversion did not take as a whole, or not at all: either it lies
// below the range of doubles, or it is the part of a longer text at which JsonCpp stopped.
[[gnu::cold, gnu::noinline]] double ReadUnusualReal(const char* begin, const char* end) {
    const std::optional<double> real =
        TryReadReal64(TStringCore::fromUtf8(begin, static_cast<std::size_t>(end - begin)));
    if (!real || std::isinf(*real)) {
        LUM_FAIL(LumError::JsonParseFailure);
    }
    return *real;
}

// JsonCpp takes the values of an array from the heap one after another, each two or three lines
// behind the one before, so a walk over a long one waits for memory, and for each page of it the
// longer. An address at which there is nothing does no harm.
void FetchAhead(const Json::Value& value) {
    constexpr std::size_t kAhead = 16 << 10;  // About a hundred values.
    constexpr std::size_t kLine = 64;
    const char* const ahead = reinterpret_cast<const char*>(&value) + kAhead;
    __builtin_prefetch(ahead);
    __builtin_prefetch(ahead + kLine);
}

}  // namespace

// Values ------------------------------------------------------------------------------------------

// JsonCpp reads reals by the global locale, so that under some of them "1.5" is 1. The text of the
// number is still there, and by that a number never comes back wrong.
double JsonValueAdapter::ReadReal() const {
    const char* const text = m_document->text.data() + m_document->origin;
    const char* begin = text + m_value->getOffsetStart();
    const char* const end = text + m_value->getOffsetLimit();
    begin += begin != end && *begin == '+' ? 1 : 0;  // JsonCpp takes a plus, from_chars does not.
    double real = 0;
    const std::from_chars_result result = std::from_chars(begin, end, real);
    return result.ec == std::errc() && result.ptr == end ? real : ReadUnusualReal(begin, end);
}

// The writer prints -0.0 as "-0", which to JsonCpp is the integer 0.
bool JsonValueAdapter::IsNegativeZero() const {
    return m_type == Json::intValue && m_value->asInt64() == 0 &&
           m_document->text.compare(
               m_document->origin + static_cast<std::size_t>(m_value->getOffsetStart()), 2, "-0") ==
               0;
}

bool JsonValueAdapter::AsBool() const {
    return IsReal() ? Json::Value(ReadReal()).asBool() : m_value->asBool();
}

TStringCore JsonValueAdapter::AsString() const {
    const char* const text = m_value->asCString();
    return TStringCore::fromUtf8(text, std::strlen(text));
}

int JsonValueAdapter::AsInt32() const {
    return IsReal() ? Json::Value(ReadReal()).asInt() : m_value->asInt();
}

int64 JsonValueAdapter::AsInt64() const {
    return IsReal() ? Json::Value(ReadReal()).asInt64() : m_value->asInt64();
}

float JsonValueAdapter::AsReal32() const {
    if (IsReal()) {
        return static_cast<float>(ReadReal());
    }
    if (IsString()) {
        return ReadReal32(AsString());
    }
    return IsNegativeZero() ? -0.0f : m_value->asFloat();
}

double JsonValueAdapter::AsReal64() const {
    if (IsReal()) {
        return ReadReal();
    }
    if (IsString()) {
        return ReadReal64(AsString());
    }
    return IsNegativeZero() ? -0.0 : m_value->asDouble();
}

// Iteration ---------------------------------------------------------------------------------------

template <typename T>
JsonIterator<T> JsonValueAdapter::MakeIterator(Json::Value::const_iterator position) const {
    return JsonIterator<T>(
        std::make_shared<JsonValueIteratorAdapter<T>>(m_document, position, m_value->end()));
}

JsonIterator<std::shared_ptr<IJsonObject>> JsonValueAdapter::ArrayIterableImpl::begin() const {
    return m_owner.MakeIterator<std::shared_ptr<IJsonObject>>(m_owner.m_value->begin());
}

JsonIterator<std::shared_ptr<IJsonObject>> JsonValueAdapter::ArrayIterableImpl::end() const {
    return m_owner.MakeIterator<std::shared_ptr<IJsonObject>>(m_owner.m_value->end());
}

JsonIterator<IJsonObject::DictionaryIterable::Entry>
JsonValueAdapter::DictionaryIterableImpl::begin() const {
    return m_owner.MakeIterator<Entry>(m_owner.m_value->begin());
}

JsonIterator<IJsonObject::DictionaryIterable::Entry> JsonValueAdapter::DictionaryIterableImpl::end()
    const {
    return m_owner.MakeIterator<Entry>(m_owner.m_value->end());
}

template <typename T>
bool JsonValueIteratorAdapter<T>::IsEqual(const IJsonIteratorAdapter<T>& other) const {
    if (typeid(other) != typeid(*this)) {
        return false;
    }
    const auto& adapter = static_cast<const JsonValueIteratorAdapter<T>&>(other);
    return m_isAtEnd == adapter.m_isAtEnd && (m_isAtEnd || m_position == adapter.m_position);
}

template <typename T>
T JsonValueIteratorAdapter<T>::Get() {
    LUM_CHECK(!m_isAtEnd, LumError::IteratorOutOfBounds);
    if (m_item == nullptr) {
        m_item = std::make_shared<JsonValueAdapter>(m_document, *m_position);
    }
    if constexpr (std::is_same_v<T, std::shared_ptr<IJsonObject>>) {
        return m_item;
    } else {
        const char* keyEnd = nullptr;
        const char* const key = m_position.memberName(&keyEnd);  // Null in an array.
        return {TStringCore::fromUtf8(key, static_cast<std::size_t>(keyEnd - key)), m_item};
    }
}

template <typename T>
void JsonValueIteratorAdapter<T>::MoveNext() {
    LUM_CHECK(!m_isAtEnd, LumError::IteratorOutOfBounds);
    FetchAhead(*m_position);
    ++m_position;
    m_isAtEnd = m_position == m_end;
    if (m_item.use_count() == 1 && !m_isAtEnd) {
        // What another thread that had the item read of it comes before the change.
        std::atomic_thread_fence(std::memory_order_acquire);
        m_item->MoveTo(*m_position);
    } else {
        m_item.reset();
    }
}

// Parsing -----------------------------------------------------------------------------------------

std::shared_ptr<IJsonObject> GetRootJsonObject(const TStringCore& text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    const auto document = std::make_shared<JsonDocument>();
    document->text = text.toStdString();
    // JsonCpp skips the mark, and counts from behind it.
    document->origin = document->text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    // The same as Json::parseFromStream does, which copies the whole text twice before.
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    bool isParsed = false;
    try {
        const char* const begin = document->text.data();
        isParsed = reader->parse(begin, begin + document->text.size(), &document->root, nullptr);
    } catch (const Json::Exception&) {
        // For nesting that is too deep JsonCpp throws. It is a text that cannot be parsed like any
        // other.
    }
    if (!isParsed) {
        LUM_FAIL(LumError::JsonParseFailure);
    }
    return std::make_shared<JsonValueAdapter>(document, document->root);
}

}  // namespace lum::core
