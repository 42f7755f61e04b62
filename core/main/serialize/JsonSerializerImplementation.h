#pragma once

#include <deque>
#include <memory>

#include "core/main/serialize/JsonBuilder.h"
#include "core/main/serialize/JsonSerializerState.h"
#include "lum/core/serialize/JsonSerializer.h"

namespace lum::core {

class JsonSerializer::Implementation {
public:
    // Errors: those of the constructor of JsonSerializer.
    explicit Implementation(JsonSerializerType type);

    // The state of the innermost container. Errors: IllegalOperation where the root was ended.
    SerializerState& GetTop();
    void BeginArray(bool multiline);
    void EndArray();
    void BeginDictionary();
    void EndDictionary();
    const TStringCore& GetText() const { return m_builder->GetText(); }

private:
    std::unique_ptr<SerializerState> Pop();

    const std::unique_ptr<IJsonBuilder> m_builder;
    std::deque<std::unique_ptr<SerializerState>> m_states;  // The innermost container at the back.
};

}  // namespace lum::core
