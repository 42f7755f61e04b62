#include "lumsys/LumeraError.h"

#include <utility>

namespace lumsys {

LumeraError::LumeraError(unsigned int key, TStringCore name, TStringCore message)
    : m_key(key),
      m_name(std::move(name)),
      m_message(std::move(message)),
      m_what((m_message.isEmpty() ? m_name : m_message).toStdString()) {}

LumeraError LumeraError::MakeError(unsigned int key, TStringCore name) {
    return LumeraError(key, std::move(name), TStringCore());
}

LumeraError LumeraError::MakeError(unsigned int key, TStringCore name, TStringCore message) {
    return LumeraError(key, std::move(name), std::move(message));
}

void ThrowLogicException(const std::string& file, int line, const std::string& condition,
                         const LumeraError& error) {
    LumeraError withInfo = error;
    withInfo.SetInfo({file, line, condition});
    throw LogicException(withInfo);
}

}  // namespace lumsys
