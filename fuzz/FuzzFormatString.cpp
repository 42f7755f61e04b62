// Format strings: what a slow reading of the template expects, the scanner and result() must give.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzAssert.h"
#include "lum/core/utility/RFormatString.h"

namespace {

using lum::core::LumError;
using lum::core::RFormatString;
using lum::core::TStringCore;

constexpr std::size_t kMaxMarker = 99;

// A template taken apart by looking ahead instead of by states.
struct Model {
    struct Piece {
        std::u16string text;
        std::size_t marker;  // Stands behind the text; 0 for none.
    };
    std::vector<Piece> pieces;
    std::size_t maxMarker = 0;
    std::optional<LumError> error;
};

std::u16string_view DigitsAt(std::u16string_view text, std::size_t position) {
    const std::size_t end = text.find_first_not_of(u"0123456789", position);
    return text.substr(position, end == std::u16string_view::npos ? end : end - position);
}

Model TakeApart(std::u16string_view format) {
    Model model;
    std::u16string text;
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != u'%') {
            text += format[i];
            continue;
        }
        const std::u16string_view digits = DigitsAt(format, i + 1);
        if (i + 1 == format.size()) {
            model.error = LumError::FormatIncompleteMarker;
        } else if (format[i + 1] == u'%') {
            text += u'%';
            ++i;
        } else if (digits.empty()) {
            model.error = LumError::FormatNumberlessMarker;
        } else if (digits[0] == u'0') {
            model.error = LumError::FormatLeadingZero;
        } else if (digits.size() > 2) {
            model.error = LumError::FormatMarkerTooLarge;
        } else {
            const auto number = static_cast<std::size_t>(
                digits.size() == 1 ? digits[0] - u'0'
                                   : (digits[0] - u'0') * 10 + (digits[1] - u'0'));
            model.maxMarker = std::max(model.maxMarker, number);
            model.pieces.push_back({text, number});
            text.clear();
            i += digits.size();
        }
        if (model.error) {
            return model;
        }
    }
    model.pieces.push_back({text, 0});
    return model;
}

TStringCore Expected(const Model& model, const std::vector<TStringCore>& parameters) {
    std::u16string text;
    for (const Model::Piece& piece : model.pieces) {
        text += piece.text;
        if (piece.marker != 0) {
            text += parameters[piece.marker - 1].view();
        }
    }
    return TStringCore(text);
}

void CheckResult(RFormatString& format, const Model& model,
                 const std::vector<TStringCore>& parameters) {
    format.clearParms();
    const TStringCore text = format.arg(parameters).result();
    const TStringCore expected = Expected(model, parameters);
    LUM_FUZZ_ASSERT(text == expected, text + L"\nexpected: " + expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto input = TStringCore::fromUtf8(reinterpret_cast<const char*>(data), size);
    const Model model = TakeApart(input.view());

    std::optional<RFormatString> scanned;
    try {
        scanned.emplace(input);
    } catch (const RFormatString::Exception& failure) {
        LUM_FUZZ_ASSERT(failure.GetError() == model.error, failure.what());
        return 0;
    }
    RFormatString& format = *scanned;
    LUM_FUZZ_ASSERT(!model.error, input);
    LUM_FUZZ_ASSERT(format.formatString() == input, format.formatString());

    std::vector<TStringCore> letters;
    std::vector<TStringCore> markers;  // As text of parameters they mean nothing.
    for (std::size_t i = 0; i < kMaxMarker; ++i) {
        letters.emplace_back(i % 20, static_cast<char16_t>(u'a' + i % 26));
        markers.push_back(TStringCore(L"%") + TStringCore::number(static_cast<int>(i * 5 % 120)));
    }
    CheckResult(format, model, letters);
    CheckResult(format, model, markers);
    letters.resize(model.maxMarker);
    CheckResult(format, model, letters);
    if (model.maxMarker > 0) {
        letters.pop_back();
        format.clearParms();
        format.arg(letters);
        bool isRefused = false;
        try {
            format.result();
        } catch (const RFormatString::Exception& failure) {
            isRefused = failure.GetError() == LumError::FormatTooFewParameters;
        }
        LUM_FUZZ_ASSERT(isRefused, input);
    }
    return 0;
}
