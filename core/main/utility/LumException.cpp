#include "lum/core/utility/LumException.h"

#include <iterator>
#include <utility>

#include "lum/core/utility/LumErrorTexts.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {
namespace {

TStringCore ComposeDetails(LumError error, const TStringCore& details) {
    TStringCore text = ErrorToString(error);
    if (!details.isEmpty()) {
        text += u'\n';
        text += details;
    }
    return text;
}

}  // namespace

TStringCore ErrorToString(LumError error) {
    const auto code = static_cast<unsigned int>(error);
    const bool isKnown = code < std::size(kLumErrorTexts);
    return TStringCore(std::u16string_view(
        kLumErrorTexts[isKnown ? code : static_cast<unsigned int>(LumError::Unspecified)]));
}

LumException::LumException(LumError error) : LumException(error, {}, {}) {}

LumException::LumException(LumError error, const TStringCore& details)
    : LumException(error, details, {}) {}

LumException::LumException(LumError error, const TStringCore& details, const TStringCore& context)
    : m_error(error),
      m_rawDetails(details),
      m_details(ComposeDetails(error, details)),
      m_context(context),
      m_what(m_details.toStdString()) {}

LumException::LumException(LumException&& other) noexcept
    : std::exception(other),
      m_error(other.m_error),
      m_rawDetails(std::move(other.m_rawDetails)),
      m_details(std::move(other.m_details)),
      m_what(std::move(other.m_what)) {}

LumException::~LumException() = default;
LumRuntimeException::~LumRuntimeException() = default;
LumLogicException::~LumLogicException() = default;

void LumException::AppendContext(const TStringCore& text) {
    if (!m_context.isEmpty()) {
        m_context += u'\n';
    }
    m_context += text;
}

void detail::FailSizeCast() {
    throw LumRuntimeException(LumError::OutOfRange,
                              L"Value exceeds maximum legal value for lumsize_t");
}

}  // namespace lum::core
