#include "core/main/serialize/QuotedText.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace lum::core {
namespace {

void AppendQuotedUnits(TStringCore& out, std::u16string_view units) {
    out += u'\'';
    while (!units.empty()) {
        const std::size_t plainCount = std::min(units.find_first_of(u"'\\\n"), units.size());
        out.append(units.data(), plainCount);
        units.remove_prefix(plainCount);
        if (!units.empty()) {
            out += u'\\';
            out += units.front() == u'\n' ? u'n' : units.front();
            units.remove_prefix(1);
        }
    }
    out += u'\'';
}

}  // namespace

void AppendQuoted(TStringCore& out, const TStringCore& text) {
    AppendQuotedUnits(out, text.view());
}

void AppendQuotedUntilZero(TStringCore& out, const TStringCore& text) {
    const std::u16string_view units = text.view();
    AppendQuotedUnits(out, units.substr(0, units.find(u'\0')));
}

}  // namespace lum::core
