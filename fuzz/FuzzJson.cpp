// Any text: as JSON it is refused or read, everything of it that can be asked is asked, and as a
// store it is refused, or what is written of it reads back as a store of the same type that writes
// the same.
//
// Not all that is written is meant to read back: see StoreValueParser.h. Texts that could be such
// are only written.
//
// The input is UTF-8, or UTF-16 with a byte order mark, which can spell broken surrogate pairs.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "fuzz/FuzzAssert.h"
#include "lum/core/serialize/IJsonObject.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/Collation.h"

namespace {

using namespace lum::core;  // NOLINT(google-build-using-namespace): a target is a small program.

// A value of a host's own kind, which is its bytes.
class Bytes final : public ValueExternal {
public:
    explicit Bytes(std::vector<unsigned char> bytes)
        : ValueExternal(L"bytes"), m_bytes(std::move(bytes)) {}

    const std::vector<unsigned char>& GetBytes() const { return m_bytes; }
    uint64 GetHashValue() const override { return m_bytes.size(); }
    bool IsEqual(const StoreValue& other) const override {
        const auto* const bytes = dynamic_cast<const Bytes*>(&other);
        return bytes != nullptr && bytes->m_bytes == m_bytes;
    }
    std::unique_ptr<StoreValue> Clone() const override { return std::make_unique<Bytes>(*this); }

private:
    std::vector<unsigned char> m_bytes;
};

bool SetUp() {
    RegisterDefaultCollatorPool();
    RegisterExternalType(
        1, L"bytes",
        [](const ValueExternal& value) { return dynamic_cast<const Bytes&>(value).GetBytes(); },
        [](const ArrayView<const unsigned char>& bytes) {
            return std::make_shared<Bytes>(std::vector<unsigned char>(bytes.begin(), bytes.end()));
        });
    return true;
}

TStringCore MakeText(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || data[0] != 0xFF || data[1] != 0xFE) {
        return TStringCore::fromUtf8(reinterpret_cast<const char*>(data), size);
    }
    TStringCore text;
    for (std::size_t i = 2; i + 1 < size; i += 2) {
        text += static_cast<char16_t>(data[i] | data[i + 1] << 8);
    }
    return text;
}

// Calls what must give a value or an exception.
template <typename F>
void Try(const F& function) {
    try {
        function();
    } catch (const std::exception&) {
        // Refusing is its job; the JSON parser has exceptions of its own.
    }
}

void Touch(const IJsonObject& object) {
    Try([&] { object.AsBool(); });
    Try([&] { object.AsString(); });
    Try([&] { object.AsInt32(); });
    Try([&] { object.AsInt64(); });
    Try([&] { object.AsReal32(); });
    Try([&] { object.AsReal64(); });
    for (const auto& item : object.AsArray()) {
        if (!object.IsDictionary()) {
            Touch(*item);
        }
    }
    for (const auto& [key, value] : object.AsDictionary()) {
        if (object.IsDictionary()) {
            Touch(*value);
        }
    }
}

template <std::size_t N>
bool HasAny(const TStringCore& text, const wchar_t* const (&parts)[N]) {
    return std::any_of(std::begin(parts), std::end(parts),
                       [&](const wchar_t* part) { return text.contains(part); });
}

// Whether a store that was written should read back alike, as far as the text can tell. Rather than
// what is meant to change on the way, it looks for what could be it.
bool ReadsBack(const TStringCore& json) {
    // Keys and members that are unescaped twice, print alike, or have no order.
    static const wchar_t* const s_collections[] = {L"K<P", L"K<f", L"S<f", L"S<P", L"S<x"};
    // Blanks at the ends of a string. Outside of strings the text has none.
    static const wchar_t* const s_blanks[] = {L"\" ",     L" \"",      L"\"\\t", L"\"\\n",
                                              L"\"\\r",   L"\\t\"",    L"\\n\"", L"\\r\"",
                                              L"\"\\u00", L"\\u000b\""};
    // Names that are empty, or digits behind a zero.
    static const wchar_t* const s_names[] = {L"\"\":", L"{ :", L", :", L"\"0", L"{ 0", L", 0"};
    static const wchar_t* const s_parameters[] = {L"f<", L"r<"};
    if (HasAny(json, s_collections) || HasAny(json, s_blanks) || HasAny(json, s_names) ||
        (HasAny(json, s_parameters) && json.contains(L"-")) ||
        (json.contains(L"nan") && (json.contains(L"K<") || json.contains(L"S<")))) {
        return false;
    }
    // Types nest less deep than values.
    return std::count_if(json.begin(), json.end(), [](char16_t unit) {
               return unit == u'{' || unit == u'[' || unit == u'<';
           }) < 200;
}

void CheckStore(const TStringCore& text) {
    SV first;
    TStringCore json;
    Try([&] {
        first = StoreValueParser::MakeKeyMap(text);
        json = SerializeValue(*first);
    });
    if (json.isEmpty() || text.contains(TStringCore(1, u'\0')) || text.contains(L"\\u0000") ||
        !ReadsBack(json)) {
        Try([&] { StoreValueParser::MakeKeyMap(json); });
        return;
    }
    SV second;
    try {
        second = StoreValueParser::MakeKeyMap(json);
    } catch (const std::exception& error) {
        LUM_FUZZ_ASSERT(second != nullptr, json + L": " + TStringCore::fromUtf8(error.what()));
    }
    const TStringCore again = SerializeValue(*second);
    LUM_FUZZ_ASSERT(again == json, json + L"\n" + again);
    LUM_FUZZ_ASSERT(second->GetType() == first->GetType(), json);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool s_isSetUp = SetUp();
    static_cast<void>(s_isSetUp);
    const TStringCore text = MakeText(data, size);
    Try([&] { Touch(*GetRootJsonObject(text)); });
    CheckStore(text);
    return 0;
}
