#include "lum/core/utility/RInternString.h"

#include <cwchar>

#include "core/main/utility/InternTable.h"
#include "lum/core/utility/RFormatString.h"

namespace lum::core {
namespace {

// Wide texts up to this length are looked up without making a string of them.
constexpr std::size_t kStackUnits = 64;

InternTable::Entry InternWide(const wchar_t* text) {
    const std::size_t count = text == nullptr ? 0 : std::wcslen(text);
    char16_t units[kStackUnits];
    if (count > kStackUnits) {
        return GetInternTable().Intern(TStringCore(text));
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (static_cast<char32_t>(text[i]) > 0xFFFF) {
            return GetInternTable().Intern(TStringCore(text));
        }
        units[i] = static_cast<char16_t>(text[i]);
    }
    return GetInternTable().Intern(units, count);
}

const InternTable::Entry& EmptyEntry() {
    static const InternTable::Entry s_entry = GetInternTable().Intern(TStringCore());
    return s_entry;
}

}  // namespace

RInternString::RInternString() {
    const InternTable::Entry& entry = EmptyEntry();
    m_id = entry.id;
    m_text = entry.text;
}

RInternString RInternString::Intern(const TStringCore& text) {
    const InternTable::Entry entry = GetInternTable().Intern(text);
    return {entry.id, entry.text};
}

RInternString RInternString::Intern(std::u16string_view units) {
    const InternTable::Entry entry = GetInternTable().Intern(units.data(), units.size());
    return {entry.id, entry.text};
}

RInternString::RInternString(const wchar_t* text) {
    const InternTable::Entry entry = InternWide(text);
    m_id = entry.id;
    m_text = entry.text;
}

RInternString::RInternString(const RFormatString& text) : RInternString(text.result()) {}

RInternString::RInternString(wchar_t character) : RInternString(TStringCore(character)) {}

RInternString::RInternString(uint64 id) : m_id(id), m_text(GetInternTable().GetText(id)) {}

}  // namespace lum::core
